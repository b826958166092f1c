// The words of a review: what its lines, its options and its pages call things. Each list is the order of its enum.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace delvane {

enum class EKind : std::uint8_t { kFile, kDirectory, kKey, kValue, kExtension };
enum class EChange : std::uint8_t { kAdded, kDeleted, kChanged };
enum class EStatus : std::uint8_t { kOpen, kAccepted, kNoise };
enum class ESeverity : std::uint8_t { kError, kWarning, kInfo };
enum class EFailOn : std::uint8_t { kError, kWarning, kInfo, kChange, kNone };
enum class ELeftover : std::uint8_t { kNone, kLeftBehind, kNotRestored, kLater };
enum class EArea : std::uint8_t { kProgramFiles, kWindows, kStartMenu, kAppData, kDocuments, kOutside };
enum class ETrait : std::uint8_t { kExecutable, k16Bit, kKernelMode };

inline constexpr std::array<std::string_view, 5> kKindWords = {"file", "directory", "key", "value", "extension"};
inline constexpr std::array<std::string_view, 3> kChangeWords = {"added", "deleted", "changed"};
inline constexpr std::array<std::string_view, 3> kStatusWords = {"open", "accepted", "noise"};
inline constexpr std::array<std::string_view, 3> kSeverityWords = {"error", "warning", "info"};
inline constexpr std::array<std::string_view, 5> kFailOnWords = {"error", "warning", "info", "change", "none"};
inline constexpr std::array<std::string_view, 4> kLeftoverWords = {"", "left-behind", "not-restored", "later"};
inline constexpr std::array<std::string_view, 6> kAreaWords = {"program-files", "windows",   "start-menu",
                                                               "app-data",      "documents", "outside"};
inline constexpr std::array<std::string_view, 3> kTraitWords = {"executable", "16-bit", "kernel-mode"};

inline constexpr std::size_t kStatusCount = kStatusWords.size();
inline constexpr std::size_t kSeverityCount = kSeverityWords.size();
inline constexpr std::size_t kLeftoverCount = kLeftoverWords.size();

inline std::string_view WordOf(EKind kind) { return kKindWords[static_cast<std::size_t>(kind)]; }
inline std::string_view WordOf(EChange change) { return kChangeWords[static_cast<std::size_t>(change)]; }
inline std::string_view WordOf(EStatus status) { return kStatusWords[static_cast<std::size_t>(status)]; }
inline std::string_view WordOf(ESeverity severity) { return kSeverityWords[static_cast<std::size_t>(severity)]; }
inline std::string_view WordOf(EFailOn level) { return kFailOnWords[static_cast<std::size_t>(level)]; }
inline std::string_view WordOf(ELeftover leftover) { return kLeftoverWords[static_cast<std::size_t>(leftover)]; }
inline std::string_view WordOf(EArea area) { return kAreaWords[static_cast<std::size_t>(area)]; }
inline std::string_view WordOf(ETrait trait) { return kTraitWords[static_cast<std::size_t>(trait)]; }

}  // namespace delvane
