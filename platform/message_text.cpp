#include "platform/message_text.h"

namespace wxl::platform {

bool is_failure(const MessageBox& box) {
    return box.Kind == BoxKind::kFault || box.Kind == BoxKind::kRefusal;
}

namespace {

/// Whether the text says its title itself, one "Warning:" of several "Warnings" too.
bool is_told(const std::string& title, const std::string& text) {
    if (title.empty() || text.starts_with(title + ":")) return true;
    return title.ends_with('s') && text.starts_with(title.substr(0, title.size() - 1) + ":");
}

}  // namespace

std::string PlainText(const MessageBox& box) {
    const bool isTold = is_told(box.Title, box.Text);
    const std::string text = isTold ? box.Text : box.Title + ": " + box.Text;
    std::string lines;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r') {
            if (i + 1 < text.size() && text[i + 1] == '\n') continue;
            lines += '\n';
        } else {
            lines += text[i];
        }
    }
    while (!lines.empty() && lines.back() == '\n') lines.pop_back();
    return lines;
}

}  // namespace wxl::platform
