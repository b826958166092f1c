// A hive of a hosted machine: keys below a root, whatever file they come from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/host.h"
#include "platform/notice.h"

namespace delvane {

// What one key holds. Names and data are as the ANSI calls of the registry give them in the code page UTF-8: types 1, 2
// and 7 converted with their terminators, an odd last byte dropped; all other types as they are. An unpaired surrogate
// is its three bytes, a NUL inside a name stays. One object serves key after key, so that its memory is taken once.
class CKeyContents {
public:
    struct CSpan {
        std::size_t m_nAt = 0;
        std::size_t m_nLength = 0;
    };
    struct CSubkey {
        CSpan m_name;
        std::uint32_t m_nKey = 0;  // the hive's number of the key
    };
    struct CValue {
        CSpan m_name;  // empty: the unnamed value
        std::uint32_t m_dwType = 0;
        CSpan m_data;
    };

    void Clear() {
        m_bytes.clear();
        m_subkeys.clear();
        m_values.clear();
    }
    std::string_view Get(CSpan span) const { return {m_bytes.data() + span.m_nAt, span.m_nLength}; }
    CSpan Add(std::string_view bytes) {
        const CSpan span{m_bytes.size(), bytes.size()};
        m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
        return span;
    }

    std::vector<char> m_bytes;  // what the spans point into
    std::vector<CSubkey> m_subkeys;
    std::vector<CValue> m_values;
};

// Read only. Keys go by 32-bit numbers of the hive's own, which stay good as long as it lives.
class CHive {
public:
    virtual ~CHive() = default;

    virtual std::uint32_t GetRoot() const = 0;
    // Adds what the key holds to `contents`, in the order of the file. False where the key itself is damaged or no
    // ordinary one; what was added then is of no use. A damaged value or subkey is left out and told by GetProblems.
    virtual bool ReadKey(std::uint32_t key, CKeyContents& contents) = 0;
    // The subkey of that name, an exact match before one without regard to case.
    virtual std::optional<std::uint32_t> FindSubkey(std::uint32_t key, std::string_view name) = 0;
    // Where a symbolic link key leads ("\Registry\Machine\Software\X"); nothing for any other key.
    virtual std::optional<std::string> GetLink(std::uint32_t key) = 0;
    // Of what the hive was read from, in bytes.
    virtual std::uint64_t GetSize() const = 0;
    // Whether the file breaks off before its end.
    virtual bool IsCut() const = 0;
    // What was found wrong so far. Problems are added, and stay as they are.
    virtual std::vector<CNotice> GetProblems() const = 0;
};

// The bytes of a registry file. False where it cannot be read; `problem` then says why.
bool ReadHiveFile(const std::string& hostPath, std::uint64_t limit, CFileBytes& bytes, CNotice& problem);

}  // namespace delvane
