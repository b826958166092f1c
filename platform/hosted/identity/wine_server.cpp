// A server holds a lock on the file "lock" in a directory that bears the numbers of the prefix's device and inode.
// Where that directory lies depends on who built Wine: in /tmp/.wine-UID, or, in Debian's, in /run/user/UID/wine or in
// a folder of a random name in TMPDIR or /tmp, which the file "wineserver" in the prefix tells. The lock is looked at,
// not taken.
#include "platform/hosted/identity/wine_server.h"

#include <array>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <vector>

#include "platform/hosted/choice.h"
#include "platform/hosted/files/host_file.h"

namespace delvane {
namespace {

bool IsLocked(const std::string& path) {
    const auto file = CHostFile::Open(path);
    struct flock lock {};
    lock.l_type = F_RDLCK;
    lock.l_whence = SEEK_SET;
    return file && fcntl(file->GetDescriptor(), F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

}  // namespace

bool IsWineRunning(const std::string& prefix) {
    struct stat status {};
    if (stat(prefix.c_str(), &status) != 0) return false;
    std::array<char, 64> name{};
    std::snprintf(name.data(), name.size(), "/server-%llx-%llx/lock", static_cast<unsigned long long>(status.st_dev),
                  static_cast<unsigned long long>(status.st_ino));
    const std::string user = std::to_string(status.st_uid);  // a prefix belongs to its user
    std::vector<std::string> folders = {"/tmp/.wine-" + user, "/run/user/" + user + "/wine"};
    if (const std::string runtime = GetVariable("XDG_RUNTIME_DIR"); !runtime.empty()) {
        folders.push_back(runtime + "/wine");
    }
    constexpr std::uint64_t kLongestName = 255;
    if (const auto random = ReadHostFile(prefix + "/wineserver", kLongestName)) {
        const std::string last = random->substr(0, random->find_first_of(std::string_view("\n/\0", 3)));
        for (const std::string& parent : {GetVariable("TMPDIR"), std::string("/tmp")})
            folders.push_back(parent + "/" + last);
    }
    for (const std::string& folder : folders) {
        if (IsLocked(folder + name.data())) return true;
    }
    return false;
}

}  // namespace delvane
