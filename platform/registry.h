// The registry of a machine: what it is asked, its open keys and what they hold. How a key is read stands in the
// registry.cpp of each system.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "platform/errors.h"

namespace delvane {

// An open key of the registry; 0 is none. The predefined ones are open at all times.
using HKEY = std::uint32_t;
constexpr HKEY HKEY_CLASSES_ROOT = 0x80000000;
constexpr HKEY HKEY_CURRENT_USER = 0x80000001;
constexpr HKEY HKEY_LOCAL_MACHINE = 0x80000002;
constexpr HKEY HKEY_USERS = 0x80000003;
constexpr HKEY HKEY_CURRENT_CONFIG = 0x80000005;

constexpr std::uint32_t REG_NONE = 0;
constexpr std::uint32_t REG_SZ = 1;
constexpr std::uint32_t REG_EXPAND_SZ = 2;
constexpr std::uint32_t REG_BINARY = 3;
constexpr std::uint32_t REG_DWORD = 4;
constexpr std::uint32_t REG_DWORD_BIG_ENDIAN = 5;
constexpr std::uint32_t REG_LINK = 6;
constexpr std::uint32_t REG_MULTI_SZ = 7;
constexpr std::uint32_t REG_RESOURCE_LIST = 8;

// What a key holds, in numbers: the lengths of names are without their NUL, all are in bytes.
struct CKeyInfo {
    std::uint32_t m_nSubkeys = 0;
    std::uint32_t m_nLongestSubkey = 0;
    std::uint32_t m_nValues = 0;
    std::uint32_t m_nLongestValueName = 0;
    std::uint32_t m_nLargestData = 0;
    std::uint32_t m_dwError = ERROR_SUCCESS;  // why something of the key could not be read; it is not counted
};

// Room for a text or for data that a call is to fill in.
struct CRoom {
    char* m_pBytes = nullptr;
    std::uint32_t m_nSize = 0;  // on the way in the room, on the way out what was written; a name's NUL does not count
};

// Puts the bytes into the room, and a NUL behind them if that is wanted. False if the room is too small; its size is
// that of the bytes either way.
bool FillRoom(CRoom& room, std::string_view bytes, bool wantsNul);

// What one key holds. Names and data are as the ANSI calls of the registry give them: types 1, 2 and 7 converted with
// their terminators, an odd last byte dropped; all other types as they are. Where the code page is UTF-8, an unpaired
// surrogate is its three bytes, and a NUL inside a name stays. One object serves key after key, so that its memory is
// taken once.
class CKeyContents {
public:
    struct CSpan {
        std::size_t m_nAt = 0;
        std::size_t m_nLength = 0;
    };
    struct CSubkey {
        CSpan m_name;
        std::uint32_t m_nKey = 0;  // a hive's own number of the key
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
        m_dwError = ERROR_SUCCESS;
        m_nLastSubkey = m_nLastValue = 0;
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
    std::uint32_t m_dwError = ERROR_SUCCESS;  // why something of the key is missing
    std::size_t m_nLastSubkey = 0;            // the ones that were enumerated last, which are asked for next
    std::size_t m_nLastValue = 0;
};

// Open keys by handle. Closed ones are kept for their memory, so a walk takes memory for as many keys as it has open at
// a time.
template <class TKey>
class COpenKeys {
public:
    // Null for a handle that is none, a predefined one too.
    TKey* Find(HKEY key) const { return key != 0 && key <= m_keys.size() ? m_keys[key - 1].get() : nullptr; }
    std::size_t GetCount() const { return m_keys.size() - m_free.size(); }

    // A key to be filled. It is added, or given back where it cannot be opened; its fields are as they were left.
    std::unique_ptr<TKey> Take() {
        if (m_spare.empty()) return std::make_unique<TKey>();
        std::unique_ptr<TKey> key = std::move(m_spare.back());
        m_spare.pop_back();
        return key;
    }
    void GiveBack(std::unique_ptr<TKey> key) { m_spare.push_back(std::move(key)); }
    HKEY Add(std::unique_ptr<TKey> key) {
        if (m_free.empty()) {
            m_keys.push_back(nullptr);
            m_free.push_back(static_cast<HKEY>(m_keys.size()));
        }
        const HKEY handle = m_free.back();
        m_free.pop_back();
        m_keys[handle - 1] = std::move(key);
        return handle;
    }
    void Close(HKEY key) {
        if (Find(key) == nullptr) return;
        GiveBack(std::move(m_keys[key - 1]));
        m_free.push_back(key);
    }

private:
    std::vector<std::unique_ptr<TKey>> m_keys;  // by handle less one; null where it is closed
    std::vector<HKEY> m_free;
    std::vector<std::unique_ptr<TKey>> m_spare;
};

// Nothing here writes.
class CRegistry {
public:
    virtual ~CRegistry() = default;

    // Begins a walk over one hive.
    virtual void BeginWalk() { m_nBehindLinks = 0; }
    // What was found wrong so far.
    virtual std::vector<CNotice> GetProblems() const = 0;

    // Each but RegCloseKey gives a Win32 error number. Text is in the code page, data of the types REG_SZ,
    // REG_EXPAND_SZ and REG_MULTI_SZ too. A key is opened by the name of one level, no path. A name's room needs a byte
    // more for a NUL. A key that stands for something else than itself (performance data) cannot be opened.
    // ERROR_MORE_DATA where a room is too small; RegQueryValueEx takes a null room for a question after the size alone,
    // and gives the size either way.
    virtual std::uint32_t RegOpenKeyEx(HKEY parent, std::string_view name, HKEY& key) = 0;
    virtual void RegCloseKey(HKEY key) = 0;
    virtual std::uint32_t RegQueryInfoKey(HKEY key, CKeyInfo& info);
    virtual std::uint32_t RegEnumValue(HKEY key, std::uint32_t index, CRoom& name, std::uint32_t& type, CRoom& data);
    std::uint32_t RegEnumKeyEx(HKEY key, std::uint32_t index, CRoom& name);
    virtual std::uint32_t RegQueryValueEx(HKEY key, std::string_view name, std::uint32_t* type, CRoom& data) = 0;

protected:
    // Links that fan out show the same keys again and again, exponentially at worst. Real machines have some ten
    // thousand keys behind links, and show their hives once or twice.
    static constexpr std::size_t kMostKeysBehindLinks = std::size_t{1} << 19;
    std::size_t m_nBehindLinks = 0;  // keys that this walk has opened behind links

    // What an open key holds, read in one go when it is first asked for; `anew` begins another walk over it, and a
    // registry that lives is read again. Gives an error number.
    virtual std::uint32_t ReadKey(HKEY key, bool anew, CKeyContents*& contents) = 0;
};

// That of the machine that the program runs on.
std::unique_ptr<CRegistry> MakeRegistry();

}  // namespace delvane
