// A hive of a hosted machine: keys below a root, whatever file they come from.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/host.h"
#include "platform/memory.h"
#include "platform/registry.h"

namespace delvane {

// Names of keys and values are equal without regard to case only where two characters are each other's other case: the
// Kelvin sign is no k, and of the two small sigmas only one is that of the capital. Characters outside the basic plane
// have no case. (So it is in Wine, where both of such names can stand beside each other.)
bool KeyNamesEqual(std::string_view a, std::string_view b);
// Below 0, 0 or above 0; 0 for names that are equal.
int CompareKeyNames(std::string_view a, std::string_view b);
// The same for names that are equal: a key for maps.
std::string FoldKeyName(std::string_view name);

// Read only. Keys go by 32-bit numbers of the hive's own, which stay good as long as it lives; the root is 0. Without a
// file it is a root that holds nothing but what is mounted on it.
class CHive {
public:
    CHive() = default;
    virtual ~CHive() = default;

    static std::uint32_t GetRoot() { return 0; }
    // Adds what the key holds to `contents`, in the order of the file. False where the key itself is damaged or no
    // ordinary one; what was added then is of no use. A damaged value or subkey is left out; the contents have an error
    // number for it, and GetProblems tells the first.
    virtual bool ReadKey(std::uint32_t, CKeyContents&) { return true; }
    // The subkey of that name, an exact match before the first one without regard to case.
    std::optional<std::uint32_t> FindSubkey(std::uint32_t key, std::string_view name);
    // Where a symbolic link key leads ("\Registry\Machine\Software\X"); nothing for any other key.
    virtual std::optional<std::string> GetLink(std::uint32_t) { return std::nullopt; }
    // Of what the hive was read from, in bytes.
    std::uint64_t GetSize() const { return m_bytes.m_nSize; }
    // Whether the file breaks off before its end.
    virtual bool IsCut() const { return false; }
    // What was found wrong so far. Problems are added, and stay as they are.
    virtual std::vector<CNotice> GetProblems() const { return {}; }

protected:
    // `name` is what messages call the file.
    CHive(CFileBytes bytes, std::string name) : m_bytes(std::move(bytes)), m_strName(std::move(name)) {}

    // The subkeys of a key, one after the other; 0 where there is no more.
    virtual std::uint32_t FirstSubkey(std::uint32_t) const { return 0; }
    virtual std::uint32_t NextSubkey(std::uint32_t) const { return 0; }
    virtual std::uint32_t CountKeys() const { return 1; }
    virtual std::string NameOf(std::uint32_t) const { return {}; }
    // Asked for each key that comes after the first look-up, in the order of their numbers.
    void NoteNewKey(std::uint32_t parent, std::string_view name);

    CFileBytes m_bytes;
    std::string m_strName;

private:
    // A place in the index: all keys by parent and name, once going from sibling to sibling has taken long enough for
    // it to be worth it. With std::unordered_multimap a capture of 200,000 shuffled subkeys takes 1.4 times as long.
    struct CEntry {
        std::uint32_t m_nHash = 0;
        std::uint32_t m_nParent = 0;
        std::uint32_t m_nNext = 0;  // in the same bucket; 0 behind the last
    };
    void MakeIndex();
    void LinkEntries(std::uint32_t first);

    CPageVector<CEntry> m_entries;         // by key
    std::vector<std::uint32_t> m_buckets;  // the first key of each; a power of two
    std::size_t m_nSteps = 0;              // from sibling to sibling, in all look-ups so far
};

// The bytes of a registry file. False where it cannot be read; `problem` then says why.
bool ReadHiveFile(const std::string& hostPath, std::uint64_t limit, CFileBytes& bytes, CNotice& problem);

}  // namespace delvane
