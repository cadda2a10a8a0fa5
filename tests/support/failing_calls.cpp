// A library to be preloaded into a program under test: the n-th call that writes below a folder fails, in our own code
// as well as in every library that the program uses.

#include "tests/support/failing_calls.h"

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

using wxl::tests::CallKind;
using wxl::tests::FaultPlan;

template <class Function>
Function* next_of(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

FaultPlan* map_plan() {
    const char* file = std::getenv(wxl::tests::kFaultPlanVariable);
    if (file == nullptr) return nullptr;
    static const auto open = next_of<int(const char*, int, ...)>("open");
    const int descriptor = open(file, O_RDWR | O_CLOEXEC);
    if (descriptor < 0) return nullptr;
    void* page = ::mmap(nullptr, sizeof(FaultPlan), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    return page == MAP_FAILED ? nullptr : static_cast<FaultPlan*>(page);
}

FaultPlan* plan() {
    static FaultPlan* const page = map_plan();
    return page;
}

/// Before the program binds itself to the places that it may write, among which the page is not.
[[gnu::constructor]] void map_early() {
    plan();
}

std::string path_of(int descriptor) {
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    std::string path(PATH_MAX, '\0');
    const ssize_t length = ::readlink(link.c_str(), path.data(), path.size());
    path.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    return path;
}

std::string path_at(int folder, const char* name) {
    if (name[0] == '/') return name;
    if (folder != AT_FDCWD) return path_of(folder) + "/" + name;
    std::string here(PATH_MAX, '\0');
    if (::getcwd(here.data(), here.size()) == nullptr) return name;
    return std::string(here.c_str()) + "/" + name;
}

bool stays_full(CallKind kind) {
    return kind == CallKind::kWrite || kind == CallKind::kOpen || kind == CallKind::kFolder;
}

/// Counts the call and sets errno when it is to fail.
bool fails(CallKind kind, const std::string& path) {
    FaultPlan* const page = plan();
    if (page == nullptr || (static_cast<std::uint32_t>(kind) & page->Kinds) == 0) return false;
    const std::string folder = std::string(page->Folder.data()) + "/";
    if (path.compare(0, folder.size(), folder) != 0) return false;
    const std::int64_t number = ++page->Counted;
    const bool first = number == page->FailAt;
    if (!first && !(page->Lasting && page->FailAt > 0 && number > page->FailAt && stays_full(kind))) return false;
    if (++page->Failed == 1) {
        page->FailedKind = static_cast<std::uint32_t>(kind);
        std::strncpy(page->FailedPath.data(), path.c_str(), page->FailedPath.size() - 1);
    }
    std::strncpy(page->LastPath.data(), path.c_str(), page->LastPath.size() - 1);
    if (page->Code < 0) ::kill(::getpid(), -page->Code);
    errno = page->Code;
    return true;
}

bool writes(int flags) {
    return (flags & O_ACCMODE) != O_RDONLY;
}

bool is_open_for_writing(int descriptor) {
    const int flags = ::fcntl(descriptor, F_GETFL);
    return flags >= 0 && writes(flags);
}

/// Half of a write that fails still reaches the file, as on a disk that fills up.
std::size_t half_of(std::size_t size) {
    return size / 2;
}

template <class Open>
int open_at(Open&& real, int folder, const char* path, int flags) {
    if (writes(flags) && fails(CallKind::kOpen, path_at(folder, path))) return -1;
    return real();
}

FILE* open_stream(const char* name, const char* path, const char* mode) {
    const bool writing = std::strpbrk(mode, "wa+") != nullptr;
    if (writing && fails(CallKind::kOpen, path_at(AT_FDCWD, path))) return nullptr;
    return next_of<FILE*(const char*, const char*)>(name)(path, mode);
}

}  // namespace

extern "C" {

#define WXL_OPEN(NAME)                                                                  \
    int NAME(const char* path, int flags, ...) {                                        \
        std::va_list more;                                                              \
        va_start(more, flags);                                                          \
        const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0;          \
        va_end(more);                                                                   \
        static const auto real = next_of<int(const char*, int, ...)>(#NAME);            \
        return open_at([&] { return real(path, flags, mode); }, AT_FDCWD, path, flags); \
    }
WXL_OPEN(open)
WXL_OPEN(open64)
#undef WXL_OPEN

#define WXL_OPENAT(NAME)                                                                      \
    int NAME(int folder, const char* path, int flags, ...) {                                  \
        std::va_list more;                                                                    \
        va_start(more, flags);                                                                \
        const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0;                \
        va_end(more);                                                                         \
        static const auto real = next_of<int(int, const char*, int, ...)>(#NAME);             \
        return open_at([&] { return real(folder, path, flags, mode); }, folder, path, flags); \
    }
WXL_OPENAT(openat)
WXL_OPENAT(openat64)
#undef WXL_OPENAT

FILE* fopen(const char* path, const char* mode) {
    return open_stream("fopen", path, mode);
}

FILE* fopen64(const char* path, const char* mode) {
    return open_stream("fopen64", path, mode);
}

ssize_t write(int descriptor, const void* bytes, size_t size) {
    static const auto real = next_of<ssize_t(int, const void*, size_t)>("write");
    if (!fails(CallKind::kWrite, path_of(descriptor))) return real(descriptor, bytes, size);
    const int code = errno;
    [[maybe_unused]] const ssize_t torn = real(descriptor, bytes, half_of(size));
    errno = code;
    return -1;
}

ssize_t writev(int descriptor, const struct iovec* pieces, int count) {
    static const auto real = next_of<ssize_t(int, const struct iovec*, int)>("writev");
    return fails(CallKind::kWrite, path_of(descriptor)) ? -1 : real(descriptor, pieces, count);
}

#define WXL_PWRITE(NAME, OFFSET)                                                                         \
    ssize_t NAME(int descriptor, const void* bytes, size_t size, OFFSET offset) {                        \
        static const auto real = next_of<ssize_t(int, const void*, size_t, OFFSET)>(#NAME);              \
        if (!fails(CallKind::kWrite, path_of(descriptor))) return real(descriptor, bytes, size, offset); \
        const int code = errno;                                                                          \
        [[maybe_unused]] const ssize_t torn = real(descriptor, bytes, half_of(size), offset);            \
        errno = code;                                                                                    \
        return -1;                                                                                       \
    }
WXL_PWRITE(pwrite, off_t)
WXL_PWRITE(pwrite64, off64_t)
#undef WXL_PWRITE

size_t fwrite(const void* bytes, size_t size, size_t count, FILE* stream) {
    static const auto real = next_of<size_t(const void*, size_t, size_t, FILE*)>("fwrite");
    if (!fails(CallKind::kWrite, path_of(::fileno(stream)))) return real(bytes, size, count, stream);
    const int code = errno;
    real(bytes, size, half_of(count), stream);
    errno = code;
    return 0;
}

int fflush(FILE* stream) {
    static const auto real = next_of<int(FILE*)>("fflush");
    if (stream == nullptr || !fails(CallKind::kWrite, path_of(::fileno(stream)))) return real(stream);
    const int code = errno;
    real(stream);
    errno = code;
    return EOF;
}

int fclose(FILE* stream) {
    static const auto real = next_of<int(FILE*)>("fclose");
    const int descriptor = ::fileno(stream);
    const bool failing = is_open_for_writing(descriptor) && fails(CallKind::kClose, path_of(descriptor));
    const int code = errno;
    const int result = real(stream);
    if (!failing) return result;
    errno = code;
    return EOF;
}

int close(int descriptor) {
    static const auto real = next_of<int(int)>("close");
    const bool failing = is_open_for_writing(descriptor) && fails(CallKind::kClose, path_of(descriptor));
    const int code = errno;
    const int result = real(descriptor);
    if (!failing) return result;
    errno = code;
    return -1;
}

#define WXL_SYNC(NAME)                                                              \
    int NAME(int descriptor) {                                                      \
        static const auto real = next_of<int(int)>(#NAME);                          \
        return fails(CallKind::kSync, path_of(descriptor)) ? -1 : real(descriptor); \
    }
WXL_SYNC(fsync)
WXL_SYNC(fdatasync)
#undef WXL_SYNC

#define WXL_TRUNCATE(NAME, OFFSET)                                                            \
    int NAME(int descriptor, OFFSET size) {                                                   \
        static const auto real = next_of<int(int, OFFSET)>(#NAME);                            \
        return fails(CallKind::kTruncate, path_of(descriptor)) ? -1 : real(descriptor, size); \
    }
WXL_TRUNCATE(ftruncate, off_t)
WXL_TRUNCATE(ftruncate64, off64_t)
#undef WXL_TRUNCATE

int rename(const char* from, const char* to) {
    static const auto real = next_of<int(const char*, const char*)>("rename");
    return fails(CallKind::kRename, path_at(AT_FDCWD, to)) ? -1 : real(from, to);
}

int renameat(int fromFolder, const char* from, int toFolder, const char* to) {
    static const auto real = next_of<int(int, const char*, int, const char*)>("renameat");
    return fails(CallKind::kRename, path_at(toFolder, to)) ? -1 : real(fromFolder, from, toFolder, to);
}

int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) {
    static const auto real = next_of<int(int, const char*, int, const char*, unsigned)>("renameat2");
    return fails(CallKind::kRename, path_at(toFolder, to)) ? -1 : real(fromFolder, from, toFolder, to, flags);
}

int mkdir(const char* path, mode_t mode) {
    static const auto real = next_of<int(const char*, mode_t)>("mkdir");
    return fails(CallKind::kFolder, path_at(AT_FDCWD, path)) ? -1 : real(path, mode);
}

int unlink(const char* path) {
    static const auto real = next_of<int(const char*)>("unlink");
    return fails(CallKind::kRemove, path_at(AT_FDCWD, path)) ? -1 : real(path);
}

int unlinkat(int folder, const char* path, int flags) {
    static const auto real = next_of<int(int, const char*, int)>("unlinkat");
    return fails(CallKind::kRemove, path_at(folder, path)) ? -1 : real(folder, path, flags);
}

int remove(const char* path) {
    static const auto real = next_of<int(const char*)>("remove");
    return fails(CallKind::kRemove, path_at(AT_FDCWD, path)) ? -1 : real(path);
}

int rmdir(const char* path) {
    static const auto real = next_of<int(const char*)>("rmdir");
    return fails(CallKind::kRemove, path_at(AT_FDCWD, path)) ? -1 : real(path);
}

}  // extern "C"
