#pragma once
#include "kde_tool/report_lines.h"
#include "platform/file_system.h"

#include <filesystem>
#include <memory>

namespace wxl::kde_tool {

/// The analysis report of one run: Windows-1252 text, lines ended by CR LF, open for the whole run.
///
/// A report that stands in the folder already is continued below a separator. Every Write reaches the system before it
/// returns, so that a run that dies leaves a readable report up to there. Failures throw RuntimeError.
class AnalysisReport {
public:
    explicit AnalysisReport(platform::IFileSystem& files) : m_files(files) {}

    /// Opens the file, and writes the separator when it existed.
    void Open(const std::filesystem::path& file);
    bool IsOpen() const { return m_file != nullptr; }

    /// Writes whole lines; nothing when the report is not open.
    void Write(const Lines& lines);

    /// Closes with the close checked; nothing when the report is not open.
    void Close();

private:
    platform::IFileSystem& m_files;
    std::unique_ptr<platform::IOutputFile> m_file;
};

}  // namespace wxl::kde_tool
