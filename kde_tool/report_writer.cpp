#include "kde_tool/report_writer.h"

#include "platform/text.h"

namespace wxl::kde_tool {

void AnalysisReport::Open(const std::filesystem::path& file) {
    const bool continued = m_files.FileExists(file);
    m_file = m_files.OpenForWriting(file, platform::WriteMode::kAppend);
    if (continued) Write(separator_lines());
}

void AnalysisReport::Write(const Lines& lines) {
    if (!m_file) return;
    std::string bytes;
    for (const std::string& line : lines) bytes += platform::ToWindows1252(line) + "\r\n";
    m_file->Write(bytes);
    m_file->Flush();
}

void AnalysisReport::Close() {
    if (!m_file) return;
    const auto file = std::move(m_file);
    file->Close();
}

}  // namespace wxl::kde_tool
