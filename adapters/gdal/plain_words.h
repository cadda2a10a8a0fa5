#pragma once
#include <string>
#include <string_view>

namespace wxl::files {

/// Told where PROJ finds no database of coordinate systems, or that of another version.
inline constexpr const char* kNoProjDatabase =
    "there is no proj.db of this PROJ; unset PROJ_DATA and PROJ_LIB, or set them to the folder that holds it";

/// What a library says of a failure, for people: one line, without its statements of SQL, the names of its functions
/// and the sketch of a parser. What is not known to need it stays as it is.
std::string plain_words(std::string_view message);

}  // namespace wxl::files
