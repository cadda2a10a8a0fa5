#pragma once
#include <string>
#include <string_view>

namespace wxl::files {

/// What a library says of a failure, for people: one line, without its statements of SQL, the names of its functions
/// and the sketch of a parser. What is not known to need it stays as it is.
std::string plain_words(std::string_view message);

}  // namespace wxl::files
