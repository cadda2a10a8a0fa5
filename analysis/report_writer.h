#pragma once
#include "analysis/report_lines.h"
#include "platform/file_system.h"

#include <cstdint>
#include <filesystem>
#include <memory>

namespace wxl::analysis {

/// Takes the lines of a run's report.
class IReportSink {
public:
    virtual ~IReportSink() = default;

    /// Called once, before the first line.
    virtual void Open(const std::filesystem::path& file) = 0;

    /// Takes whole lines, without their line ends.
    virtual void Write(const Lines& lines) = 0;
};

/// Keeps the lines instead of writing them.
class CollectedReport final : public IReportSink {
public:
    void Open(const std::filesystem::path& /*file*/) override {}
    void Write(const Lines& lines) override { Taken.insert(Taken.end(), lines.begin(), lines.end()); }

    Lines Taken;
};

/// The analysis report of one run: Windows-1252 text, lines ended by CR LF, open for the whole run.
///
/// A report that stands in the folder already is continued below a separator. Every Write reaches the system before it
/// returns, so that a run that dies leaves a readable report up to there. Failures throw RuntimeError.
class AnalysisReport final : public IReportSink {
public:
    explicit AnalysisReport(platform::IFileSystem& files) : m_files(files) {}

    /// Opens the file, and writes the separator when it existed.
    void Open(const std::filesystem::path& file) override;
    bool IsOpen() const { return m_file != nullptr; }

    /// Writes whole lines; nothing when the report is not open.
    void Write(const Lines& lines) override;

    /// Closes with the close checked; nothing when the report is not open.
    void Close();

    /// Closes a report that is to be deleted: what could not be written does not matter any more.
    void Abandon() { m_file.reset(); }

    /// Closes the report and leaves the file as it was before Open, or deletes a new one; nothing when the report is
    /// not open.
    void TakeBack();

private:
    platform::IFileSystem& m_files;
    std::filesystem::path m_path;
    bool m_continued = false;     ///< the file stood before Open
    std::uint64_t m_written = 0;  ///< bytes added since Open
    std::unique_ptr<platform::IOutputFile> m_file;
};

}  // namespace wxl::analysis
