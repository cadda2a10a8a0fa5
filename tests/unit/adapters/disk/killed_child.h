#pragma once
// A child process that is killed at a chosen system call.

#include <csignal>
#include <functional>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

namespace wxl::tests {

enum class ChildEnd { kFinished, kKilled, kCannotTrace };

/// Runs `work` in a child and kills it (SIGKILL) when it is about to make its system call number `call` (from 0),
/// before that call does anything.
inline ChildEnd RunAndKillAt(int call, const std::function<void()>& work) {
    const pid_t child = ::fork();
    if (child == 0) {
        if (::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) ::_exit(99);
        ::raise(SIGSTOP);
        work();
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    if (WIFEXITED(status)) return ChildEnd::kCannotTrace;
    // Every call stops the child twice: before it is made and after.
    for (int stop = 0;; ++stop) {
        if (stop == 2 * call + 1) {
            ::kill(child, SIGKILL);
            ::waitpid(child, &status, 0);
            return ChildEnd::kKilled;
        }
        ::ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        ::waitpid(child, &status, 0);
        if (WIFEXITED(status) || WIFSIGNALED(status)) return ChildEnd::kFinished;
    }
}

}  // namespace wxl::tests
