#pragma once
#include <filesystem>

namespace wxl::files {

/// Reads headers, the index, the heads of all records and the table's layout of a shapefile, and makes sure that they
/// agree, because its readers pass over what they cannot read, and a result over part of the fixes would look right.
/// RuntimeError 57 that names the file which is missing, cut off or damaged. A file that does not begin as a shapefile
/// does is left to others to judge.
void CheckShapefile(const std::filesystem::path& shapefile);

}  // namespace wxl::files
