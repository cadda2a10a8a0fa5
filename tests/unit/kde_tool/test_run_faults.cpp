// A run on a disk in memory whose n-th step of a kind fails, n counted up beyond the last step of the run.

#include "tests/unit/kde_tool/run_fixture.h"

#include <gmock/gmock.h>
#include <optional>

namespace wxl::kde_tool {
namespace {

using memory::DiskStep;

constexpr int kBeyondTheRun = 80;  ///< steps of one kind, more than a run of two animals takes

/// One run of two animals with polygons.
class Attempt final : public RunTest {
public:
    void TestBody() override {}

    explicit Attempt(std::optional<std::pair<DiskStep, int>> fault) {
        Disk->AddFile("/out/old.txt", "old");
        AddTwoAnimals();
        Open();
        WantPolygons("95,50");
        if (fault) Disk->Fail(fault->first, fault->second, 61);
        Run();
    }

    bool Complete() const { return Form->LastRun() == analysis::RunOutcome::kComplete; }

    bool MadeAll() const {
        return Complete() && HasRaster("K3") && HasRaster("K7") && Shapefiles.Published().size() == 2 && HasReport() &&
               HasSettingsRecord();
    }

    std::string Said() const {
        std::string said;
        for (const auto& box : Messages.Boxes()) said += box.Title + ": " + box.Text + "\n";
        return said;
    }

    /// The numbers of the boxes that tell of a fault.
    bool ToldOfFault() const {
        for (const auto& box : Messages.Boxes())
            if (box.Title == "Error" || box.Text.find("61") != std::string::npos) return true;
        return false;
    }

    /// Without a fault that is still to come.
    bool RunsAgain(DiskStep step) {
        Disk->Fail(step, 1'000'000, 61);
        Form->txtR.Text = "L";
        Run();
        return Complete() && HasRaster("L3") && HasRaster("L7");
    }
};

class RunFaults : public testing::TestWithParam<DiskStep> {};

TEST_P(RunFaults, Leave_whole_outputs_and_a_form_that_runs_again) {
    ASSERT_TRUE(Attempt(std::nullopt).MadeAll());
    int failed = 0;
    for (int n = 1; n <= kBeyondTheRun; ++n) {
        SCOPED_TRACE("step " + std::to_string(n));
        Attempt run({{GetParam(), n}});
        EXPECT_TRUE(run.MadeAll() || run.ToldOfFault());
        if (!run.MadeAll()) ++failed;
        EXPECT_EQ(run.HasReport(), run.Complete()) << run.Said();
        for (const std::string name : {"K3", "K7"}) {
            if (!run.HasRaster(name)) continue;
            EXPECT_GT(run.Rasters.Open("/out", name)->Band()->Geometry().Rows, 0);
        }
        EXPECT_EQ(run.Disk->Bytes("/out/old.txt"), "old");
        EXPECT_TRUE(run.Form->btnOK.Enabled);
        EXPECT_TRUE(run.RunsAgain(GetParam()));
    }
    EXPECT_GT(failed, 0);
    EXPECT_TRUE(Attempt({{GetParam(), kBeyondTheRun}}).MadeAll()) << "the run has more steps";
}

INSTANTIATE_TEST_SUITE_P(Of, RunFaults,
                         testing::Values(DiskStep::kOpen, DiskStep::kWrite, DiskStep::kClose, DiskStep::kRename));

}  // namespace
}  // namespace wxl::kde_tool
