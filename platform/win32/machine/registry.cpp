// The registry of the machine that the program runs on. The contents of a key are read in one go when they are first
// asked for, since the registry of a living machine changes at any time: what a caller enumerates is what was there at
// one moment, and a key that another process shrinks or deletes meanwhile ends nothing.
#include "platform/registry.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <map>

#include "platform/host.h"
#include "platform/win32/system.h"

namespace delvane {
namespace {

// The rooms that RegQueryInfoKey asks for count UTF-16 units on some systems, and a character of the code page may take
// three bytes where UTF-16 has one unit of two.
constexpr std::uint32_t kBytesOfUnit = 3;

// Performance data and its like answer an open with the number of a predefined key. Nothing can be read of it.
bool IsPredefined(::HKEY key) {
    const auto number = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(key)) & 0xFFFFFFFF;
    return number >= 0x80000000 && number < 0x80000100;
}

// The path of a key in the system's own tree, \REGISTRY\MACHINE\..., with links behind it; empty where it is not told.
std::wstring RealPathOf(::HKEY key) {
    using CQueryKey = LONG WINAPI(HANDLE, int, void*, ULONG, ULONG*);
    static auto* const query = FindOperation<CQueryKey>("ntdll.dll", "NtQueryKey");
    constexpr int kKeyNameInformation = 3;  // a length in bytes and the text
    std::array<wchar_t, 2048> buffer;       // NOLINT(cppcoreguidelines-pro-type-member-init): the call fills it
    ULONG size = 0;
    if (query == nullptr || query(key, kKeyNameInformation, buffer.data(), sizeof buffer, &size) != 0) return {};
    ULONG length = 0;
    std::memcpy(&length, buffer.data(), sizeof length);
    const std::size_t units = std::min<std::size_t>(length / sizeof(wchar_t), buffer.size() - 2);
    return {buffer.data() + sizeof length / sizeof(wchar_t), units};
}

bool EqualNoCase(std::wstring_view a, std::wstring_view b) {
    return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()), TRUE) ==
           CSTR_EQUAL;
}

struct COpenKey {
    ::HKEY m_key = nullptr;
    const COpenKey* m_pParent = nullptr;
    std::wstring m_strRealPath;
    bool m_bBehindLink = false;
    bool m_bRead = false;
    CKeyContents m_contents;

    ~COpenKey() {
        if (m_pParent != nullptr) Close();  // else it is a predefined one
    }
    void Close() {
        if (m_key != nullptr) ::RegCloseKey(m_key);
        m_key = nullptr;
    }
    std::uint32_t Read();
    template <class Take, class Grow>
    void ReadEntries(DWORD count, const Take& take, const Grow& grow);
};

std::uint32_t COpenKey::Read() {
    m_bRead = true;
    m_contents.Clear();
    DWORD subkeys = 0;
    DWORD longestSubkey = 0;
    DWORD values = 0;
    DWORD longestName = 0;
    DWORD largestData = 0;
    const LSTATUS code = RegQueryInfoKeyA(m_key, nullptr, nullptr, nullptr, &subkeys, &longestSubkey, nullptr, &values,
                                          &longestName, &largestData, nullptr, nullptr);
    if (code == ERROR_KEY_DELETED) return ERROR_SUCCESS;  // since it was opened: it holds nothing any more
    m_bRead = code == 0;
    if (!m_bRead) return static_cast<std::uint32_t>(code);
    std::vector<char> name((std::max(longestSubkey, longestName) + std::size_t{1}) * kBytesOfUnit);
    std::vector<char> data(largestData + largestData / 2 + std::size_t{1});
    DWORD nameLength = 0;
    DWORD dataLength = 0;
    m_contents.m_values.reserve(values);
    ReadEntries(
        values,
        [&](DWORD index) {
            nameLength = static_cast<DWORD>(name.size());
            dataLength = static_cast<DWORD>(data.size());
            DWORD type = 0;
            const LSTATUS taken = RegEnumValueA(m_key, index, name.data(), &nameLength, nullptr, &type,
                                                reinterpret_cast<BYTE*>(data.data()), &dataLength);
            if (taken == 0) {
                const CKeyContents::CSpan kept = m_contents.Add({name.data(), nameLength});
                m_contents.m_values.push_back({kept, type, m_contents.Add({data.data(), dataLength})});
            }
            return taken;
        },
        [&] {
            constexpr std::size_t kLargest = std::size_t{1} << 30;
            if (data.size() >= kLargest) return false;
            name.resize(name.size() * 2);
            data.resize(std::max<std::size_t>(data.size() * 2, dataLength));
            return true;
        });
    m_contents.m_subkeys.reserve(subkeys);
    ReadEntries(
        subkeys,
        [&](DWORD index) {
            nameLength = static_cast<DWORD>(name.size());
            const LSTATUS taken =
                RegEnumKeyExA(m_key, index, name.data(), &nameLength, nullptr, nullptr, nullptr, nullptr);
            if (taken == 0) m_contents.m_subkeys.push_back({m_contents.Add({name.data(), nameLength}), 0});
            return taken;
        },
        [&] {
            constexpr std::size_t kLongest = std::size_t{1} << 20;
            if (name.size() >= kLongest) return false;
            name.resize(name.size() * 2);
            return true;
        });
    return ERROR_SUCCESS;
}

