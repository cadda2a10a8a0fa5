#include "movement/FrmPW.h"

#include <algorithm>

namespace wxl::movement {

FrmPW::FrmPW(platform::IHost& host, IPleaseWaitWindow& window) : m_host(host), m_window(window) {}

FrmPW::~FrmPW() {
    if (Visible) m_window.HidePleaseWait(*this);
}

void FrmPW::Show() {
    Visible = true;
    m_window.ShowPleaseWait(*this);
    m_host.Yield();
}

void FrmPW::Hide() {
    if (!Visible) return;
    Visible = false;
    m_window.HidePleaseWait(*this);
}

void FrmPW::SetRange(double maximum) {
    PBar.Minimum = 0.0;
    PBar.Maximum = std::max(1.0, maximum);
    PBar.Value = 0.0;
    m_nextYield = 0.0;
}

void FrmPW::SetPosition(double position) {
    PBar.Value = std::clamp(position, PBar.Minimum, PBar.Maximum);
    if (position < m_nextYield) return;
    constexpr double kVisibleSteps = 200.0;
    m_nextYield = position + PBar.Maximum / kVisibleSteps;
    m_host.Yield();
}

}  // namespace wxl::movement
