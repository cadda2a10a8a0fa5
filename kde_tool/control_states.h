#pragma once
#include "platform/controls.h"

namespace wxl::kde_tool {

/// Switches a control on or off; a text or list control that is off takes the colour of button faces.
template <class Control>
void enable(Control& control, bool enabled) {
    control.Enabled = enabled;
    if constexpr (requires { control.Back; })
        control.Back = enabled ? platform::BackColor::kWindow : platform::BackColor::kButtonFace;
}

}  // namespace wxl::kde_tool
