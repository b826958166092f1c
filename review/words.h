// The words of a review: what its lines, its options and its pages call things.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace delvane {

enum class EKind : std::uint8_t { kFile, kDirectory, kKey, kValue, kExtension };
enum class EChange : std::uint8_t { kAdded, kDeleted, kChanged };
enum class EStatus : std::uint8_t { kOpen, kAccepted, kNoise };
enum class ESeverity : std::uint8_t { kError, kWarning, kInfo };
enum class EFailOn : std::uint8_t { kError, kWarning, kInfo, kChange, kNone };
enum class ELeftover : std::uint8_t { kNone, kLeftBehind, kNotRestored, kLater };
enum class EArea : std::uint8_t { kProgramFiles, kWindows, kStartMenu, kAppData, kDocuments, kOutside };
enum class ETrait : std::uint8_t { kExecutable, k16Bit, kKernelMode };

template <std::size_t Count>
using CWords = std::array<std::string_view, Count>;
constexpr CWords<5> MakeWords(EKind) { return {"file", "directory", "key", "value", "extension"}; }
constexpr CWords<3> MakeWords(EChange) { return {"added", "deleted", "changed"}; }
constexpr CWords<3> MakeWords(EStatus) { return {"open", "accepted", "noise"}; }
constexpr CWords<3> MakeWords(ESeverity) { return {"error", "warning", "info"}; }
constexpr CWords<5> MakeWords(EFailOn) { return {"error", "warning", "info", "change", "none"}; }
constexpr CWords<4> MakeWords(ELeftover) { return {"", "left-behind", "not-restored", "later"}; }
constexpr CWords<6> MakeWords(EArea) {
    return {"program-files", "windows", "start-menu", "app-data", "documents", "outside"};
}
constexpr CWords<3> MakeWords(ETrait) { return {"executable", "16-bit", "kernel-mode"}; }

// The words of an enum, in its order.
template <class Enum>
inline constexpr auto kWords = MakeWords(Enum{});

constexpr std::size_t IndexOf(auto word) { return static_cast<std::size_t>(word); }

template <class Enum>
constexpr std::string_view WordOf(Enum word) {
    return kWords<Enum>[IndexOf(word)];
}

// The words whose bits are set, each at its place.
template <class Enum>
std::vector<std::string_view> WordsIn(unsigned bits) {
    std::vector<std::string_view> words;
    for (std::size_t i = 0; i < kWords<Enum>.size(); ++i) {
        if ((bits >> i & 1) != 0) words.push_back(kWords<Enum>[i]);
    }
    return words;
}

// How many there are of each.
template <class Enum>
using CCounts = std::array<std::size_t, kWords<Enum>.size()>;

}  // namespace delvane
