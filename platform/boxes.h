#pragma once
#include "platform/messages.h"

#include <string>

namespace wxl::platform {

/// A box titled "Error", and one titled "Warning" with an exclamation sign.
inline void ShowError(IMessages& messages, const std::string& text) {
    messages.Show({.Text = text, .Title = "Error", .Kind = BoxKind::kFault});
}

inline void ShowWarning(IMessages& messages, const std::string& text) {
    messages.Show({.Text = text, .Title = "Warning", .Sign = Icon::kExclamation});
}

}  // namespace wxl::platform
