#include "platform/question_unanswered.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "tests/unit/kde_tool/run_fixture.h"

#include <gmock/gmock.h>

namespace wxl::kde_tool {
namespace {

using platform::Answer;
using platform::Buttons;
using platform::Icon;
using testing::ElementsAre;
using testing::HasSubstr;

struct AnalysisRunTest : RunTest {
    /// The one box of a run that was refused before it wrote anything.
    void ExpectRefused(const std::string& text, const std::string& title = "Error") {
        Messages.Clear();
        Run();
        ASSERT_EQ(Messages.Boxes().size(), 1U);
        EXPECT_EQ(Messages.Last().Text, text);
        EXPECT_EQ(Messages.Last().Title, title);
        EXPECT_FALSE(HasReport());
        EXPECT_FALSE(HasSettingsRecord());
        EXPECT_TRUE(Form->btnOK.Enabled);
        EXPECT_FALSE(Locks.IsHeld("/out"));
    }
};

// --- Checks ---

TEST_F(AnalysisRunTest, Undefined_settings_end_the_run_before_anything_is_written) {
    AddTwoAnimals();
    Open();
    Form->txtBW.Text = "";
    ExpectRefused("Error: the user defined bandwidth has not been defined on the Bandwidth tab.");
    Choose(Form->optPropHref, &frmKDE::optPropHref_Click);
    Form->txtPropHref.Text = "";
    ExpectRefused("Error: the proportion(s) of reference bandwidth have not been defined on the Bandwidth tab.");
    Choose(Form->optBE_HREF, &frmKDE::optBE_HREF_Click);
    Form->txtBuffer.Text = "";
    ExpectRefused("Error: the extent buffer has not been defined on the Output Options tab.");
    Choose(Form->optExtRef, &frmKDE::optExtRef_Click);
    ExpectRefused("Error: the extent reference layer has not been defined on the Output Options tab.");
    Choose(Form->optSmall, &frmKDE::optSmall_Click);
    WantPolygons("");
    ExpectRefused("Error: the isopleth percentages have not been defined on the Output Options tab.");
    Form->txtBnds.Text = "95, x, 50";
    ExpectRefused("Error: an invalid isopleth value was detected. Please check these values and run the tool again.");
}

/// Locks of a folder that takes no file.
struct NoLocks final : platform::IFolderLocks {
    std::unique_ptr<platform::IFolderLock> Take(const std::filesystem::path& folder, std::string&) override {
        platform::Raise(Number, "Permission denied: " + folder.string() + "/.lock (Operation not permitted)");
    }
    std::unique_ptr<platform::IFolderLock> Share(const std::filesystem::path& folder, std::string& holder) override {
        return Take(folder, holder);
    }
    std::int32_t Number = platform::error_number::kPermissionDenied;
};

TEST_F(AnalysisRunTest, A_folder_that_cannot_be_written_is_one_box_with_a_sentence) {
    AddTwoAnimals();
    NoLocks locks;
    Services.Locks = &locks;
    Open();
    Run();
    EXPECT_EQ(Form->LastRun(), analysis::RunOutcome::kRefused);
    EXPECT_THAT(Messages.Texts(),
                ElementsAre("Error: nothing can be written into the output folder /out (you have no right to write "
                            "there). Please choose another folder on the Output Options tab."));
    Messages.Clear();
    locks.Number = platform::error_number::kDiskFull;
    Run();
    EXPECT_THAT(Messages.Texts(), ElementsAre("Error: nothing can be written into the output folder /out (the disk is "
                                              "full). Please choose another folder on the Output Options tab."));
}

TEST_F(AnalysisRunTest, Unusable_settings_and_folders_are_refused_with_an_instruction) {
    AddTwoAnimals();
    Open();
    Form->txtCellSize.Text = "";
    ExpectRefused(
        "Error: please enter the raster cell size on the Output Options tab. It must be a number above 0.5 and is used "
        "as a whole number of map units.");
    Form->txtCellSize.Text = "50";
    Form->SetOutputFolder("");
    ExpectRefused("Error: please choose an output folder on the Output Options tab.");
    Form->SetOutputFolder("/absent");
    ExpectRefused(
        "Error: the output folder /absent does not exist. Please choose an existing folder on the Output Options tab.");
}

TEST_F(AnalysisRunTest, A_list_that_holds_no_number_is_refused_and_the_earlier_report_stays) {
    AddTwoAnimals();
    Open();
    Disk->AddFile("/out/WXL_KDE_ANALYSIS.txt", "earlier run");
    Disk->AddFile("/out/WXL_KERNEL_SETTINGS.txt", "earlier settings");
    const auto refusal = [&] {
        Messages.Clear();
        Run();
        EXPECT_EQ(Messages.Boxes().size(), 1U);
        EXPECT_EQ(Messages.Last().Title, "Error");
        EXPECT_EQ(Report(), "earlier run");
        EXPECT_EQ(Disk->Bytes("/out/WXL_KERNEL_SETTINGS.txt"), "earlier settings");
        EXPECT_FALSE(HasRaster("K3_b1"));
        return Messages.Last().Text;
    };
    Form->txtBW.Text = "50;80";
    EXPECT_EQ(refusal(),
              "Error: the list of bandwidths on the Bandwidth tab holds \"50;80\", which is not a number. Please write "
              "numbers separated by commas.");
    Form->txtBW.Text = "50,80,";
    EXPECT_EQ(refusal(),
              "Error: the list of bandwidths on the Bandwidth tab holds \"\", which is not a number. Please write "
              "numbers separated by commas.");
    Choose(Form->optPropHref, &frmKDE::optPropHref_Click);
    Form->txtPropHref.Text = "0.5, half";
    EXPECT_EQ(
        refusal(),
        "Error: the list of proportions on the Bandwidth tab holds \" half\", which is not a number. Please write "
        "numbers separated by commas.");
}

TEST_F(AnalysisRunTest, A_point_without_geometry_is_refused) {
    AddTwoAnimals();
    Points->Add(platform::Geometry{}, {std::string("Bo"), std::int64_t{3}});
    Open();
    ExpectRefused(
        "Error: null geometry detected in point layer. Please correct or remove these null geometries before using "
        "this "
        "tool.");
}

TEST_F(AnalysisRunTest, A_raster_of_that_name_is_a_naming_conflict) {
    AddTwoAnimals();
    Open();
    const auto earlier = Rasters.Create("/out", {.Name = "K7", .Geometry = {0.0, 0.0, 1.0, 1, 1}, .Reference = {}});
    earlier->WriteRow(std::vector<float>{1.0F});
    earlier->Publish();
    ExpectRefused(
        "Error: naming conflict detected (pre-existing raster in output folder). You should use a new, empty folder "
        "for "
        "the output of this tool. Exiting...",
        "User error");
    EXPECT_FALSE(HasRaster("K3"));
}

TEST_F(AnalysisRunTest, A_folder_in_use_by_another_run_is_refused_and_left_alone) {
    AddTwoAnimals();
    Open();
    Disk->AddFile("/out/WXL_KDE_ANALYSIS.txt", "the other run's");
    Locks.Hold("/out");
    Run();
    EXPECT_THAT(Messages.Texts(),
                ElementsAre("Error: another analysis is writing into the output folder (process 4711 on elsewhere). "
                            "Please wait until it has finished, or choose another folder."));
    Form->txtBW.Text = "x";
    Run();
    EXPECT_EQ(Report(), "the other run's");
}

TEST_F(AnalysisRunTest, A_prefix_that_leaves_the_folder_is_an_error_before_anything_is_written) {
    AddTwoAnimals();
    Disk->AddFolder("/out/deeper");
    Open();
    for (const char* prefix : {"../", "../../", "a/b", "..\\", "*"}) {
        Messages.Clear();
        Form->txtR.Text = prefix;
        Run();
        ASSERT_EQ(Messages.Boxes().size(), 1U) << prefix;
        EXPECT_THAT(Messages.Last().Text, testing::StartsWith("KDE: The output name ")) << prefix;
        EXPECT_FALSE(HasReport());
    }
    EXPECT_THAT(Files.List("/out"), ElementsAre("deeper"));
}

// --- Buffer ---

TEST_F(AnalysisRunTest, Buffer_recommendation_accepted_takes_the_product_before_truncation) {
    AddTwoAnimals();
    Open();
    Form->txtBW.Text = "133.3";
    Messages.WillAnswer({Answer::kYes});
    Run();
    const platform::MessageBox& box = Messages.Boxes().front();
    EXPECT_THAT(box.Text, HasSubstr("a buffer distance of at least 467 for this dataset"));
    EXPECT_EQ(box.Title, "Warning");
    EXPECT_EQ(box.Sign, Icon::kExclamation);
    EXPECT_EQ(box.Choice, Buttons::kYesNoCancel);
    EXPECT_EQ(Form->txtBuffer.Text, "466.55");
    EXPECT_THAT(Report(), HasSubstr("\r\nExtent setting: full extent + 466.55\r\n"));
    // Int((900 + 933.1) / 50) = 36, Int((300 + 933.1) / 50) = 24, origin (1000 - 466.55, 500 - 466.55).
    EXPECT_EQ(Keeper.Records.at(0).Grid.Columns, 36);
    EXPECT_EQ(Keeper.Records.at(0).Grid.Rows, 24);
    EXPECT_DOUBLE_EQ(Keeper.Records.at(0).Grid.OriginX, 533.45);
}

TEST_F(AnalysisRunTest, Buffer_recommendation_declined_keeps_the_buffer) {
    AddTwoAnimals();
    Open();
    Form->txtBuffer.Text = "349";
    Messages.WillAnswer({Answer::kNo});
    Run();
    EXPECT_THAT(Messages.Texts().front(), HasSubstr("at least 350 for this dataset"));
    EXPECT_EQ(Form->txtBuffer.Text, "349");
    EXPECT_EQ(Messages.Last().Text, "Processing complete.");
}

TEST_F(AnalysisRunTest, Buffer_recommendation_cancelled_deletes_report_and_settings_record) {
    AddTwoAnimals();
    Open();
    Disk->AddFile("/out/WXL_KDE_ANALYSIS.txt", "earlier run");
    Form->txtBuffer.Text = "349";
    bool recordWasThere = false;
    Messages.SetOnShow([&](const auto&) { recordWasThere = HasSettingsRecord(); });
    Messages.WillAnswer({Answer::kCancel});
    Run();
    EXPECT_EQ(Form->LastRun(), analysis::RunOutcome::kCancelled);
    EXPECT_TRUE(recordWasThere);
    EXPECT_EQ(Messages.Boxes().size(), 1U);
    EXPECT_FALSE(HasReport());
    EXPECT_FALSE(HasSettingsRecord());
    EXPECT_TRUE(Form->btnOK.Enabled);
    EXPECT_EQ(Form->txtStatus.Text, "");
    EXPECT_FALSE(HasRaster("K3"));
}

TEST_F(AnalysisRunTest, A_question_that_nobody_answers_leaves_the_files_of_earlier_runs_as_they_were) {
    AddTwoAnimals();
    Points->AddPoint(1000.0, 500.0, {std::string("Bo"), std::int64_t{3}});
    Open();
    Messages.SetOnUnanswered([](const platform::MessageBox&) -> Answer {
        throw platform::QuestionUnanswered(platform::error_number::kInvalidCall, "nobody is here");
    });
    for (const char* buffer : {"349", "400"}) {
        SCOPED_TRACE(buffer);
        Form->txtBuffer.Text = buffer;
        bool written = false;
        Messages.SetOnShow([&](const auto& box) {
            if (box.Choice != Buttons::kOk) written = HasReport() && HasSettingsRecord() && Report() != "earlier run";
        });
        Disk->AddFile("/out/WXL_KDE_ANALYSIS.txt", "earlier run");
        Disk->AddFile("/out/WXL_KERNEL_SETTINGS.txt", "earlier settings");
        Run();
        EXPECT_TRUE(written) << "there is something to take back";
        EXPECT_EQ(Form->LastRun(), analysis::RunOutcome::kFailed);
        EXPECT_EQ(Messages.Last().Text, "KDE: nobody is here");
        EXPECT_EQ(Report(), "earlier run");
        EXPECT_EQ(Disk->Bytes("/out/WXL_KERNEL_SETTINGS.txt"), "earlier settings");
        EXPECT_EQ(Files.List("/out").size(), 2U);
        EXPECT_FALSE(Locks.IsHeld("/out"));
        EXPECT_TRUE(Form->btnOK.Enabled);
        EXPECT_EQ(Form->txtStatus.Text, "");

        Files.DeleteFile("/out/WXL_KDE_ANALYSIS.txt", false);
        Files.DeleteFile("/out/WXL_KERNEL_SETTINGS.txt", false);
        Run();
        EXPECT_THAT(Files.List("/out"), testing::IsEmpty());
    }
}

TEST_F(AnalysisRunTest, No_recommendation_before_the_reference_bandwidths_are_known_nor_for_other_extents) {
    AddTwoAnimals();
    Open();
    Choose(Form->optBE_HREF, &frmKDE::optBE_HREF_Click);
    Form->txtBuffer.Text = "1";
    Form->chkSilent.Value = 1;
    Run();
    EXPECT_THAT(Messages.Texts(), ElementsAre("Processing complete."));
    Form->SSTab1.Current = 1;
    Form->SSTab1_Click(0);
    Form->txtR.Text = "L";
    Form->txtBuffer.Text = "1";
    Choose(Form->optSmall, &frmKDE::optSmall_Click);
    Messages.Clear();
    Run();
    EXPECT_THAT(Messages.Texts(), ElementsAre("Processing complete."));
}

// H is that of animal 7 by the field ID: variances 80000 and 20000, sqrt(50000) x 2^(-1/6) = 199.211, times 3.5 =
// 697.2.
TEST_F(AnalysisRunTest, The_largest_reference_bandwidth_outlives_the_choice_of_another_field) {
    AddTwoAnimals();
    Open();
    Choose(Form->optBE_HREF, &frmKDE::optBE_HREF_Click);
    Form->SSTab1.Current = 1;
    Form->SSTab1_Click(0);
    Form->txtBuffer.Text = "100";
    ChooseIdField("NAME");
    Messages.WillAnswer({Answer::kNo});
    Run();
    EXPECT_THAT(Messages.Texts().front(), HasSubstr("a buffer distance of at least 697 for this dataset"));
}

TEST_F(AnalysisRunTest, An_independence_table_of_another_field_stands_in_the_report_under_its_own) {
    AddTwoAnimals();
    Open();
    Form->btnCalcIO_Click();
    ChooseIdField("NAME");
    Run();
    EXPECT_THAT(Report(),
                HasSubstr("Independence of observation indices:\r\nID, Count, Schoener, Swihart_Slade\r\n3, 4, "));
    EXPECT_THAT(Report(), HasSubstr("\r\nNAME, Count, StdDev_X, StdDev_Y, Ratio(x:y)\r\nAda, 2, "));
}

// --- Overlapping points ---

TEST_F(AnalysisRunTest, Overlapping_points_are_named_and_declining_cancels) {
    AddTwoAnimals();
    Points->AddPoint(1000.0, 500.0, {std::string("Bo"), std::int64_t{3}});
    Points->AddPoint(1500.0, 600.0, {std::string("Ada"), std::int64_t{7}});
    Open();
    Messages.WillAnswer({Answer::kNo});
    Run();
    ASSERT_EQ(Messages.Boxes().size(), 1U);
    EXPECT_EQ(Messages.Last().Text,
              "Warning: overlapping points were detected for the following animals:\r\n3  7\r\nThis may prevent "
              "reasonable estimation of the bandwidth. Would you like to continue anyway?");
    EXPECT_EQ(Messages.Last().Title, "Warning");
    EXPECT_EQ(Messages.Last().Choice, Buttons::kYesNo);
    EXPECT_FALSE(HasReport());
    EXPECT_FALSE(HasSettingsRecord());
    EXPECT_FALSE(HasRaster("K3"));

    Messages.WillAnswer({Answer::kYes});
    Run();
    EXPECT_EQ(Messages.Last().Text, "Processing complete.");
    EXPECT_TRUE(HasRaster("K3"));
}

TEST_F(AnalysisRunTest, The_overlap_question_names_animals_by_their_ids) {
    AddTwoAnimals();
    Points->AddPoint(1000.0, 500.0, {std::string("Bo"), std::int64_t{3}});
    Open();
    ChooseIdField("NAME");
    Messages.WillAnswer({Answer::kNo});
    Run();
    EXPECT_THAT(Messages.Last().Text, HasSubstr("for the following animals:\r\nBo\r\nThis may prevent"));
}

// --- Animals ---

TEST_F(AnalysisRunTest, Warnings_name_the_animal_by_its_id) {
    AddTwoAnimals();
    Open();
    ChooseIdField("NAME");
    Form->txtBW.Text = "40";
    Run();
    EXPECT_EQ(Messages.Boxes().front().Text,
              "The bandwidth (40) is smaller than the cell size (50). Processing aborted.\r(Animal ID: Ada)");
    EXPECT_EQ(Messages.Boxes().front().Title, "Warnings");
}

TEST_F(AnalysisRunTest, A_failing_animal_does_not_stop_the_batch) {
    Points->AddPoint(1300.0, 600.0, {std::string("Cy"), std::int64_t{1}});
    AddTwoAnimals();
    Open();
    Choose(Form->optBE_HREF, &frmKDE::optBE_HREF_Click);
    Run();
    EXPECT_EQ(Messages.Boxes().front().Text,
              "The bandwidth or dimensions of the output raster were 0. Could not calculate kernel.\r(Animal ID: 1)");
    EXPECT_EQ(Messages.Boxes().front().Title, "Warnings");
    EXPECT_THAT(Report(), HasSubstr("Unique ID: 1\r\nSample size: 1\r\nBandwidth: 0\r\n"));
    EXPECT_THAT(Report(),
                HasSubstr("Raster name: K1\r\nWarnings!The bandwidth or dimensions of the output raster were 0. Could "
                          "not calculate kernel.\r\r\nError encountered while calculating kernel! (code: 5001)\r\n\r\n"
                          "Unique ID: 3\r\n"));
    EXPECT_FALSE(HasRaster("K1"));
    EXPECT_TRUE(HasRaster("K3"));
    EXPECT_TRUE(HasRaster("K7"));
    EXPECT_EQ(Keeper.Records.at(0).Status, 5001);
    EXPECT_EQ(Keeper.Records.at(1).Status, 0);
}

TEST_F(AnalysisRunTest, Silent_mode_hides_the_calculators_warnings_only) {
    AddTwoAnimals();
    Open();
    Form->txtBW.Text = "40";
    Form->chkSilent.Value = 1;
    Run();
    EXPECT_EQ(Form->LastRun(), analysis::RunOutcome::kComplete);
    EXPECT_THAT(Messages.Texts(), ElementsAre("Processing complete."));
    EXPECT_EQ(Messages.Last().Title, "Status");
    EXPECT_THAT(Report(), HasSubstr("Warnings!The bandwidth (40) is smaller than the cell size (50). Processing "
                                    "aborted.\r\r\nError encountered while calculating kernel! (code: 5002)\r\n"));
}

TEST_F(AnalysisRunTest, Silent_mode_counts_from_the_animal_after_it_was_ticked_or_cleared) {
    AddTwoAnimals();
    Open();
    Form->txtBW.Text = "40";
    Messages.SetOnShow([&](const platform::MessageBox& box) {
        if (box.Title == "Warnings") Form->chkSilent.Value = 1;
    });
    Run();
    ASSERT_EQ(Messages.Boxes().size(), 2U);
    EXPECT_THAT(Messages.Boxes().front().Text, HasSubstr("(Animal ID: 3)"));
    EXPECT_EQ(Messages.Last().Text, "Processing complete.");

    Messages.SetOnShow({});
    Messages.Clear();
    Form->txtR.Text = "L";
    Host.SetOnYield([&] {
        if (Form->txtStatus.Text == "Writing kernel...") Form->chkSilent.Value = 0;
    });
    Run();
    ASSERT_EQ(Messages.Boxes().size(), 2U);
    EXPECT_THAT(Messages.Boxes().front().Text, HasSubstr("(Animal ID: 7)"));
}

TEST_F(AnalysisRunTest, A_full_extent_over_the_limit_is_each_animals_failure_with_its_message) {
    AddTwoAnimals();
    Open();
    Form->txtBuffer.Text = "1e9";
    Form->chkSilent.Value = 1;
    Run();
    EXPECT_EQ(Messages.Last().Text, "Processing complete.");
    EXPECT_THAT(Report(), HasSubstr("Warnings!Output raster is too large (> 50 million cells). Kernel could not be "
                                    "calculated. Please increase the output cell size."));
    EXPECT_THAT(Report(), HasSubstr("(code: 1001)"));
}

TEST_F(AnalysisRunTest, A_raster_over_the_limit_has_its_true_size_in_the_report) {
    AddTwoAnimals();
    Open();
    Form->txtCellSize.Text = "1";
    Form->txtBuffer.Text = "1e8";
    Run();
    EXPECT_THAT(Report(), HasSubstr("Columns, Rows: 200000900, 200000300\r\n"));
}

TEST_F(AnalysisRunTest, A_page_turned_during_a_run_changes_nothing) {
    AddTwoAnimals();
    Open();
    Form->KeepsFixes = true;
    Form->SSTab1.Current = 1;
    Form->SSTab1_Click(0);
    const double largest = Form->LargestReferenceBandwidth();
    Form->txtBuffer.Text = "5000";
    int turned = 0;
    Host.SetOnYield([&] {
        if (Form->txtStatus.Text != "Calculating kernel..." || turned++ > 0) return;
        Points->AddPoint(90000.0, 90000.0, {std::string("Ada"), std::int64_t{7}});
        Form->SSTab1.Current = 2;
        Form->SSTab1_Click(1);
    });
    Run();
    EXPECT_GT(turned, 0);
    EXPECT_EQ(Form->LargestReferenceBandwidth(), largest);
    EXPECT_EQ(Form->txtBuffer.Text, "5000");
    EXPECT_EQ(Keeper.Records.size(), 2U);
}

TEST_F(AnalysisRunTest, Proportions_give_numbered_rasters_and_multiply_the_bandwidth) {
    AddTwoAnimals();
    Open();
    Choose(Form->optPropHref, &frmKDE::optPropHref_Click);
    Form->txtPropHref.Text = "0.8, 1.0";
    Run();
    EXPECT_TRUE(HasRaster("K3_b1") && HasRaster("K3_b2") && HasRaster("K7_b1") && HasRaster("K7_b2"));
    EXPECT_FALSE(HasRaster("K3"));
    ASSERT_EQ(Keeper.Records.size(), 4U);
    EXPECT_NEAR(Keeper.Records[0].Bandwidth, 0.8 * 91.6486424665735, 1e-9);
    EXPECT_NEAR(Keeper.Records[0].Href, 91.6486424665735, 1e-9);
    EXPECT_NEAR(Keeper.Records[1].Bandwidth, 91.6486424665735, 1e-9);
    EXPECT_EQ(Keeper.Records[2].RasterName, "K7_b1");
}

TEST_F(AnalysisRunTest, The_share_beyond_the_reach_is_told_with_its_cause) {
    AddTwoAnimals();
    Open();
    Form->txtBuffer.Text = "1000";
    Choose(Form->optPropHref, &frmKDE::optPropHref_Click);
    Form->txtPropHref.Text = "2";
    Run();
    const analysis::AnimalRecord& record = Keeper.Records.at(0);
    EXPECT_NEAR(record.Reach, 2.0, 1e-12);
    EXPECT_NEAR(record.BeyondReach, 1.0 - 0.95806393747, 1e-4);
    EXPECT_NEAR(record.LostAtEdge, 0.0, 1e-4);
    EXPECT_FALSE(record.CutTo.has_value());
    EXPECT_THAT(record.Reason,
                testing::EndsWith("4.19 % of the distribution lies beyond the kernels' reach of 2 "
                                  "bandwidths, because the reach is that of HREF whatever the "
                                  "proportion: outer isopleths are too small; --reach whole computes the "
                                  "full kernels"));
}

TEST_F(AnalysisRunTest, A_reach_is_in_bandwidths_of_the_distribution_and_whole_holds_the_widest_kernel) {
    AddTwoAnimals();
    Open();
    Form->txtBuffer.Text = "1000";
    Choose(Form->optPropHref, &frmKDE::optPropHref_Click);
    Form->txtPropHref.Text = "2";
    Form->Reach = "4";
    Run();
    EXPECT_NEAR(Keeper.Records.at(0).Reach, 4.0, 1e-12);
    EXPECT_NEAR(Keeper.Records.at(0).Volume, 999947.475, 1e-2);
    EXPECT_THAT(Keeper.Records.at(0).Reason, Not(HasSubstr("reach")));

    Disk->AddFolder("/whole");
    Form->SetOutputFolder("/whole");
    Form->optAdaptive.Value = true;
    Form->optAdaptive_Click();
    Form->optSmall.Value = true;
    Form->optSmall_Click();
    Form->Reach = "whole";
    Keeper.Records.clear();
    Run();
    for (const analysis::AnimalRecord& record : Keeper.Records) {
        EXPECT_GE(record.Reach, 3.999999);
        EXPECT_LT(record.BeyondReach, 2e-4);
        EXPECT_LT(record.LostAtEdge, 2e-4);
    }
}

// Int((900 + 2000) / 50) columns, Int((300 + 2000) / 50) rows. The kernels are cut at 4 x HREF; at 4 x 2 x HREF the
// volume would be 999947.475.
TEST_F(AnalysisRunTest, The_search_radius_of_a_proportion_is_four_reference_bandwidths) {
    AddTwoAnimals();
    Open();
    Form->txtBuffer.Text = "1000";
    Choose(Form->optPropHref, &frmKDE::optPropHref_Click);
    Form->txtPropHref.Text = "2";
    Run();
    EXPECT_EQ(Keeper.Records.at(0).Grid.Columns, 58);
    EXPECT_EQ(Keeper.Records.at(0).Grid.Rows, 46);
    EXPECT_NEAR(Keeper.Records.at(0).Volume, 958063.93747, 1e-3);
}

// In units of unit variance HREF is n^(-1/6). Columns by 8 x HREF x the mean standard deviation, in map units.
TEST_F(AnalysisRunTest, The_report_tells_rescaled_bandwidths_in_unit_variance) {
    AddTwoAnimals();
    Open();
    Form->chkRescale.Value = 1;
    Choose(Form->optBE_HREF, &frmKDE::optBE_HREF_Click);
    Choose(Form->optSmall, &frmKDE::optSmall_Click);
    Run();
    EXPECT_THAT(Report(), HasSubstr("Unique ID: 3\r\nSample size: 4\r\nBandwidth: 0.7937005259841\r\n"
                                    "HREF (for reference): 0.7937005259841\r\n"));
    EXPECT_THAT(Report(), HasSubstr("Unique ID: 7\r\nSample size: 2\r\nBandwidth: 0.890898718140339\r\n"
                                    "HREF (for reference): 0.890898718140339\r\nColumns, Rows: 38, 34\r\n"));
}

TEST_F(AnalysisRunTest, A_list_of_bandwidths_gives_numbered_rasters) {
    AddTwoAnimals();
    Open();
    Form->txtBW.Text = "60, 100";
    Run();
    EXPECT_TRUE(HasRaster("K3_b1") && HasRaster("K3_b2") && HasRaster("K7_b1") && HasRaster("K7_b2"));
    EXPECT_EQ(Keeper.Records.at(1).Bandwidth, 100.0);
}

TEST_F(AnalysisRunTest, A_numbered_name_that_is_taken_is_refused_before_anything_is_touched) {
    AddTwoAnimals();
    Open();
    const auto stand = [&](const std::string& name) {
        const auto raster = Rasters.Create("/out", {.Name = name, .Geometry = {0.0, 0.0, 1.0, 1, 1}, .Reference = {}});
        raster->WriteRow(std::vector<float>{1.0F});
        raster->Publish();
    };
    Choose(Form->optPropHref, &frmKDE::optPropHref_Click);
    Form->txtPropHref.Text = "0.8";
    stand("K7_b1");
    ExpectRefused(
        "Error: the output folder already holds K7_b1. You should use a new, empty folder for the output of this tool.",
        "User error");
    EXPECT_FALSE(HasRaster("K3_b1"));

    stand("K7");
    ExpectRefused(
        "Error: naming conflict detected (pre-existing raster in output folder). You should use a new, empty folder "
        "for "
        "the output of this tool. Exiting...",
        "User error");
}

TEST_F(AnalysisRunTest, A_second_run_of_a_list_leaves_report_and_record_of_the_first) {
    AddTwoAnimals();
    Open();
    Form->txtBW.Text = "60, 100";
    Run();
    const std::string report = Report();
    const std::string record = Disk->Bytes("/out/WXL_KERNEL_SETTINGS.txt");
    ASSERT_THAT(report, HasSubstr("Raster name: K7_b2"));
    Messages.Clear();
    Run();
    EXPECT_EQ(Messages.Last().Text,
              "Error: the output folder already holds K3_b1. You should use a new, empty folder for the output of this "
              "tool.");
    EXPECT_EQ(Report(), report);
    EXPECT_EQ(Disk->Bytes("/out/WXL_KERNEL_SETTINGS.txt"), record);
}

TEST_F(AnalysisRunTest, A_folder_in_the_place_of_a_raster_is_refused) {
    AddTwoAnimals();
    Open();
    Disk->AddFolder("/out/K7_b1");
    Form->txtBW.Text = "60, 100";
    ExpectRefused(
        "Error: the output folder already holds K7_b1. You should use a new, empty folder for the output of this tool.",
        "User error");
    Form->txtBW.Text = "60";
    Disk->AddFolder("/out/K7");
    ExpectRefused(
        "Error: the output folder already holds K7. You should use a new, empty folder for the output of this tool.",
        "User error");
}

TEST_F(AnalysisRunTest, Smallest_extent_is_the_animals_box_and_four_bandwidths) {
    AddTwoAnimals();
    Open();
    Choose(Form->optSmall, &frmKDE::optSmall_Click);
    Run();
    // Animal 7: x 1500 to 1900, y 600 to 800, bandwidth 100, cell 50.
    EXPECT_EQ(Keeper.Records.at(1).Grid, (platform::RasterGeometry{1100.0, 200.0, 50.0, 24, 20}));
    EXPECT_TRUE(HasRaster("K7"));
}

TEST_F(AnalysisRunTest, A_reference_raster_gives_extent_and_cells) {
    AddTwoAnimals();
    Application->Doc().Map().AddLayer(memory::layer_of(std::make_shared<memory::MemoryRasterLayer>(
        "study area", platform::RasterGeometry{500.0, 100.0, 40.0, 45, 30})));
    Open();
    Choose(Form->optExtRef, &frmKDE::optExtRef_Click);
    ASSERT_TRUE(Form->cmbExtRef.Select("study area"));
    Form->txtCellSize.Text = "";
    Run();
    EXPECT_EQ(Keeper.Records.at(0).Grid, (platform::RasterGeometry{500.0, 100.0, 40.0, 45, 30}));
    EXPECT_THAT(Report(), HasSubstr("Extent setting: reference layer (study area)\r\n"));
    EXPECT_THAT(Report(), HasSubstr("Raster cell size: \r\n"));
}

platform::SpatialReference reference_named(const char* name) {
    platform::SpatialReference reference;
    reference.Name = name;
    return reference;
}

TEST_F(AnalysisRunTest, A_reference_raster_in_another_coordinate_system_is_refused_before_anything_is_written) {
    Points = std::make_shared<memory::MemoryFeatureClass>(
        platform::ShapeType::kPoint, static_cast<platform::IFeatureClass&>(*Points).Table().Fields(),
        reference_named("UTM"));
    Layer = std::make_shared<memory::MemoryFeatureLayer>("bears", Points);
    AddTwoAnimals();
    Application->Doc().Map().AddLayer(memory::layer_of(std::make_shared<memory::MemoryRasterLayer>(
        "study area", platform::RasterGeometry{500.0, 100.0, 40.0, 45, 30}, reference_named("Lambert"))));
    Open();
    Choose(Form->optExtRef, &frmKDE::optExtRef_Click);
    ASSERT_TRUE(Form->cmbExtRef.Select("study area"));
    Run();
    EXPECT_EQ(Form->LastRun(), analysis::RunOutcome::kRefused);
    EXPECT_THAT(Messages.Boxes().back().Text,
                HasSubstr("Error: the reference layer study area is in another coordinate system than the points ("));
    EXPECT_TRUE(Keeper.Records.empty());
}

TEST_F(AnalysisRunTest, A_reference_whose_name_another_layer_has_first_is_refused) {
    AddTwoAnimals();
    Open();
    Form->cmbExtRef.Items.emplace_back("bears");
    Choose(Form->optExtRef, &frmKDE::optExtRef_Click);
    ASSERT_TRUE(Form->cmbExtRef.Select("bears"));
    Run();
    EXPECT_EQ(Form->LastRun(), analysis::RunOutcome::kFailed);
    EXPECT_THAT(Messages.Boxes().front().Text, HasSubstr("The first layer named bears is not a raster layer."));
    EXPECT_TRUE(Keeper.Records.empty());
}

TEST_F(AnalysisRunTest, Selected_features_alone_are_grouped_at_the_layers_full_extent) {
    AddTwoAnimals();
    Layer->Select({0, 1, 2, 3});
    Open();
    Form->chkUseSel.Value = 1;
    Form->chkUseSel_Click();
    Run();
    ASSERT_EQ(Keeper.Records.size(), 1U);
    EXPECT_EQ(Keeper.Records[0].Id, platform::FieldValue(std::int64_t{3}));
    EXPECT_EQ(Keeper.Records[0].Grid.Columns, 34);
    EXPECT_THAT(Report(), HasSubstr("(Using selected features only)\r\n"));

    Layer->Select({});
    Messages.Clear();
    Run();
    EXPECT_THAT(Messages.Texts(), ElementsAre("Error: no animal was found among the selected points. Please select the "
                                              "points to analyse."));
}

TEST_F(AnalysisRunTest, Points_without_an_id_are_counted_in_a_warning) {
    AddTwoAnimals();
    Points->AddPoint(1100.0, 600.0, {std::string("?"), std::monostate{}});
    Open();
    Run();
    EXPECT_EQ(Messages.Boxes().front().Text, "Warning: 1 point has no value in the field ID and is left out.");
    EXPECT_EQ(Keeper.Records.size(), 2U);
}

// --- Isopleths ---

TEST_F(AnalysisRunTest, Isopleths_are_drawn_and_measured) {
    AddTwoAnimals();
    Open();
    Form->txtBuffer.Text = "700";
    WantPolygons("95, 50");
    Run();
    EXPECT_THAT(Messages.Texts(), ElementsAre("Processing complete."));
    const analysis::AnimalRecord& record = Keeper.Records.at(0);
    ASSERT_EQ(record.Isopleths.size(), 2U);
    EXPECT_EQ(record.Isopleths[0].Percent, 95.0);
    EXPECT_LT(record.Isopleths[0].Level, record.Isopleths[1].Level);
    ASSERT_TRUE(record.Isopleths[0].Area && record.Isopleths[1].Area);
    EXPECT_GT(*record.Isopleths[0].Area, *record.Isopleths[1].Area);
    EXPECT_THAT(record.Files, ElementsAre("/out/K3", "/out/K3_iso_poly.shp"));
    EXPECT_EQ(record.IsoplethStatus, 0);
    EXPECT_FALSE(record.EdgeWarning);
}

// With buffer 400 the density at the edge is 0.004 for animal 3 and 0.007 for animal 7: above 5e-10 x 1000000, but
// below 1e-08 x 1000000.
TEST_F(AnalysisRunTest, The_edge_warning_hangs_on_the_method) {
    AddTwoAnimals();
    Open();
    WantPolygons("95");
    Run();
    ASSERT_EQ(Messages.Boxes().size(), 3U);
    EXPECT_THAT(Messages.Boxes()[0].Text,
                testing::StartsWith("A warning was generated when calculating the isopleths."));
    EXPECT_EQ(Messages.Boxes()[0].Title, "Warning");
    EXPECT_EQ(Messages.Boxes()[0].Sign, Icon::kExclamation);
    EXPECT_NEAR(Keeper.Records.at(0).MaxEdgeValue.value(), 0.004264525931838387, 1e-9);
    EXPECT_THAT(Report(), HasSubstr("is valid.\r\n\r\nUnique ID: 7\r\n"));

    Messages.Clear();
    Keeper.Records.clear();
    Form->txtR.Text = "L";
    Choose(Form->optBE_HREF, &frmKDE::optBE_HREF_Click);
    Run();
    EXPECT_FALSE(Keeper.Records.at(0).EdgeWarning);
    EXPECT_GT(Keeper.Records.at(0).MaxEdgeValue.value(), 0.0005);
}

TEST_F(AnalysisRunTest, The_edge_warning_shows_in_silent_mode_too) {
    AddTwoAnimals();
    Open();
    WantPolygons("95");
    Form->chkSilent.Value = 1;
    Run();
    const std::string text =
        "A warning was generated when calculating the isopleths. It is possible that the extent of the raster was not "
        "large enough to accommodate the utilization distribution. Data truncation may therefore have occurred, and "
        "this can profoundly disrupt the isopleth calculation. It is recommended you inspect the vector isopleth "
        "carefully to determine if it is valid.";
    EXPECT_THAT(Messages.Texts(), ElementsAre(text, text, "Processing complete."));
    for (const std::size_t i : {0U, 1U}) {
        EXPECT_EQ(Messages.Boxes()[i].Title, "Warning");
        EXPECT_EQ(Messages.Boxes()[i].Sign, Icon::kExclamation);
    }
    const std::string report = Report();
    const std::size_t first = report.find("\r\n" + text + "\r\n");
    ASSERT_NE(first, std::string::npos);
    const std::size_t second = report.find("\r\n" + text + "\r\n", first + 1);
    ASSERT_NE(second, std::string::npos);
    EXPECT_EQ(report.find(text, second + text.size()), std::string::npos);
}

// --- Progress, stop and failing disks ---

TEST_F(AnalysisRunTest, The_biased_search_shows_in_the_status_box) {
    AddTwoAnimals();
    Open();
    Choose(Form->optBE_BCV, &frmKDE::optBE_BCV_Click);
    Form->chkSilent.Value = 1;
    std::vector<std::string> statuses;
    Host.SetOnYield([&] { statuses.push_back(Form->txtStatus.Text); });
    Run();
    EXPECT_THAT(statuses, testing::Contains("Calculating BCV..."));
    EXPECT_THAT(statuses, testing::Not(testing::Contains("Calculating LSCV...")));
}

TEST_F(AnalysisRunTest, Stages_show_in_the_status_box_with_the_button_disabled) {
    AddTwoAnimals();
    Open();
    Choose(Form->optBE_LSCV, &frmKDE::optBE_LSCV_Click);
    WantPolygons("95");
    Form->chkSilent.Value = 1;
    std::vector<std::string> statuses;
    double lastProgress = 0.0;
    Host.SetOnYield([&] {
        EXPECT_FALSE(Form->btnOK.Enabled);
        EXPECT_GE(Form->PBar.Value, lastProgress);
        lastProgress = Form->PBar.Value;
        if (statuses.empty() || statuses.back() != Form->txtStatus.Text) statuses.push_back(Form->txtStatus.Text);
        Form->btnOK_Click();
    });
    Run();
    ASSERT_GE(statuses.size(), 5U);
    EXPECT_THAT(std::vector<std::string>(statuses.begin() + 1, statuses.begin() + 5),
                ElementsAre("Calculating LSCV...", "Calculating kernel...", "Writing kernel...", "Isopleths..."));
    EXPECT_EQ(lastProgress, 100.0);
    EXPECT_TRUE(Form->btnOK.Enabled);
    EXPECT_EQ(Form->txtStatus.Text, "Processing complete.");
    EXPECT_EQ(Keeper.Records.size(), 2U);
}

TEST_F(AnalysisRunTest, Exit_during_a_run_asks_and_stops_it_after_the_present_distribution) {
    AddTwoAnimals();
    Open();
    Messages.WillAnswer({platform::Answer::kYes});
    Host.SetOnYield([&] {
        if (Form->txtStatus.Text == "Calculating kernel...") Form->btnExit_Click();
    });
    Run();
    EXPECT_EQ(Form->LastRun(), analysis::RunOutcome::kStopped);
    EXPECT_TRUE(Form->Visible);
    EXPECT_TRUE(HasRaster("K3"));
    EXPECT_FALSE(HasRaster("K7"));
    EXPECT_TRUE(HasSettingsRecord());
    EXPECT_THAT(Report(),
                testing::EndsWith("Volume: " + platform::NumberText(Keeper.Records.at(0).Volume) +
                                  " / 1000000\r\n\r\nFinish time: 11/20/2026 3:04:05 PM\r\nProcessing stopped "
                                  "by the user\r\n"));
    ASSERT_EQ(Messages.Boxes().size(), 2U) << "asked once, however often Exit is pressed";
    const platform::MessageBox& question = Messages.Boxes().front();
    EXPECT_EQ(question.Text,
              "The analysis is running. Do you want to stop it after the present animal? What was done until then is "
              "kept.");
    EXPECT_EQ(question.Title, "Kernel Density Estimation");
    EXPECT_EQ(question.Sign, platform::Icon::kQuestion);
    EXPECT_EQ(question.Choice, platform::Buttons::kYesNo);
    EXPECT_EQ(Messages.Last().Text, "Processing stopped.");
    Host.SetOnYield({});
    Form->btnExit_Click();
    EXPECT_FALSE(Form->Visible);
}

TEST_F(AnalysisRunTest, A_run_goes_on_when_the_question_to_stop_is_answered_with_no) {
    AddTwoAnimals();
    Open();
    Messages.AlwaysAnswer(platform::Topic::kStop, platform::Answer::kNo);
    Messages.SetOnShow([&](const platform::MessageBox& box) {
        // Pressed again while the question is on screen.
        if (box.About == platform::Topic::kStop) Form->btnExit_Click();
    });
    bool pressed = false;
    Host.SetOnYield([&] {
        if (!std::exchange(pressed, true)) Form->btnExit_Click();
    });
    Run();
    EXPECT_EQ(Form->LastRun(), analysis::RunOutcome::kComplete);
    EXPECT_TRUE(HasRaster("K3"));
    EXPECT_TRUE(HasRaster("K7"));
    EXPECT_EQ(Messages.Boxes().size(), 2U);
}

TEST_F(AnalysisRunTest, A_disk_that_fails_ends_the_run_with_the_error_and_the_cancel_routine) {
    AddTwoAnimals();
    Open();
    Disk->Fail(memory::DiskStep::kOpen, 1, 61);
    Run();
    EXPECT_EQ(Form->LastRun(), analysis::RunOutcome::kFailed);
    ASSERT_EQ(Messages.Boxes().size(), 1U);
    EXPECT_THAT(Messages.Last().Text, testing::StartsWith("KDE: Disk full"));
    EXPECT_FALSE(HasReport());
}

TEST_F(AnalysisRunTest, Settings_are_not_loaded_during_a_run) {
    memory::MemoryFileDialogs dialogs;
    Services.Dialogs = &dialogs;
    AddTwoAnimals();
    Open();
    Disk->AddFolder("/old");
    Disk->AddFile("/old/WXL_KDE_ANALYSIS.txt", "old report");
    Disk->AddFile("/old/WXL_KERNEL_SETTINGS.txt", "old settings");
    Disk->AddFile("/settings.txt", "[OUTFOLDER]\r\n/old\r\n[PREFIX]\r\nX\r\n\r\n");
    dialogs.WillChoose("/settings.txt");
    bool enabled = false;
    Host.SetOnYield([&] {
        enabled = enabled || Form->btnLoadSettings.Enabled;
        if (Form->txtStatus.Text != "Calculating kernel...") return;
        Form->btnLoadSettings_Click();
        Disk->Fail(memory::DiskStep::kWrite, 1, 61);
    });
    Run();
    EXPECT_EQ(Form->LastRun(), analysis::RunOutcome::kFailed);
    EXPECT_FALSE(enabled);
    EXPECT_TRUE(Form->btnLoadSettings.Enabled);
    EXPECT_EQ(Form->OutputFolder(), "/out");
    EXPECT_EQ(Form->txtR.Text, "K");
    EXPECT_EQ(Disk->Bytes("/old/WXL_KDE_ANALYSIS.txt"), "old report");
    EXPECT_EQ(Disk->Bytes("/old/WXL_KERNEL_SETTINGS.txt"), "old settings");
    EXPECT_FALSE(HasReport());
    EXPECT_FALSE(HasSettingsRecord());

    Host.SetOnYield({});
    Form->btnLoadSettings_Click();
    EXPECT_EQ(Form->OutputFolder(), "/OLD");
}

TEST_F(AnalysisRunTest, The_cancel_routine_deletes_in_the_folder_of_the_run_whatever_the_form_names_by_then) {
    AddTwoAnimals();
    Open();
    Disk->AddFolder("/old");
    Disk->AddFile("/old/WXL_KDE_ANALYSIS.txt", "old report");
    Disk->AddFile("/old/WXL_KERNEL_SETTINGS.txt", "old settings");
    Host.SetOnYield([&] {
        if (Form->txtStatus.Text != "Calculating kernel...") return;
        EXPECT_TRUE(HasReport() && HasSettingsRecord());
        Form->SetOutputFolder("/old");
        Disk->Fail(memory::DiskStep::kWrite, 1, 61);
    });
    Run();
    EXPECT_EQ(Form->LastRun(), analysis::RunOutcome::kFailed);
    EXPECT_EQ(Disk->Bytes("/old/WXL_KDE_ANALYSIS.txt"), "old report");
    EXPECT_EQ(Disk->Bytes("/old/WXL_KERNEL_SETTINGS.txt"), "old settings");
    EXPECT_FALSE(HasReport());
    EXPECT_FALSE(HasSettingsRecord());
    EXPECT_FALSE(Locks.IsHeld("/out"));
}

TEST_F(AnalysisRunTest, Observers_hear_of_begin_and_end_of_what_became_a_run) {
    AddTwoAnimals();
    Open();
    Form->txtBuffer.Text = "349";
    Messages.WillAnswer({Answer::kCancel});
    Run();
    EXPECT_THAT(Keeper.Begun, testing::IsEmpty());
    EXPECT_THAT(Keeper.Ended, testing::IsEmpty());

    Form->txtBuffer.Text = "400";
    Run();
    EXPECT_THAT(Keeper.Begun, testing::ElementsAre(2U));
    EXPECT_THAT(Keeper.Ended, testing::ElementsAre(analysis::RunOutcome::kComplete));

    Form->txtR.Text = "L";
    Host.SetOnYield([&] {
        if (Form->txtStatus.Text == "Calculating kernel...") Disk->Fail(memory::DiskStep::kWrite, 1, 61);
    });
    Run();
    EXPECT_THAT(Keeper.Begun, testing::ElementsAre(2U, 2U));
    EXPECT_THAT(Keeper.Ended, testing::ElementsAre(analysis::RunOutcome::kComplete, analysis::RunOutcome::kFailed));
}

TEST_F(AnalysisRunTest, An_observer_that_fails_at_the_end_leaves_the_run_as_it_is) {
    struct Failing final : analysis::IRunObserver {
        void RunBegins(const analysis::RunFrame&, const analysis::GroupedFixes&) override {}
        void AnimalDone(const analysis::AnimalRecord&) override {}
        void RunEnds(analysis::RunOutcome) override { platform::Raise(61, "Disk full: page"); }
    } failing;
    AddTwoAnimals();
    Open();
    Form->AddObserver(failing);
    Run();
    EXPECT_EQ(Form->LastRun(), analysis::RunOutcome::kComplete);
    EXPECT_TRUE(HasReport());
    ASSERT_EQ(Messages.Boxes().size(), 2U);
    EXPECT_EQ(Messages.Boxes().front().Text, "Disk full: page");
    EXPECT_EQ(Messages.Last().Text, "Processing complete.");
}

TEST_F(AnalysisRunTest, A_report_that_cannot_be_deleted_is_told_by_the_cancel_routine) {
    AddTwoAnimals();
    Open();
    Form->txtBuffer.Text = "349";
    Messages.WillAnswer({Answer::kCancel});
    Messages.SetOnShow([&](const auto&) { Disk->Fail(memory::DiskStep::kDelete, 1, 70); });
    Run();
    EXPECT_THAT(Messages.Last().Text, testing::StartsWith("Error_Cancel: Permission denied"));
    EXPECT_EQ(Messages.Last().Title, "Error");
    EXPECT_TRUE(Form->btnOK.Enabled);
}

TEST_F(RunTest, Every_box_carries_its_kind) {
    AddTwoAnimals();
    Open();
    Form->txtBuffer.Text = "10";
    Messages.WillAnswer({Answer::kNo});
    Run();
    ASSERT_EQ(Messages.Boxes().size(), 2U);
    EXPECT_EQ(Messages.Boxes()[0].Kind, platform::BoxKind::kQuestion);
    EXPECT_EQ(Messages.Boxes()[1].Kind, platform::BoxKind::kNote);
    Messages.Clear();
    Run();
    EXPECT_EQ(Messages.Last().Kind, platform::BoxKind::kRefusal) << Messages.Last().Text;
    Form->txtR.Text = "L";
    Disk->Fail(memory::DiskStep::kWrite, 1, platform::error_number::kDiskFull);
    Run();
    EXPECT_EQ(Messages.Last().Kind, platform::BoxKind::kFault) << Messages.Last().Text;
}

}  // namespace
}  // namespace wxl::kde_tool
