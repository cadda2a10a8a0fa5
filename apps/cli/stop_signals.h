#pragma once
#include <array>
#include <csignal>

namespace wxl::cli {

/// Takes the first Ctrl-C, kill or end of the terminal for a wish while it lives; the second one ends the program as
/// ever. Signals that are ignored, as under nohup, stay ignored.
class StopSignals {
public:
    StopSignals();
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

    /// Whether one came since the last StopSignals was made.
    static bool Came();

private:
    struct Kept {
        int Signal;
        struct sigaction Before;
    };
    std::array<Kept, 3> m_kept{{{SIGINT, {}}, {SIGTERM, {}}, {SIGHUP, {}}}};
};

}  // namespace wxl::cli
