#include "adapters/memory/memory_file_system.h"
#include "analysis/report_writer.h"
#include "platform/runtime_error.h"

#include <gtest/gtest.h>

namespace wxl::analysis {
namespace {

struct ReportWriter : testing::Test {
    memory::MemoryFileSystem Files;
    const std::filesystem::path File = "/out/REPORT.txt";

    ReportWriter() { Files.Disk().AddFolder("/out"); }
};

TEST_F(ReportWriter, Lines_end_with_carriage_return_and_line_feed_in_windows_1252) {
    AnalysisReport report(Files);
    report.Open(File);
    report.Write({"B\u00E4r", "", "\u732B"});
    report.Close();
    EXPECT_EQ(Files.Disk().Bytes(File), "B\xE4r\r\n\r\n?\r\n");
}

TEST_F(ReportWriter, Every_write_is_on_the_disk_at_once) {
    AnalysisReport report(Files);
    report.Open(File);
    report.Write({"first"});
    EXPECT_EQ(Files.Disk().Bytes(File), "first\r\n");
    report.Write({"second"});
    EXPECT_EQ(Files.Disk().Bytes(File), "first\r\nsecond\r\n");
}

TEST_F(ReportWriter, Taken_back_it_leaves_the_earlier_part_byte_for_byte) {
    Files.Disk().AddFile(File, "earlier\r\nwithout a line end\n\xFF");
    AnalysisReport report(Files);
    report.Open(File);
    report.Write({"new", "lines"});
    report.TakeBack();
    EXPECT_FALSE(report.IsOpen());
    EXPECT_EQ(Files.Disk().Bytes(File), "earlier\r\nwithout a line end\n\xFF");
    report.TakeBack();
    EXPECT_EQ(Files.List("/out").size(), 1U);
}

TEST_F(ReportWriter, Taken_back_a_new_report_is_gone) {
    AnalysisReport report(Files);
    report.TakeBack();
    report.Open(File);
    report.Write({"new"});
    report.TakeBack();
    EXPECT_FALSE(Files.FileExists(File));
}

TEST_F(ReportWriter, A_second_run_continues_below_a_separator) {
    for (const char* line : {"one", "two"}) {
        AnalysisReport report(Files);
        report.Open(File);
        report.Write({line});
        report.Close();
    }
    EXPECT_EQ(Files.Disk().Bytes(File),
              "one\r\n\r\n\r\n\r\n============================================================\r\n\r\n\r\n\r\ntwo\r\n");
}

TEST_F(ReportWriter, A_closed_report_takes_nothing) {
    AnalysisReport report(Files);
    report.Write({"before"});
    report.Close();
    EXPECT_FALSE(report.IsOpen());
    EXPECT_FALSE(Files.FileExists(File));
}

TEST_F(ReportWriter, A_failing_close_is_told_once) {
    AnalysisReport report(Files);
    report.Open(File);
    Files.Disk().Fail(memory::DiskStep::kClose, 1, 61);
    EXPECT_THROW(report.Close(), platform::RuntimeError);
    EXPECT_FALSE(report.IsOpen());
    report.Close();
}

}  // namespace
}  // namespace wxl::analysis
