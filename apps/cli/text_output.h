#pragma once
#include "apps/cli/console.h"
#include "platform/text_table.h"

#include <string>
#include <string_view>

namespace wxl::cli {

/// A text file that a command is asked to write. Nothing stands under its name until all of it is on disk.
class TextOutput {
public:
    /// RuntimeError 76 when the folder is missing, 58 when the file exists and `overwrite` is false, 70 when what
    /// stands there is no regular file.
    TextOutput(std::string path, bool overwrite);
    void Write(std::string_view text) const;
    const std::string& Path() const { return m_path; }

private:
    std::string m_path;
};

using platform::csv_text;
using platform::TextTable;

/// Prints the table as results, columns two blanks apart, with "N/A" for an empty cell. The first column is aligned
/// left, all others (numbers) right.
void print_table(const TextTable& table, Console& console);

}  // namespace wxl::cli
