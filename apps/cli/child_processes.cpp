#include "apps/cli/child_processes.h"

#include "platform/runtime_error.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace wxl::cli {

namespace {

volatile std::sig_atomic_t g_came = 0;

extern "C" void note_signal(int) {
    g_came = 1;
}

sigset_t held_signals() {
    sigset_t held;
    sigemptyset(&held);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&held, signal);
    return held;
}

[[noreturn]] void fail(const std::string& what) {
    platform::Raise(platform::error_number::kDeviceIo,
                    fmt::format("{}: {}", what, std::generic_category().message(errno)));
}

/// Between fork and exec: only calls that are safe there.
[[noreturn]] void become(char* const* arguments, int output, int log, const sigset_t& signals, pid_t parent) {
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (::getppid() != parent) ::_exit(127);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) ::signal(signal, SIG_DFL);
    ::sigprocmask(SIG_SETMASK, &signals, nullptr);
    const int input = ::open("/dev/null", O_RDONLY);
    ::dup2(input, STDIN_FILENO);
    ::dup2(output, STDOUT_FILENO);
    ::dup2(log, STDERR_FILENO);
    ::execv(arguments[0], arguments);
    ::_exit(127);
}

}  // namespace

std::filesystem::path this_program() {
    return std::filesystem::read_symlink("/proc/self/exe");
}

HeldSignals::HeldSignals() {
    g_came = 0;
    const sigset_t held = held_signals();
    ::sigprocmask(SIG_BLOCK, &held, &m_before);
    struct sigaction action {};
    action.sa_handler = note_signal;
    ::sigaction(SIGINT, &action, &m_int);
    ::sigaction(SIGTERM, &action, &m_term);
    ::sigaction(SIGHUP, &action, &m_hangup);
}

HeldSignals::~HeldSignals() {
    ::sigaction(SIGINT, &m_int, nullptr);
    ::sigaction(SIGTERM, &m_term, nullptr);
    ::sigaction(SIGHUP, &m_hangup, nullptr);
    ::sigprocmask(SIG_SETMASK, &m_before, nullptr);
}

bool HeldSignals::Came() {
    return g_came != 0;
}

ChildProcesses::~ChildProcesses() {
    for (const Child& child : m_children) ::kill(child.Process, SIGTERM);
    for (const Child& child : m_children) {
        ::close(child.Output);
        while (::waitpid(child.Process, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
}

void ChildProcesses::Start(std::size_t number, const std::vector<std::string>& arguments,
                           const std::filesystem::path& log) {
    std::vector<std::string> texts = arguments;
    std::vector<char*> pointers;
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    std::array<int, 2> pipe{};
    if (::pipe2(pipe.data(), O_CLOEXEC) != 0) fail("no pipe for another process");
    const int logFile = ::open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0666);
    const pid_t parent = ::getpid();
    const pid_t process = logFile < 0 ? -1 : ::fork();
    if (process == 0) become(pointers.data(), pipe[1], logFile, m_signals.Before(), parent);
    const int reason = errno;
    ::close(pipe[1]);
    if (logFile >= 0) ::close(logFile);
    if (process < 0) {
        ::close(pipe[0]);
        errno = reason;
        fail("another process could not be started");
    }
    m_children.push_back({number, process, pipe[0]});
}

std::vector<ChildProcesses::News> ChildProcesses::Wait() {
    std::vector<pollfd> watched;
    for (const Child& child : m_children) watched.push_back({child.Output, POLLIN, 0});
    if (::ppoll(watched.data(), watched.size(), nullptr, &m_signals.Before()) < 0) {
        if (errno == EINTR) return {};
        fail("the other processes cannot be watched");
    }
    std::vector<News> news;
    for (std::size_t i = 0; i < watched.size(); ++i) {
        if (watched[i].revents == 0) continue;
        std::array<char, 4096> bytes{};
        const ssize_t count = ::read(watched[i].fd, bytes.data(), bytes.size());
        if (count < 0) continue;
        News one{.Number = m_children[i].Number};
        one.Lines = static_cast<std::size_t>(std::count(bytes.begin(), bytes.begin() + count, '\n'));
        one.Ended = count == 0;
        if (one.Ended) {
            while (::waitpid(m_children[i].Process, &one.Status, 0) < 0 && errno == EINTR) {
            }
            ::close(m_children[i].Output);
            m_children[i].Output = -1;
        }
        news.push_back(one);
    }
    std::erase_if(m_children, [](const Child& child) { return child.Output < 0; });
    return news;
}

std::string ending_text(int status) {
    if (WIFSIGNALED(status)) return fmt::format("was killed by signal {}", WTERMSIG(status));
    return fmt::format("ended with exit code {}", WEXITSTATUS(status));
}

}  // namespace wxl::cli
