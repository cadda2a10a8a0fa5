#include "analysis/animal_fixes.h"
#include "analysis/settings_text.h"
#include "engine/status.h"
#include "kde_tool/run_tally.h"
#include "run_fixture.h"

#include <gmock/gmock.h>

namespace wxl::kde_tool {
namespace {

using analysis::RunOutcome;
using testing::ElementsAre;
using testing::IsEmpty;

/// A run of four animals named a, b, c, d.
class RunTallyTest : public testing::Test {
protected:
    RunTallyTest() {
        frame.Values = {0.0};
        frame.Folder = "/out";
        frame.Wanted.IdField = "animal";
        animals.Animals.resize(4);
    }

    void Begin() { tally.RunBegins(frame, animals); }

    void Add(const std::string& id, std::int32_t status = 0, double bandwidth = 100.0) {
        analysis::AnimalRecord record = Record(id);
        record.Status = status;
        record.BandwidthMapUnits = bandwidth;
        tally.AnimalDone(record);
    }

    static analysis::AnimalRecord Record(const std::string& id) {
        analysis::AnimalRecord record;
        record.Id = id;
        record.NamingId = id;
        record.SampleSize = 30;
        record.Grid = {1000.0, 2000.0, 50.0, 10, 20};
        return record;
    }

    analysis::RunFrame frame;
    analysis::GroupedFixes animals;
    RunTally tally;
};

TEST_F(RunTallyTest, All_done) {
    Begin();
    for (const char* id : {"a", "b", "c", "d"}) Add(id);
    const ResultPanel panel = tally.Panel(RunOutcome::kComplete);
    EXPECT_EQ(panel.Headline, "4 of 4 animals done");
    EXPECT_EQ(panel.Kind, ResultPanel::Look::kDone);
    EXPECT_THAT(panel.Lines, IsEmpty());
    EXPECT_EQ(panel.Folder, "/out");
    EXPECT_EQ(panel.Extent, (platform::Extent{1000.0, 2000.0, 1500.0, 3000.0}));
}

TEST_F(RunTallyTest, Each_that_failed_has_its_reason_and_what_to_do) {
    Begin();
    Add("a");
    Add("b", engine::kernel_status::kBandwidthBelowCell, 12.7);
    Add("c");
    Add("d", engine::kernel_status::kGridTooLarge);
    const ResultPanel panel = tally.Panel(RunOutcome::kComplete);
    EXPECT_EQ(panel.Headline, "2 of 4 animals done");
    EXPECT_EQ(panel.Kind, ResultPanel::Look::kPartly);
    EXPECT_THAT(panel.Lines, ElementsAre("b: the bandwidth 12.7 is smaller than the cell size 50. Choose cells of at "
                                         "most 12, or a wider bandwidth.",
                                         "d: the raster would have more than 50 million cells. Choose larger cells or "
                                         "a smaller extent."));
}

TEST_F(RunTallyTest, Nothing_computed_is_a_failure) {
    animals.Animals.resize(1);
    Begin();
    Add("a", engine::kernel_status::kNothingToCompute, 0.0);
    const ResultPanel panel = tally.Panel(RunOutcome::kComplete);
    EXPECT_EQ(panel.Headline, "Nothing was computed: 0 of 1 animal done");
    EXPECT_EQ(panel.Kind, ResultPanel::Look::kFailure);
    EXPECT_THAT(panel.Lines, ElementsAre("a: the bandwidth is 0. Choose another bandwidth."));
    EXPECT_TRUE(panel.Extent.IsEmpty());
}

TEST_F(RunTallyTest, A_stopped_run_tells_how_far_it_came) {
    Begin();
    Add("a");
    Add("b");
    const ResultPanel panel = tally.Panel(RunOutcome::kStopped);
    EXPECT_EQ(panel.Headline, "Stopped: 2 of 4 animals done");
    EXPECT_EQ(panel.Kind, ResultPanel::Look::kPartly);
    EXPECT_EQ(tally.Panel(RunOutcome::kFailed).Headline, "Ended by an error: 2 of 4 animals done");
    EXPECT_EQ(tally.Panel(RunOutcome::kFailed).Kind, ResultPanel::Look::kFailure);
}

TEST_F(RunTallyTest, An_animal_with_a_list_is_done_when_its_whole_list_is) {
    frame.Values = {10.0, 20.0};
    animals.Animals.resize(3);
    Begin();
    Add("a");
    Add("a");
    Add("b");
    Add("b", engine::kernel_status::kBandwidthBelowCell, 20.0);
    Add("c", engine::kernel_status::kBandwidthBelowCell, 10.0);
    Add("c", engine::kernel_status::kBandwidthBelowCell, 20.0);
    const ResultPanel panel = tally.Panel(RunOutcome::kComplete);
    EXPECT_EQ(panel.Headline, "1 of 3 animals done");
    ASSERT_EQ(panel.Lines.size(), 2U) << "one line for each animal";
    EXPECT_TRUE(panel.Lines[0].starts_with("b (b2): the bandwidth 20 ")) << panel.Lines[0];
    EXPECT_TRUE(panel.Lines[1].starts_with("c (b1): the bandwidth 10 ")) << panel.Lines[1];
    Begin();
    Add("a");
    EXPECT_EQ(tally.Panel(RunOutcome::kStopped).Headline, "Stopped: 0 of 3 animals done");
}

TEST_F(RunTallyTest, Isopleths_that_could_not_be_made_are_told) {
    frame.Wanted.Isopleths = true;
    frame.Wanted.Percentages = analysis::typed_numbers("150");
    animals.Animals.resize(1);
    Begin();
    analysis::AnimalRecord record = Record("a");
    record.IsoplethStatus = 3001;
    tally.AnimalDone(record);
    const ResultPanel panel = tally.Panel(RunOutcome::kComplete);
    EXPECT_EQ(panel.Headline, "1 of 1 animal done, 1 without isopleths");
    EXPECT_EQ(panel.Kind, ResultPanel::Look::kPartly);
    EXPECT_THAT(panel.Lines, ElementsAre("a: there are no isopleths. Choose percentages above 0 and up to 100."));
}

TEST_F(RunTallyTest, Points_without_an_animal_degrees_and_remarks_are_told_once) {
    animals.WithoutId = 50;
    frame.Reference = {"WGS 84", "", "degree", 0.0, true};
    Begin();
    for (const char* id : {"a", "b", "c", "d"}) {
        analysis::AnimalRecord record = Record(id);
        if (record.NamingId != "a") record.Reason = "the score is flat";
        tally.AnimalDone(record);
    }
    EXPECT_THAT(tally.Panel(RunOutcome::kComplete).Lines,
                ElementsAre("Remarks on 3 animals are in the summary of the folder.",
                            "50 points have no value in the field animal and were left out.",
                            "The layer is in degrees: cell size, bandwidths and areas mean nothing as lengths."));
}

// --- The form's panel ---

class PanelOfTheForm : public RunTest {};

TEST_F(PanelOfTheForm, Is_there_before_the_closing_message) {
    AddTwoAnimals();
    Open();
    Form->WrittenPage = [] { return "/out/page.html"; };
    std::string during;
    Messages.SetOnShow([&](const platform::MessageBox& box) {
        if (box.Text == "Processing complete.") during = Form->Panel.Headline;
    });
    Run();
    EXPECT_EQ(during, "2 of 2 animals done");
    EXPECT_EQ(Form->Panel.Headline, "2 of 2 animals done");
    EXPECT_EQ(Form->Panel.Page, "/out/page.html");
    EXPECT_EQ(Form->txtStatus.Text, "Processing complete.");
    EXPECT_TRUE(Report().ends_with("Processing complete\r\n"));
}

TEST_F(PanelOfTheForm, A_refused_run_takes_the_panel_of_the_last_one_away) {
    AddTwoAnimals();
    Open();
    Run();
    Form->txtCellSize.Text.clear();
    Run();
    EXPECT_EQ(Form->LastRun(), RunOutcome::kRefused);
    EXPECT_EQ(Form->Panel.Headline, "");
}

TEST_F(PanelOfTheForm, A_run_that_breaks_off_says_so) {
    AddTwoAnimals();
    Open();
    Disk->Fail(memory::DiskStep::kWrite, 1, 61);
    Run();
    EXPECT_EQ(Form->LastRun(), RunOutcome::kFailed);
    EXPECT_EQ(Form->Panel.Kind, ResultPanel::Look::kFailure);
    EXPECT_EQ(Form->Panel.Headline, "Nothing was computed: the analysis ended by an error");
}

TEST_F(PanelOfTheForm, A_layer_that_left_the_map_is_told_once) {
    AddTwoAnimals();
    Open();
    int turns = 0;
    Host.SetOnYield([&] {
        if (Form->txtStatus.Text == "Calculating kernel..." && turns++ == 0) Application->Doc().Map().RemoveLayers();
    });
    Run();
    EXPECT_EQ(Form->LastRun(), RunOutcome::kComplete);
    EXPECT_THAT(Form->Panel.Lines,
                ElementsAre("The layer bears left the map during the run; its fixes had been read before."));
    EXPECT_THAT(Messages.Texts(), ElementsAre("Processing complete."));
}

TEST_F(PanelOfTheForm, Points_without_an_animal_are_in_the_panel_and_in_a_report_beside_a_page) {
    AddTwoAnimals();
    Points->AddPoint(1.0, 2.0, {std::string("?"), std::monostate{}});
    Open();
    Run();
    const std::string remark = "1 point has no value in the field ID and was left out";
    EXPECT_THAT(Form->Panel.Lines, ElementsAre(remark + "."));
    EXPECT_EQ(Report().find(remark), std::string::npos) << "its form is fixed to the letter";
    Form->txtR.Text = "L";
    Form->chkHtml.Value = 1;
    Run();
    const std::size_t at = Report().find("(" + remark + ")\r\n");
    EXPECT_NE(at, std::string::npos);
    EXPECT_EQ(Report().find(remark, at + 2), std::string::npos) << "once";
}

}  // namespace
}  // namespace wxl::kde_tool
