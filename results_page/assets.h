#pragma once
#include <string_view>

namespace wxl::results_page {

/// assets/page.css and assets/page.js, taken in when the program is built.
extern const std::string_view kStyle;
extern const std::string_view kScript;

/// SHA-256 of a line feed and the script, in hexadecimal digits.
extern const std::string_view kScriptDigest;

}  // namespace wxl::results_page
