#pragma once
#include "platform/controls.h"
#include "platform/messages.h"

#include <string>

namespace wxl::movement {

class FrmPW;

/// Puts the "Please Wait" window on screen beside the host's windows.
class IPleaseWaitWindow {
public:
    virtual ~IPleaseWaitWindow() = default;

    /// Shows the form without blocking; from now on it is redrawn from its values at every IHost::Yield. A form that is
    /// shown already comes to the front.
    virtual void ShowPleaseWait(FrmPW& form) = 0;

    /// Takes the form off the screen and forgets it; called for every shown form before it is destroyed.
    virtual void HidePleaseWait(FrmPW& form) = 0;
};

/// The "Please Wait" window: one progress bar, shown modeless during long passes over a table.
class FrmPW {
public:
    /// Host and window must outlive the form.
    FrmPW(platform::IHost& host, IPleaseWaitWindow& window);
    ~FrmPW();
    FrmPW(const FrmPW&) = delete;
    FrmPW& operator=(const FrmPW&) = delete;

    std::string Caption = "Please Wait";
    platform::ProgressBar PBar;
    bool Visible = false;

    void Show();
    void Hide();

    /// The bar runs from 0 to `maximum` (at least 1), starting at 0.
    void SetRange(double maximum);

    /// Moves the bar, and gives the host a turn whenever it moved visibly, about 200 times in all.
    void SetPosition(double position);

private:
    platform::IHost& m_host;
    IPleaseWaitWindow& m_window;
    double m_nextYield = 0.0;
};

}  // namespace wxl::movement
