#include "analysis/report_writer.h"

#include "platform/runtime_error.h"
#include "platform/text.h"

#include <limits>

namespace wxl::analysis {

void AnalysisReport::Open(const std::filesystem::path& file) {
    m_path = file;
    m_written = 0;
    m_continued = m_files.FileExists(file);
    m_file = m_files.OpenForWriting(file, platform::WriteMode::kAppend);
    if (m_continued) Write(separator_lines());
}

void AnalysisReport::Write(const Lines& lines) {
    if (!m_file) return;
    std::string bytes;
    for (const std::string& line : lines) bytes += platform::ToWindows1252(line) + "\r\n";
    m_file->Write(bytes);
    m_file->Flush();
    m_written += bytes.size();
}

void AnalysisReport::Close() {
    if (!m_file) return;
    const auto file = std::move(m_file);
    file->Close();
}

void AnalysisReport::TakeBack() {
    if (!m_file) return;
    Close();
    if (!m_continued) return m_files.DeleteFile(m_path, false);
    std::string bytes = m_files.ReadFile(m_path, std::numeric_limits<std::uint64_t>::max());
    if (bytes.size() < m_written) platform::Raise(platform::error_number::kDeviceIo, m_path.string() + " was changed.");
    bytes.resize(bytes.size() - m_written);
    platform::PublishFile(m_files, m_path, bytes);
}

}  // namespace wxl::analysis
