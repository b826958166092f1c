// What the calls see is one tree, made of hives as it is asked for:
//
//     predefined key   leads to a root: a key of a hive, or two of them laid over each other
//     open key         one or two keys of hives, its layers; it holds all that it shows, decoded once, since the number
//                      and the sizes of its values are asked for first and the values one by one afterwards
//     its subkeys      those of the first layer, and those of the second that it has not; of two of one name each is
//                      the other's second layer. A mount stands in place of a subkey, or beside them
//     its values       those of the first layer, and those of the second that it has not
//     a link           is followed when it is opened, by its path from a predefined key, over other links if need be
//
// Links may lead round in circles or fan out. A key that is open above is not opened again, which ends the circles, and
// a walk opens a number of keys behind links, and bytes in them, which ends the rest.
#include "platform/hosted/registry/registry.h"

#include <algorithm>
#include <sys/stat.h>
#include <unordered_map>
#include <unordered_set>

#include "platform/file_search.h"
#include "platform/host.h"
#include "platform/little_endian.h"

namespace delvane {
namespace {

// A path may lead through links, and these through others, but one look-up comes to an end.
constexpr unsigned kMostLinks = 32;

// How often what links show may hold all that the hives hold.
constexpr std::uint64_t kMostTimesBehindLinks = 8;
constexpr std::uint64_t kBytesBehindLinksAnyway = 16 << 20;

bool TakePrefixNoCase(std::string_view& text, std::string_view prefix) {
    if (text.size() < prefix.size() || !KeyNamesEqual(text.substr(0, prefix.size()), prefix)) return false;
    text.remove_prefix(prefix.size());
    return true;
}

// Takes the first component and the backslash behind it off a path.
std::string_view TakeKeyName(std::string_view& path) {
    const std::size_t end = path.find('\\');
    const std::string_view name = path.substr(0, end);
    path.remove_prefix(end == std::string_view::npos ? path.size() : end + 1);
    return name;
}

}  // namespace

struct CHostedRegistry::COpenKey {
    CLayers m_layers;
    const COpenKey* m_pParent = nullptr;
    std::uint32_t m_nDepth = 0;
    bool m_bBehindLink = false;
    bool m_bRead = false;
    std::string m_strAskedFor;  // the name of the value that was looked for last, and where it was found
    std::optional<std::size_t> m_answer;
    CKeyContents m_contents;
    std::vector<CLayers> m_children;  // by index, where the hive's numbers do not tell; else empty

