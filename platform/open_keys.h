// The open keys of a registry and what they show, on every machine alike.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "platform/machine.h"

namespace delvane {

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
    }
    std::string_view Get(CSpan span) const { return {m_bytes.data() + span.m_nAt, span.m_nLength}; }
    CSpan Add(std::string_view bytes) {
        const CSpan span{m_bytes.size(), bytes.size()};
        m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
        return span;
    }
    // As CMachine tells them.
    void QueryInfo(CKeyInfo& info) const;
    std::uint32_t EnumValue(std::uint32_t index, CRoom& name, std::uint32_t& type, CRoom& data) const;
    std::uint32_t EnumKey(std::uint32_t index, CRoom& name) const;

    std::vector<char> m_bytes;  // what the spans point into
    std::vector<CSubkey> m_subkeys;
    std::vector<CValue> m_values;
    std::uint32_t m_dwError = ERROR_SUCCESS;  // why something of the key is missing
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

}  // namespace delvane
