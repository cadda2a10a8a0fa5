#include "analysis/summary_rows.h"
#include "platform/runtime_error.h"
#include "run_fixture.h"

#include <algorithm>
#include <gmock/gmock.h>

namespace wxl::kde_tool {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

const std::string kHeader = std::string(analysis::kSummaryHeader) + "\r\n";
const std::filesystem::path kFile = "/out/WXL_KDE_SUMMARY.csv";

struct SummaryTest : RunTest {
    std::string Summary() const { return Disk->Bytes(kFile); }
};

TEST_F(SummaryTest, Every_run_leaves_one) {
    AddTwoAnimals();
    Open();
    Form->txtBuffer.Text = "700";
    WantPolygons("95, 50");
    Run();
    const std::string text = Summary();
    EXPECT_TRUE(text.starts_with(kHeader + "3,3,4,manual,100,,,,95,")) << text;
    EXPECT_THAT(text, HasSubstr("\r\n7,7,2,manual,100,,,,50,"));
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 5);
    EXPECT_THAT(Files.List("/out"), Not(Contains(HasSubstr(".part"))));
}

TEST_F(SummaryTest, A_later_run_keeps_the_rows_of_other_rasters) {
    AddTwoAnimals();
    Open();
    Run();
    const std::string first = Summary();
    Form->txtR.Text = "L";
    Run();
    const std::string both = Summary();
    EXPECT_TRUE(both.starts_with(first));
    EXPECT_THAT(both, HasSubstr(",L3,0,"));
    Rasters.Delete("/out", "K3");
    Rasters.Delete("/out", "K7");
    Form->txtR.Text = "K";
    Run();
    EXPECT_EQ(Summary().size(), both.size());
    EXPECT_TRUE(Summary().ends_with(first.substr(kHeader.size())));
}

TEST_F(SummaryTest, A_file_of_its_name_that_is_something_else_stays) {
    AddTwoAnimals();
    Open();
    Disk->AddFile(kFile, "my notes");
    Run();
    EXPECT_EQ(Summary(), "my notes");
    EXPECT_THAT(Messages.Texts(),
                Contains("Warning: /out/WXL_KDE_SUMMARY.csv is not a summary of this tool and was left as it is; no "
                         "summary was written."));
    EXPECT_EQ(Form->LastRun(), analysis::RunOutcome::kComplete);
}

TEST_F(SummaryTest, Lines_give_areas_too) {
    AddTwoAnimals();
    Open();
    Form->txtBuffer.Text = "700";
    WantPolygons("95");
    Run();
    const std::optional<double> measured = Keeper.Records.at(0).Isopleths.at(0).Area;
    ASSERT_TRUE(measured);
    Form->txtR.Text = "L";
    Form->chkPolys.Value = 0;
    Form->chkLines.Value = 1;
    Run();
    EXPECT_EQ(Keeper.Records.at(2).Isopleths.at(0).Area, measured);
}

TEST_F(SummaryTest, A_run_that_fails_leaves_the_earlier_one) {
    AddTwoAnimals();
    Open();
    Run();
    const std::string first = Summary();
    Form->txtR.Text = "L";
    Disk->Fail(memory::DiskStep::kWrite, 1, platform::error_number::kDeviceIo);
    Run();
    EXPECT_EQ(Form->LastRun(), analysis::RunOutcome::kFailed);
    EXPECT_EQ(Summary(), first);
}

TEST_F(SummaryTest, A_summary_that_cannot_be_written_is_told_and_leaves_the_earlier_one) {
    AddTwoAnimals();
    Open();
    Run();
    const std::string first = Summary();
    analysis::SummaryTable table(Services);
    analysis::RunFrame frame;
    frame.Folder = "/out";
    analysis::AnimalRecord record;
    record.Id = std::string("Bo");
    record.RasterName = "K4";
    table.RunBegins(frame, {});
    table.AnimalDone(record);
    Disk->Fail(memory::DiskStep::kWrite, 1, platform::error_number::kDiskFull);
    EXPECT_THROW(table.RunEnds(analysis::RunOutcome::kComplete), platform::RuntimeError);
    EXPECT_EQ(Summary(), first);
    table.RunEnds(analysis::RunOutcome::kComplete);
    EXPECT_EQ(Summary(), first + summary_rows(record, {}));
}

}  // namespace
}  // namespace wxl::kde_tool