    void Forget() {
        m_bRead = false;
        m_answer.reset();
    }
    CLayers GetChild(std::size_t index) const {
        if (!m_children.empty()) return m_children[index];
        return {{m_layers.m_first.m_pHive, m_contents.m_subkeys[index].m_nKey}, {}};
    }
    std::string_view GetChildName(std::size_t index) const {
        return m_contents.Get(m_contents.m_subkeys[index].m_name);
    }
    // Turns the hive's numbers into layers, so that a child may come from elsewhere.
    void SpreadChildren() {
        if (!m_children.empty()) return;
        for (const CKeyContents::CSubkey& subkey : m_contents.m_subkeys)
            m_children.push_back({{m_layers.m_first.m_pHive, subkey.m_nKey}, {}});
    }
};

CHostedRegistry::CHostedRegistry() = default;
CHostedRegistry::~CHostedRegistry() = default;

CHostedRegistry::CPlace CHostedRegistry::AddHive(std::unique_ptr<CHive> hive) {
    m_hives.push_back(std::move(hive));
    return {m_hives.back().get(), CHive::GetRoot()};
}

void CHostedRegistry::SetRoot(HKEY root, CLayers layers) { GetOpenKey(root)->m_layers = layers; }

void CHostedRegistry::Mount(CPlace parent, std::string_view name, CPlace target) {
    m_mounts.push_back({parent, std::string(name), target});
}

void CHostedRegistry::AddProblem(CNotice problem) {
    if (std::find(m_problems.begin(), m_problems.end(), problem) != m_problems.end()) return;
    m_problems.push_back(std::move(problem));
}

CHostedRegistry::CFileMarks CHostedRegistry::MarksOf(const std::string& hostPath) {
    struct stat status {};
    if (stat(hostPath.c_str(), &status) != 0) return {};
    return {static_cast<std::int64_t>(status.st_dev), static_cast<std::int64_t>(status.st_ino), status.st_size,
            status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

void CHostedRegistry::Watch(const std::string& hostPath) { m_files.emplace_back(hostPath, MarksOf(hostPath)); }

bool CHostedRegistry::HasChanged() const {
    return std::any_of(m_files.begin(), m_files.end(),
                       [](const auto& file) { return MarksOf(file.first) != file.second; });
}

std::vector<CNotice> CHostedRegistry::GetProblems() const {
    std::vector<CNotice> problems = m_problems;
    for (const auto& hive : m_hives) {
        std::vector<CNotice> more = hive->GetProblems();
        std::move(more.begin(), more.end(), std::back_inserter(problems));
    }
    return problems;
}

// The handles.

CHostedRegistry::COpenKey* CHostedRegistry::GetOpenKey(HKEY key) {
    if (key >= HKEY_CLASSES_ROOT) {
        std::unique_ptr<COpenKey>& root = m_roots[key];
        if (root == nullptr) root = std::make_unique<COpenKey>();
        return root.get();
    }
    return m_open.Find(key);
}

std::uint32_t CHostedRegistry::RegOpenKeyEx(HKEY parent, std::string_view name, HKEY& key) {
    ThrowIfInterrupted();
    COpenKey* const above = GetOpenKey(parent);
    if (above == nullptr || !Read(*above)) return ERROR_INVALID_HANDLE;
    const std::optional<std::size_t> index = FindChild(*above, name);
    if (!index) return ERROR_FILE_NOT_FOUND;
    const CLayers child = above->GetChild(*index);
    unsigned links = 0;
    const std::optional<CLayers> layers = FollowLinks(child, links);
    if (!layers) return ERROR_FILE_NOT_FOUND;
    const bool isLink = layers->m_first != child.m_first || layers->m_second != child.m_second;
    if (isLink && IsOpenAbove(above, layers->m_first)) return ERROR_CANT_RESOLVE_FILENAME;
    if (above->m_nDepth >= kMaxTreeDepth) {
        AddProblem({"the registry has keys below " + std::to_string(kMaxTreeDepth) + " others; they are left out"});
        return ERROR_FILENAME_EXCED_RANGE;
    }
    if (std::find(m_unopenable.begin(), m_unopenable.end(), layers->m_first) != m_unopenable.end()) {
        return ERROR_INVALID_HANDLE;
    }
    std::unique_ptr<COpenKey> opened = m_open.Take();
    opened->Forget();
    opened->m_layers = *layers;
    opened->m_pParent = above;
    opened->m_nDepth = above->m_nDepth + 1;
    opened->m_bBehindLink = isLink || above->m_bBehindLink;
    const bool isRead = Read(*opened);
    if (!isRead || !CountBehindLinks(*opened)) {
        m_open.GiveBack(std::move(opened));
        return isRead ? ERROR_CANT_RESOLVE_FILENAME : ERROR_BADKEY;
    }
    key = m_open.Add(std::move(opened));
    return ERROR_SUCCESS;
}

void CHostedRegistry::RegCloseKey(HKEY key) { m_open.Close(key); }

// False for a key behind a link once a walk has seen too many of them.
bool CHostedRegistry::CountBehindLinks(const COpenKey& key) {
    if (!key.m_bBehindLink) return true;
    std::uint64_t most = 0;
    for (const auto& hive : m_hives)
        most += hive->GetSize();
    most = most * kMostTimesBehindLinks + kBytesBehindLinksAnyway;
    if (m_nBehindLinks >= kMostKeysBehindLinks || m_nBytesBehindLinks + key.m_contents.m_bytes.size() > most) {
        AddProblem({"the registry's links lead to the same keys again and again; after " +
                    std::to_string(m_nBehindLinks) + " keys behind links the others are left out"});
        m_nBehindLinks = kMostKeysBehindLinks;
        return false;
    }
    ++m_nBehindLinks;
    m_nBytesBehindLinks += key.m_contents.m_bytes.size();
    return true;
}

bool CHostedRegistry::IsOpenAbove(const COpenKey* parent, CPlace place) const {
    // A key that was closed ahead of those below it may be another one by now; then the depths do not fit.
    for (std::uint32_t depth = parent->m_nDepth; parent != nullptr && parent->m_nDepth == depth; --depth) {
        if (parent->m_layers.m_first == place) return true;
        parent = parent->m_pParent;
    }
    return false;
}

std::optional<std::size_t> CHostedRegistry::FindChild(const COpenKey& key, std::string_view name) const {
    const std::size_t count = key.m_contents.m_subkeys.size();
    const std::size_t last = key.m_contents.m_nLastSubkey;
    if (last < count && key.GetChildName(last) == name) return last;
    for (const bool exact : {true, false}) {
        for (std::size_t i = 0; i < count; ++i) {
            if (exact ? key.GetChildName(i) == name : KeyNamesEqual(key.GetChildName(i), name)) return i;
        }
    }
    return std::nullopt;
}

// What an open key shows.

bool CHostedRegistry::Read(COpenKey& key) {
    if (key.m_bRead) return true;
    key.m_contents.Clear();
    key.m_children.clear();
    const CPlace first = key.m_layers.m_first;
    if (first && !first.m_pHive->ReadKey(first.m_nKey, key.m_contents)) {
        if (key.m_pParent != nullptr) return false;
        key.m_contents.Clear();  // a hive with a damaged root is an empty one
    }
    if (key.m_layers.m_second) ReadSecondLayer(key);
    ApplyMounts(key);
    key.m_bRead = true;
    return true;
}

void CHostedRegistry::ReadSecondLayer(COpenKey& key) {
    CKeyContents& contents = key.m_contents;
    m_scratch.Clear();
    CHive* const hive = key.m_layers.m_second.m_pHive;
    if (!hive->ReadKey(key.m_layers.m_second.m_nKey, m_scratch)) return;
    key.SpreadChildren();
    std::unordered_map<std::string, std::size_t> subkeys;
    for (std::size_t i = 0; i < contents.m_subkeys.size(); ++i)
        subkeys.emplace(FoldKeyName(key.GetChildName(i)), i);
    for (const CKeyContents::CSubkey& subkey : m_scratch.m_subkeys) {
        const std::string_view name = m_scratch.Get(subkey.m_name);
        const CPlace place{hive, subkey.m_nKey};
        const auto found = subkeys.find(FoldKeyName(name));
        if (found == subkeys.end()) {
            contents.m_subkeys.push_back({contents.Add(name), subkey.m_nKey});
            key.m_children.push_back({place, {}});
        } else if (!key.m_children[found->second].m_second) {
            key.m_children[found->second].m_second = place;
        }
    }
    if (contents.m_dwError == ERROR_SUCCESS) contents.m_dwError = m_scratch.m_dwError;
    std::unordered_set<std::string> values;
    for (const CKeyContents::CValue& value : contents.m_values)
        values.insert(FoldKeyName(contents.Get(value.m_name)));
    for (const CKeyContents::CValue& value : m_scratch.m_values) {
        const std::string_view name = m_scratch.Get(value.m_name);
        if (values.contains(FoldKeyName(name))) continue;
        const CKeyContents::CSpan nameSpan = contents.Add(name);
        contents.m_values.push_back({nameSpan, value.m_dwType, contents.Add(m_scratch.Get(value.m_data))});
    }
}

void CHostedRegistry::ApplyMounts(COpenKey& key) {
    for (const CMount& mount : m_mounts) {
        if (mount.m_parent != key.m_layers.m_first && mount.m_parent != key.m_layers.m_second) continue;
        key.SpreadChildren();
        const std::optional<std::size_t> index = FindChild(key, mount.m_strName);
        if (index) {
            key.m_children[*index] = {mount.m_target, {}};
        } else {
            key.m_contents.m_subkeys.push_back({key.m_contents.Add(mount.m_strName), mount.m_target.m_nKey});
            key.m_children.push_back({mount.m_target, {}});
        }
    }
}

std::uint32_t CHostedRegistry::ReadKey(HKEY key, bool, CKeyContents*& contents) {
    COpenKey* const open = GetOpenKey(key);
    if (open == nullptr || !Read(*open)) return ERROR_INVALID_HANDLE;
    contents = &open->m_contents;
    return ERROR_SUCCESS;
}

std::uint32_t CHostedRegistry::RegQueryValueEx(HKEY key, std::string_view name, std::uint32_t* type, CRoom& data) {
    COpenKey* const open = GetOpenKey(key);
    if (open == nullptr || !Read(*open)) return ERROR_INVALID_HANDLE;
    const CKeyContents& contents = open->m_contents;
    const auto& values = contents.m_values;
    const auto isExact = [&](const CKeyContents::CValue& value) { return contents.Get(value.m_name) == name; };
    const auto isEqual = [&](const auto& value) { return KeyNamesEqual(contents.Get(value.m_name), name); };
    // Asked for in turn, or one name again and again, no value is looked for among all the others.
    auto found = values.begin() + static_cast<std::ptrdiff_t>(std::min(contents.m_nLastValue, values.size()));
    if (found == values.end() || !isExact(*found)) {
        if (!open->m_answer || open->m_strAskedFor != name) {
            found = std::find_if(values.begin(), values.end(), isExact);
            if (found == values.end()) found = std::find_if(values.begin(), values.end(), isEqual);
            open->m_strAskedFor = name;
            open->m_answer = static_cast<std::size_t>(found - values.begin());
        }
        found = values.begin() + static_cast<std::ptrdiff_t>(*open->m_answer);
    }
    if (found == values.end()) return ERROR_FILE_NOT_FOUND;
    if (type != nullptr) *type = found->m_dwType;
    if (data.m_pBytes != nullptr) {
        return FillRoom(data, contents.Get(found->m_data), false) ? ERROR_SUCCESS : ERROR_MORE_DATA;
    }
    data.m_nSize = static_cast<std::uint32_t>(found->m_data.m_nLength);
    return ERROR_SUCCESS;
}

// Paths and links.

std::optional<CHostedRegistry::CLayers> CHostedRegistry::FindRoot(HKEY root) const {
    const auto found = m_roots.find(root);
    if (found == m_roots.end() || !found->second->m_layers.m_first) return std::nullopt;
    return found->second->m_layers;
}

std::optional<CHostedRegistry::CLayers> CHostedRegistry::Find(HKEY root, std::string_view path) {
    const std::optional<CLayers> layers = FindRoot(root);
    unsigned links = 0;
    return layers ? FindBelow(*layers, path, links) : std::nullopt;
}

// Into m_scratch, of the first layer alone: what is looked up so has no second.
bool CHostedRegistry::ReadAt(HKEY root, std::string_view path) {
    m_scratch.Clear();
    const std::optional<CLayers> key = Find(root, path);
    return key && key->m_first.m_pHive->ReadKey(key->m_first.m_nKey, m_scratch);
}

const CKeyContents::CValue* CHostedRegistry::FindValue(HKEY root, std::string_view path, std::string_view name) {
    if (!ReadAt(root, path)) return nullptr;
    for (const CKeyContents::CValue& value : m_scratch.m_values) {
        if (KeyNamesEqual(m_scratch.Get(value.m_name), name)) return &value;
    }
    return nullptr;
}

std::optional<CString> CHostedRegistry::FindText(HKEY root, std::string_view path, std::string_view name) {
    const CKeyContents::CValue* const value = FindValue(root, path, name);
    if (value == nullptr || (value->m_dwType != REG_SZ && value->m_dwType != REG_EXPAND_SZ)) return std::nullopt;
    const std::string_view text = m_scratch.Get(value->m_data);
    return CString(text.substr(0, text.find('\0')));
}

std::optional<std::uint32_t> CHostedRegistry::FindNumber(HKEY root, std::string_view path, std::string_view name) {
    const CKeyContents::CValue* const value = FindValue(root, path, name);
    if (value == nullptr || value->m_dwType != REG_DWORD || value->m_data.m_nLength != 4) return std::nullopt;
    return U32(m_scratch.Get(value->m_data), 0);
}

std::vector<CString> CHostedRegistry::ListSubkeys(HKEY root, std::string_view path) {
    std::vector<CString> names;
    if (!ReadAt(root, path)) return names;
    for (const CKeyContents::CSubkey& subkey : m_scratch.m_subkeys)
        names.emplace_back(m_scratch.Get(subkey.m_name));
    return names;
}

CHostedRegistry::CPlace CHostedRegistry::FindSubkey(CPlace parent, std::string_view name) {
    if (!parent) return {};
    for (const CMount& mount : m_mounts) {
        if (mount.m_parent == parent && KeyNamesEqual(mount.m_strName, name)) return mount.m_target;
    }
    const std::optional<std::uint32_t> found = parent.m_pHive->FindSubkey(parent.m_nKey, name);
    return found ? CPlace{parent.m_pHive, *found} : CPlace{};
}

std::optional<CHostedRegistry::CLayers> CHostedRegistry::FindBelow(CLayers key, std::string_view path,
                                                                   unsigned& links) {
    while (!path.empty()) {
        const std::string_view name = TakeKeyName(path);
        CLayers child{FindSubkey(key.m_first, name), FindSubkey(key.m_second, name)};
        if (!child.m_first) std::swap(child.m_first, child.m_second);
        if (!child.m_first) return std::nullopt;
        const std::optional<CLayers> target = FollowLinks(child, links);
        if (!target) return std::nullopt;
        key = *target;
    }
    return key;
}

// A link in the first layer leads away as a whole; one in the second only the second.
std::optional<CHostedRegistry::CLayers> CHostedRegistry::FollowLinks(CLayers key, unsigned& links) {
    if (const std::optional<std::string> target = key.m_first.m_pHive->GetLink(key.m_first.m_nKey)) {
        return FindLinkTarget(*target, links);
    }
    if (!key.m_second) return key;
    if (const std::optional<std::string> target = key.m_second.m_pHive->GetLink(key.m_second.m_nKey)) {
        const std::optional<CLayers> second = FindLinkTarget(*target, links);
        key.m_second = second ? second->m_first : CPlace{};
    }
    return key;
}

std::optional<CHostedRegistry::CLayers> CHostedRegistry::FindLinkTarget(std::string_view target, unsigned& links) {
    if (++links > kMostLinks || !TakePrefixNoCase(target, "\\Registry\\")) return std::nullopt;
    const std::string_view top = TakeKeyName(target);
    if (KeyNamesEqual(top, "Machine")) {
        const std::optional<CLayers> root = FindRoot(HKEY_LOCAL_MACHINE);
        return root ? FindBelow(*root, target, links) : std::nullopt;
    }
    if (!KeyNamesEqual(top, "User")) return std::nullopt;
    std::string_view sid = TakeKeyName(target);
    constexpr std::string_view kClasses = "_Classes";
    const bool isClasses =
        sid.size() > kClasses.size() && KeyNamesEqual(sid.substr(sid.size() - kClasses.size()), kClasses);
    if (isClasses) sid.remove_suffix(kClasses.size());
    if (m_strUserSid.empty() ? KeyNamesEqual(sid, ".Default") : !KeyNamesEqual(sid, m_strUserSid)) return std::nullopt;
    std::optional<CLayers> key = FindRoot(HKEY_CURRENT_USER);
    if (key && isClasses) key = FindBelow(*key, "Software\\Classes", links);
    return key ? FindBelow(*key, target, links) : std::nullopt;
}

}  // namespace delvane
