#pragma once
#include <cstddef>
#include <string>
#include <string_view>

namespace wxl::pictures {

/// Any bytes as text of an XML or HTML document, inside an element or a quoted attribute: markup characters escaped,
/// line ends and tabs as blanks. Bytes that are no UTF-8 and characters that XML does not allow become U+FFFD;
/// characters that reverse the direction of what follows are left out.
std::string XmlText(std::string_view text);

/// The first characters of a UTF-8 text with an ellipsis where it has more than `characters`; never cut inside one.
std::string Shortened(std::string_view text, std::size_t characters);

}  // namespace wxl::pictures
