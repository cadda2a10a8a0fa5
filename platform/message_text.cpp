#include "platform/message_text.h"

namespace wxl::platform {

bool is_failure(const MessageBox& box) {
    return box.Kind == BoxKind::kFault || box.Kind == BoxKind::kRefusal;
}

std::string PlainText(const MessageBox& box) {
    const bool isTold = box.Title.empty() || box.Text.starts_with(box.Title + ":");
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
