#pragma once
#include <filesystem>
#include <ogr_feature.h>

namespace wxl::files {

/// RuntimeError 6 for a row that holds a text or a blob of more than 16 MB, which no field of a table of fixes can mean
/// and which would fill the memory by copies; with the row's number and the field.
void CheckTexts(const OGRFeature& row, const std::filesystem::path& path);

/// The same for a file of XML that has so much between two tags: its readers hold a text several times before they give
/// a row. The same for the XML in a workbook (a ZIP archive). Other files pass without being read.
void CheckXmlTexts(const std::filesystem::path& path);

}  // namespace wxl::files
