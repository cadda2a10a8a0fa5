#pragma once
#include "platform/messages.h"

#include <string>

namespace wxl::kde_tool {

/// The form's notices: a box titled "Error", and one titled "Warning" with an exclamation sign.
inline void ShowError(platform::IMessages& messages, const std::string& text) {
    messages.Show({.Text = text, .Title = "Error"});
}

inline void ShowWarning(platform::IMessages& messages, const std::string& text) {
    messages.Show({.Text = text, .Title = "Warning", .Sign = platform::Icon::kExclamation});
}

}  // namespace wxl::kde_tool
