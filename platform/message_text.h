#pragma once
#include "platform/messages.h"

#include <string>

namespace wxl::platform {

// Message boxes where there is no screen to show them on.

/// Whether the box reports that something failed, or was refused.
bool is_failure(const MessageBox& box);

/// "TITLE: TEXT", or the text alone where the box has no title or the text begins with it ("Error: ..." in a box titled
/// "Error"). Every kind of line end becomes a line feed, and none stands at the end.
std::string PlainText(const MessageBox& box);

}  // namespace wxl::platform
