#pragma once
#include "movement/frmOVI.h"
#include "movement/FrmPW.h"

namespace wxl::kde_tool {
class frmKDE;
}

namespace wxl::host {

class frmAbout;

/// Puts the forms of all tools on screen. The modal ones call the form's Form_Load, show it, run its handlers as the
/// user presses its controls, and return once it is closed.
class IFormPresenter : public movement::IPleaseWaitWindow, public movement::ITrackPlayerWindow {
public:
    virtual void ShowKernelDialog(kde_tool::frmKDE& form) = 0;
    virtual void ShowAbout(frmAbout& form) = 0;
};

}  // namespace wxl::host
