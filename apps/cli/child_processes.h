#pragma once
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <string>
#include <sys/types.h>
#include <vector>

namespace wxl::cli {

/// The file of the running program.
std::filesystem::path this_program();

/// Holds back Ctrl-C and the polite kills while it lives: they are noticed by ChildProcesses::Wait alone.
class HeldSignals {
public:
    HeldSignals();
    ~HeldSignals();
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;

    /// What was blocked before.
    const sigset_t& Before() const { return m_before; }

    /// Whether one of the signals came while Wait was waiting.
    static bool Came();

private:
    sigset_t m_before{};
    struct sigaction m_int {};
    struct sigaction m_term {};
    struct sigaction m_hangup {};
};

/// Programs run side by side, each under a number of the caller's. They end with this process, whatever ends it.
class ChildProcesses {
public:
    explicit ChildProcesses(const HeldSignals& signals) : m_signals(signals) {}

    /// Ends those that still run, and waits for them.
    ~ChildProcesses();
    ChildProcesses(const ChildProcesses&) = delete;
    ChildProcesses& operator=(const ChildProcesses&) = delete;

    /// Starts `arguments` (program first). Its standard output is counted by lines, its standard error goes to the end
    /// of the file `log`. RuntimeError 57 when no process can be made.
    void Start(std::size_t number, const std::vector<std::string>& arguments, const std::filesystem::path& log);

    std::size_t Running() const { return m_children.size(); }

    /// What a program did since the last Wait.
    struct News {
        std::size_t Number = 0;
        std::size_t Lines = 0;
        bool Ended = false;
        int Status = 0;  ///< of an ended one, as waitpid gives it
    };

    /// Waits until there are news, or one of the held signals comes (then there may be none).
    std::vector<News> Wait();

private:
    struct Child {
        std::size_t Number = 0;
        pid_t Process = 0;
        int Output = -1;
    };

    const HeldSignals& m_signals;
    std::vector<Child> m_children;
};

/// "ended with exit code 1", "was killed by signal 9".
std::string ending_text(int status);

}  // namespace wxl::cli
