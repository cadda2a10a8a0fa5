#include "apps/cli/text_output.h"

#include "adapters/disk/disk_file_system.h"
#include "adapters/shapefile/shapefile_parts.h"
#include "platform/file_system.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <algorithm>
#include <filesystem>
#include <utility>

namespace wxl::cli {

namespace {

namespace fs = std::filesystem;

/// Characters of a UTF-8 text.
std::size_t width_of(const std::string& utf8) {
    return static_cast<std::size_t>(
        std::count_if(utf8.begin(), utf8.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::string shown(const std::string& cell) {
    return cell.empty() ? "N/A" : cell;
}

}  // namespace

TextOutput::TextOutput(std::string path, bool overwrite) : m_path(std::move(path)) {
    const files::DiskFileSystem disk;
    const fs::path folder = fs::path(m_path).parent_path();
    if (!folder.empty() && !disk.FolderExists(folder))
        platform::Raise(platform::error_number::kPathNotFound,
                        folder.string() + ": there is no such folder; make it first");
    if (files::is_protected(folder.empty() ? fs::path(".") : folder))
        platform::Raise(platform::error_number::kPermissionDenied, "The folder " + folder.string() + " is read-only.");
    files::CheckReplaceable(m_path);
    if (!overwrite && fs::exists(m_path))
        platform::Raise(platform::error_number::kFileExists,
                        m_path + " exists: choose another name, or give --overwrite");
}

void TextOutput::Write(std::string_view text) const {
    files::DiskFileSystem disk;
    platform::PublishFile(disk, m_path, text);
}

void print_table(const TextTable& table, Console& console) {
    std::vector<std::size_t> widths;
    for (const std::string& column : table.Columns) widths.push_back(width_of(column));
    for (const auto& row : table.Rows)
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], width_of(shown(row[i])));
    const auto print = [&](const std::vector<std::string>& cells) {
        std::string line;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            const std::string text = shown(cells[i]);
            const std::string padding(widths[i] - width_of(text), ' ');
            line += i == 0 ? text + padding : "  " + padding + text;
        }
        console.Result(line);
    };
    print(table.Columns);
    for (const auto& row : table.Rows) print(row);
}

}  // namespace wxl::cli
