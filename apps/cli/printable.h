#pragma once
#include <string>
#include <string_view>

namespace wxl::cli {

/// A text as it may reach a terminal: names of files and animals are other people's, and may hold codes that colour,
/// erase or turn around what stands on the screen. Control characters (line feeds and tabs stay), marks of text
/// direction and bytes that are no UTF-8 become "\x1B" or "\u202E"; all else stays as it is. What can stand in JSON is
/// written as JSON writes it.
std::string printable(std::string_view text);

/// The same for a text that is one line: line feeds and tabs become "\x0A" and "\x09" too, so that no name passes for a
/// line of the program's own.
std::string printable_line(std::string_view text);

}  // namespace wxl::cli
