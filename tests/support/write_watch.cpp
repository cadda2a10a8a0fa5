#include "tests/support/write_watch.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

namespace wxl::tests {

namespace fs = std::filesystem;

namespace {

/// Where a call has its path: the argument with the folder's descriptor (-1: the present folder), and with the path.
struct PathArguments {
    int Folder;
    int Path;
};

using Arguments = std::array<std::uint64_t, 6>;

/// Calls that change what stands in folders, each with the paths that it changes.
const std::multimap<long, PathArguments>& changing_calls() {
    static const std::multimap<long, PathArguments> calls = {
#ifdef SYS_creat
        {SYS_creat, {-1, 0}},    {SYS_unlink, {-1, 0}},   {SYS_rename, {-1, 0}},   {SYS_rename, {-1, 1}},
        {SYS_mkdir, {-1, 0}},    {SYS_rmdir, {-1, 0}},    {SYS_link, {-1, 1}},     {SYS_symlink, {-1, 1}},
        {SYS_mknod, {-1, 0}},    {SYS_chmod, {-1, 0}},    {SYS_chown, {-1, 0}},    {SYS_lchown, {-1, 0}},
#endif
#ifdef SYS_renameat
        {SYS_renameat, {0, 1}},  {SYS_renameat, {2, 3}},
#endif
        {SYS_renameat2, {0, 1}}, {SYS_renameat2, {2, 3}}, {SYS_unlinkat, {0, 1}},  {SYS_mkdirat, {0, 1}},
        {SYS_linkat, {2, 3}},    {SYS_symlinkat, {1, 2}}, {SYS_mknodat, {0, 1}},   {SYS_truncate, {-1, 0}},
        {SYS_fchmodat, {0, 1}},  {SYS_fchownat, {0, 1}},  {SYS_setxattr, {-1, 0}}, {SYS_removexattr, {-1, 0}},
    };
    return calls;
}

std::string text_at(pid_t process, std::uint64_t address) {
    std::string text;
    while (text.size() < PATH_MAX) {
        // Never across the end of a page, behind which there may be nothing.
        std::array<char, 256> piece{};
        const std::size_t length = piece.size() - address % piece.size();
        const iovec own = {piece.data(), length};
        const iovec other = {reinterpret_cast<void*>(address), length};
        if (::process_vm_readv(process, &own, 1, &other, 1, 0) <= 0) return text;
        const std::size_t end = ::strnlen(piece.data(), length);
        text.append(piece.data(), end);
        if (end < length) return text;
        address += length;
    }
    return text;
}

std::string whole_path(pid_t process, const Arguments& arguments, PathArguments where, bool followed) {
    const fs::path given = text_at(process, arguments.at(static_cast<std::size_t>(where.Path)));
    fs::path base = "/proc/" + std::to_string(process) + "/cwd";
    if (where.Folder >= 0) {
        const auto descriptor = static_cast<int>(arguments.at(static_cast<std::size_t>(where.Folder)));
        if (descriptor != AT_FDCWD) base = "/proc/" + std::to_string(process) + "/fd/" + std::to_string(descriptor);
    }
    std::error_code ignored;
    const fs::path path = given.is_absolute() ? given : fs::read_symlink(base, ignored) / given;
    if (followed) return fs::weakly_canonical(path, ignored).string();
    return (fs::weakly_canonical(path.parent_path(), ignored) / path.filename()).string();
}

bool writes(std::uint64_t flags) {
    return (flags & O_ACCMODE) != O_RDONLY || (flags & (O_CREAT | O_TRUNC)) != 0;
}

void note_call(pid_t process, long call, const Arguments& arguments, WatchedRun& run) {
    std::optional<PathArguments> opened;
    std::uint64_t flags = 0;
    if (call == SYS_openat) opened = PathArguments{0, 1}, flags = arguments[2];
#ifdef SYS_open
    if (call == SYS_open) opened = PathArguments{-1, 0}, flags = arguments[1];
#endif
#ifdef SYS_openat2
    if (call == SYS_openat2) opened = PathArguments{0, 1}, flags = O_RDWR;
#endif
    if (opened && writes(flags)) run.Writes.insert(whole_path(process, arguments, *opened, (flags & O_NOFOLLOW) == 0));
    const auto [first, last] = changing_calls().equal_range(call);
    for (auto one = first; one != last; ++one) run.Writes.insert(whole_path(process, arguments, one->second, false));
    if (call == SYS_execve) run.Programs.push_back(text_at(process, arguments[0]));
}

[[noreturn]] void become(const std::vector<std::string>& arguments, const fs::path& folder, const fs::path& temporary,
                         const fs::path& said) {
    std::vector<std::string> texts = arguments;
    std::vector<char*> pointers;
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    const int out = ::open(said.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    ::dup2(::open("/dev/null", O_RDONLY), STDIN_FILENO);
    ::dup2(out, STDOUT_FILENO);
    ::dup2(out, STDERR_FILENO);
    ::setenv("TMPDIR", temporary.c_str(), 1);
    // A program with sanitizers cannot look for leaks while it is traced, and ends with 1 where it tries.
    ::setenv("ASAN_OPTIONS", "detect_leaks=0", 1);
    if (::chdir(folder.c_str()) != 0 || ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) ::_exit(126);
    ::raise(SIGSTOP);
    ::execv(pointers[0], pointers.data());
    ::_exit(127);
}

/// Lets the process and its children run to their ends, from call to call.
void follow(pid_t child, WatchedRun& run) {
    bool isFirstProgram = true;
    int status = 0;
    for (pid_t process = ::waitpid(-1, &status, __WALL); process > 0; process = ::waitpid(-1, &status, __WALL)) {
        if (WIFEXITED(status) || WIFSIGNALED(status)) {
            if (process == child) run.Code = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
            continue;
        }
        long delivered = 0;
        const int signal = WSTOPSIG(status);
        if (signal == (SIGTRAP | 0x80)) {
            __ptrace_syscall_info info = {};
            ::ptrace(PTRACE_GET_SYSCALL_INFO, process, sizeof info, &info);
            if (info.op == PTRACE_SYSCALL_INFO_ENTRY) {
                Arguments arguments{};
                std::copy(std::begin(info.entry.args), std::end(info.entry.args), arguments.begin());
                const bool starts = static_cast<long>(info.entry.nr) == SYS_execve;
                if (!(starts && isFirstProgram)) note_call(process, static_cast<long>(info.entry.nr), arguments, run);
                if (starts) isFirstProgram = false;
            }
        } else if (signal != SIGTRAP && signal != SIGSTOP) {
            delivered = signal;
        }
        ::ptrace(PTRACE_SYSCALL, process, nullptr, delivered);
    }
}

}  // namespace

WatchedRun watch_writes(const std::vector<std::string>& arguments, const fs::path& folder, const fs::path& temporary) {
    WatchedRun run;
    const fs::path said = temporary / "said.txt";
    const pid_t child = ::fork();
    if (child == 0) become(arguments, folder, temporary, said);
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child || !WIFSTOPPED(status)) {
        run.WhyNot = "this system lets no process watch another";
        return run;
    }
    const auto options =
        PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACEFORK | PTRACE_O_TRACEVFORK | PTRACE_O_TRACECLONE | PTRACE_O_EXITKILL;
    ::ptrace(PTRACE_SETOPTIONS, child, nullptr, options);
    ::ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
    follow(child, run);
    std::ifstream source(said, std::ios::binary);
    run.Said.assign(std::istreambuf_iterator<char>(source), {});
    fs::remove(said);
    return run;
}

}  // namespace wxl::tests