// As many as were counted; the list may have shrunk since. An entry that outgrows its room is taken again, and one that
// cannot be read costs itself.
template <class Take, class Grow>
void COpenKey::ReadEntries(DWORD count, const Take& take, const Grow& grow) {
    for (DWORD index = 0; index < count; ++index) {
        LSTATUS code = take(index);
        while (code == ERROR_MORE_DATA && grow())
            code = take(index);
        if (code == ERROR_NO_MORE_ITEMS || code == ERROR_KEY_DELETED) break;
        if (code != 0) m_contents.m_dwError = static_cast<std::uint32_t>(code);
    }
}

class CWin32Registry : public CRegistry {
public:
    std::vector<CNotice> GetProblems() const override { return m_problems; }
    std::uint32_t RegOpenKeyEx(HKEY parent, std::string_view name, HKEY& key) override;
    void RegCloseKey(HKEY key) override;
    std::uint32_t RegQueryValueEx(HKEY key, std::string_view name, std::uint32_t* type, CRoom& data) override;

private:
    std::uint32_t ReadKey(HKEY key, bool anew, CKeyContents*& contents) override;
    COpenKey* Find(HKEY key);
    bool MayShow(const COpenKey& parent, COpenKey& key);

    COpenKeys<COpenKey> m_keys;
    std::map<HKEY, std::unique_ptr<COpenKey>> m_predefined;  // open at all times
    std::vector<CNotice> m_problems;
};

COpenKey* CWin32Registry::Find(HKEY key) {
    if (key < HKEY_CLASSES_ROOT) return m_keys.Find(key);
    std::unique_ptr<COpenKey>& predefined = m_predefined[key];
    if (predefined == nullptr) {
        predefined = std::make_unique<COpenKey>();
        predefined->m_key = SystemKey(key);
    }
    return predefined.get();
}

// Whether the key is another one than those that it lies in. A key of its parent's path and its own name stands where
// it seems to; any other is behind a link.
bool CWin32Registry::MayShow(const COpenKey& parent, COpenKey& key) {
    key.m_strRealPath = RealPathOf(key.m_key);
    key.m_bBehindLink = parent.m_bBehindLink;
    if (key.m_strRealPath.empty()) return true;
    const std::wstring_view above = std::wstring_view(key.m_strRealPath).substr(0, key.m_strRealPath.rfind(L'\\'));
    if (!parent.m_strRealPath.empty() && !EqualNoCase(above, parent.m_strRealPath)) key.m_bBehindLink = true;
    if (!key.m_bBehindLink) return true;
    for (const COpenKey* level = &parent; level != nullptr; level = level->m_pParent) {
        if (EqualNoCase(level->m_strRealPath, key.m_strRealPath)) return false;
    }
    if (++m_nBehindLinks <= kMostKeysBehindLinks) return true;
    if (m_problems.empty()) {
        m_problems.push_back({"links of the registry show more than " + std::to_string(kMostKeysBehindLinks) +
                              " keys; what is behind further ones is left out"});
    }
    return false;
}

std::uint32_t CWin32Registry::RegOpenKeyEx(HKEY parent, std::string_view name, HKEY& key) {
    ThrowIfInterrupted();
    const COpenKey* const above = Find(parent);
    if (above == nullptr) return ERROR_INVALID_HANDLE;
    if (name.find('\0') != std::string_view::npos) return ERROR_FILE_NOT_FOUND;
    ::HKEY opened = nullptr;
    const LSTATUS code = RegOpenKeyExA(above->m_key, CString(name).c_str(), 0, KEY_READ, &opened);
    if (code != 0) return static_cast<std::uint32_t>(code);
    if (IsPredefined(opened)) return ERROR_INVALID_HANDLE;
    std::unique_ptr<COpenKey> made = m_keys.Take();
    made->m_key = opened;
    made->m_pParent = above;
    made->m_bRead = false;
    if (!MayShow(*above, *made)) {
        made->Close();
        m_keys.GiveBack(std::move(made));
        return ERROR_CANT_RESOLVE_FILENAME;
    }
    key = m_keys.Add(std::move(made));
    return ERROR_SUCCESS;
}

void CWin32Registry::RegCloseKey(HKEY key) {
    if (COpenKey* const open = m_keys.Find(key)) open->Close();
    m_keys.Close(key);
}

std::uint32_t CWin32Registry::ReadKey(HKEY key, bool anew, CKeyContents*& contents) {
    ThrowIfInterrupted();
    COpenKey* const open = Find(key);
    if (open == nullptr) return ERROR_INVALID_HANDLE;
    contents = &open->m_contents;
    return open->m_bRead && !anew ? ERROR_SUCCESS : open->Read();
}

std::uint32_t CWin32Registry::RegQueryValueEx(HKEY key, std::string_view name, std::uint32_t* type, CRoom& data) {
    const COpenKey* const open = Find(key);
    if (open == nullptr) return ERROR_INVALID_HANDLE;
    if (name.find('\0') != std::string_view::npos) return ERROR_FILE_NOT_FOUND;
    DWORD kind = 0;
    DWORD size = data.m_nSize;
    const LSTATUS code = RegQueryValueExA(open->m_key, CString(name).c_str(), nullptr, &kind,
                                          reinterpret_cast<BYTE*>(data.m_pBytes), &size);
    if (code == 0 || code == ERROR_MORE_DATA) data.m_nSize = size;
    if (type != nullptr) *type = kind;
    return static_cast<std::uint32_t>(code);
}

}  // namespace

std::unique_ptr<CRegistry> MakeRegistry() { return std::make_unique<CWin32Registry>(); }

}  // namespace delvane
