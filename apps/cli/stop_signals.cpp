#include "apps/cli/stop_signals.h"

namespace wxl::cli {

namespace {

volatile std::sig_atomic_t g_came = 0;

extern "C" void note_wish(int) {
    g_came = 1;
}

}  // namespace

StopSignals::StopSignals() {
    g_came = 0;
    struct sigaction once = {};
    once.sa_handler = note_wish;
    // What it interrupts must go on as if nothing had happened.
    once.sa_flags = static_cast<int>(SA_RESETHAND) | SA_RESTART;
    for (Kept& kept : m_kept) {
        ::sigaction(kept.Signal, nullptr, &kept.Before);
        if (kept.Before.sa_handler != SIG_IGN) ::sigaction(kept.Signal, &once, nullptr);
    }
}

StopSignals::~StopSignals() {
    for (const Kept& kept : m_kept) ::sigaction(kept.Signal, &kept.Before, nullptr);
}

bool StopSignals::Came() {
    return g_came != 0;
}

}  // namespace wxl::cli
