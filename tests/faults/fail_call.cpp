// Preloaded into the program: the call of that name and number fails.
//
// FAIL_CALL names it, FAIL_AT tells which one (from 1), FAIL_WITH the errno. FAIL_TOLD names a file that is made when
// it has failed, so that whoever asks for more of them than there are knows.
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

using CSystemCall = long (*)(long, ...);

long Call(long number, long a = 0, long b = 0, long c = 0, long d = 0, long e = 0, long f = 0) {
    static const auto call = reinterpret_cast<CSystemCall>(dlsym(RTLD_NEXT, "syscall"));
    return call(number, a, b, c, d, e, f);
}

long Word(const void* pointer) { return reinterpret_cast<long>(pointer); }

bool Fails(const char* name) {
    static const char* const wanted = std::getenv("FAIL_CALL");
    static long left = wanted == nullptr ? 0 : std::atol(std::getenv("FAIL_AT"));
    if (wanted == nullptr || std::strcmp(wanted, name) != 0 || --left != 0) return false;
    const long told = Call(SYS_openat, AT_FDCWD, Word(std::getenv("FAIL_TOLD")), O_CREAT | O_WRONLY, 0600);
    if (told >= 0) Call(SYS_close, told);
    errno = std::atoi(std::getenv("FAIL_WITH"));
    return true;
}

}  // namespace

#define FAILING(type, name, parameters, call) \
    type name parameters { return Fails(#name) ? static_cast<type>(-1) : static_cast<type>(call); }

extern "C" {

FAILING(int, statx, (int at, const char* path, int flags, unsigned mask, struct statx* into),
        Call(SYS_statx, at, Word(path), flags, mask, Word(into)))
FAILING(int, stat, (const char* path, struct stat* into), Call(SYS_newfstatat, AT_FDCWD, Word(path), Word(into)))
FAILING(int, lstat, (const char* path, struct stat* into),
        Call(SYS_newfstatat, AT_FDCWD, Word(path), Word(into), AT_SYMLINK_NOFOLLOW))
FAILING(int, fstatat, (int at, const char* path, struct stat* into, int flags),
        Call(SYS_newfstatat, at, Word(path), Word(into), flags))
FAILING(ssize_t, read, (int fd, void* into, size_t size), Call(SYS_read, fd, Word(into), static_cast<long>(size)))
FAILING(ssize_t, write, (int fd, const void* bytes, size_t size),
        Call(SYS_write, fd, Word(bytes), static_cast<long>(size)))
FAILING(int, fsync, (int fd), Call(SYS_fsync, fd))
FAILING(int, rename, (const char* from, const char* to), Call(SYS_renameat, AT_FDCWD, Word(from), AT_FDCWD, Word(to)))
FAILING(int, unlink, (const char* path), Call(SYS_unlinkat, AT_FDCWD, Word(path)))

int openat(int at, const char* path, int flags, ...) {
    std::va_list more;
    va_start(more, flags);
    const long mode = (flags & O_CREAT) != 0 ? va_arg(more, int) : 0;
    va_end(more);
    return Fails("openat") ? -1 : static_cast<int>(Call(SYS_openat, at, Word(path), flags, mode));
}

char* realpath(const char* path, char* resolved) {
    static const auto call = reinterpret_cast<char* (*)(const char*, char*)>(dlsym(RTLD_NEXT, "realpath"));
    return Fails("realpath") ? nullptr : call(path, resolved);
}

// Directories are read by number, and so are attributes.
long syscall(long number, ...) {
    std::va_list more;
    va_start(more, number);
    long words[6];
    for (long& word : words)
        word = va_arg(more, long);
    va_end(more);
    const bool fails = number == SYS_getdents64 && Fails("getdents64");
    return fails ? -1 : Call(number, words[0], words[1], words[2], words[3], words[4], words[5]);
}

}  // extern "C"
