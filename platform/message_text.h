#pragma once
#include "platform/messages.h"

#include <string>

namespace wxl::platform {

// Message boxes where there is no screen to show them on.

/// Whether the box reports that something failed.
bool IsFaultReport(const MessageBox& box);

/// "TITLE: TEXT" with every kind of line end as a line feed and none at the end.
std::string PlainText(const MessageBox& box);

}  // namespace wxl::platform
