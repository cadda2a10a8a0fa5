#pragma once
// Names that are awkward or meant ill, for prefixes, animals, layers and folders.

#include <string>
#include <vector>

namespace wxl::tests {

/// Two hundred and more names, without zero bytes; none is empty.
std::vector<std::string> hostile_names();

/// Those that can be one name in a folder of this system: no slash, at most 200 bytes, not "." or "..".
std::vector<std::string> hostile_file_names();

}  // namespace wxl::tests
