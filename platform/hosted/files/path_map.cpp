#include "platform/hosted/files/path_map.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <memory>
#include <sys/stat.h>

#include "platform/hosted/files/host_file.h"
#include "platform/text.h"

namespace delvane {
namespace {

bool IsSeparator(char c) { return c == '\\' || c == '/'; }

bool Exists(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0;
}

std::string Join(const std::string& directory, std::string_view name) {
    std::string path = directory;
    if (!path.ends_with('/')) path += '/';
    return path += name;
}

}  // namespace

std::string ToHostForm(std::string_view hostPath) {
    std::string path(hostPath);
    std::replace(path.begin(), path.end(), '/', '\\');
    return path;
}

const CHostedDrive* CPathMap::FindDrive(std::string_view path) const {
    for (const CHostedDrive& drive : m_drives) {
        if (IsPrefixNoCase({&drive.m_letter, 1}, path)) return &drive;
    }
    return nullptr;
}

std::optional<CPathMap::CParts> CPathMap::Split(std::string_view path) const {
    CParts parts;
    if (path.find('\0') != std::string_view::npos || path.empty()) return std::nullopt;
    if (!IsSeparator(path.front())) {
        const bool isDrivePath = path.size() >= 2 && path[1] == ':' && (path.size() == 2 || IsSeparator(path[2]));
        parts.m_pDrive = isDrivePath ? FindDrive(path) : nullptr;
        if (parts.m_pDrive == nullptr) return std::nullopt;
        path.remove_prefix(2);
    }
    while (!path.empty()) {
        const auto end = std::find_if(path.begin(), path.end(), IsSeparator);
        const std::string_view name(path.begin(), end);
        if (name == "..") {
            if (!parts.m_names.empty()) parts.m_names.pop_back();
        } else if (!name.empty() && name != ".") {
            parts.m_names.emplace_back(name);
        }
        path.remove_prefix(std::min(path.size(), name.size() + 1));
    }
    return parts;
}

// A comparison asks for each file that has gone since the snapshot; listing its directory each time would make that the
// square of their number. So the last directory is remembered, for as long as its times say that it is the same.
std::optional<std::string> CPathMap::FindName(const std::string& directory, std::string_view name) const {
    struct stat status {};
    if (stat(directory.c_str(), &status) != 0) return std::nullopt;
    const auto stamp = [](const timespec& time) { return std::pair(time.tv_sec, time.tv_nsec); };
    if (m_listing.m_strDirectory != directory || m_listing.m_changed != stamp(status.st_ctim)) {
        m_listing = {};
        const std::unique_ptr<DIR, int (*)(DIR*)> stream(opendir(directory.c_str()), &closedir);
        if (stream == nullptr) return std::nullopt;
        m_listing.m_strDirectory = directory;
        m_listing.m_changed = stamp(status.st_ctim);
        while (const dirent* const entry = readdir(stream.get())) {
            std::string& found = m_listing.m_names[FoldCase(entry->d_name)];
            if (found.empty() || found > entry->d_name) found = entry->d_name;
        }
    }
    const auto found = m_listing.m_names.find(FoldCase(name));
    if (found != m_listing.m_names.end()) return found->second;
    errno = ENOENT;
    return std::nullopt;
}

std::optional<std::string> CPathMap::Find(std::string_view path) const {
    errno = ENOENT;
    const std::optional<CParts> parts = Split(path);
    std::optional<std::string> found = parts ? FindAnywhere(*parts) : std::nullopt;
    if (!found || parts->m_pDrive == nullptr || m_rules.m_strVolume.empty()) return found;
    const std::string real = RealHostPath(*found);
    if (LiesWithin(real, m_rules.m_strVolume)) return found;
    if (!real.empty()) errno = ENOENT;
    return std::nullopt;
}

std::optional<std::string> CPathMap::FindAnywhere(const CParts& parts) const {
    const std::string base = parts.m_pDrive == nullptr ? "/" : parts.m_pDrive->m_strRoot;
    std::string spelled = base;
    for (const std::string& name : parts.m_names)
        spelled = Join(spelled, name);
    if (Exists(spelled)) return spelled;
    if (!IsNothing(errno)) return std::nullopt;
    std::string found = base;
    for (const std::string& name : parts.m_names) {
        std::string next = Join(found, name);
        if (!Exists(next)) {
            if (!IsNothing(errno)) return std::nullopt;
            const std::optional<std::string> other = FindName(found, name);
            if (!other) return std::nullopt;
            next = Join(found, *other);
        }
        found = std::move(next);
    }
    return found;
}

std::optional<std::string> CPathMap::FindForCreation(std::string_view path) const {
    if (const std::optional<std::string> existing = Find(path)) return existing;
    while (!path.empty() && IsSeparator(path.back()))
        path.remove_suffix(1);
    const std::size_t nameStart = path.find_last_of("\\/");
    if (nameStart == std::string_view::npos) return std::nullopt;
    const std::string_view name = path.substr(nameStart + 1);
    if (name.empty() || name == "." || name == "..") return std::nullopt;
    const std::optional<std::string> directory = Find(path.substr(0, nameStart + 1));
    if (!directory) return std::nullopt;
    return Join(*directory, name);
}

std::string CPathMap::ToDisplay(std::string_view path) const {
    std::string text = SingleSeparators(path);
    if (!text.empty() && IsSeparator(text.front())) std::replace(text.begin(), text.end(), '\\', '/');
    return text;
}

std::string CPathMap::ToMachine(const std::string& hostPath) const {
    const CHostedDrive* best = nullptr;
    for (const CHostedDrive& drive : m_drives) {
        if (drive.m_bIsHostRoot || drive.m_strRealRoot.empty() || !LiesWithin(hostPath, drive.m_strRealRoot)) continue;
        if (best == nullptr || drive.m_strRealRoot.size() > best->m_strRealRoot.size()) best = &drive;
    }
    if (best == nullptr) return ToHostForm(hostPath);
    return std::string(1, best->m_letter) + ':' + ToHostForm(hostPath.substr(best->m_strRealRoot.size()));
}

}  // namespace delvane
