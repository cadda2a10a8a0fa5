#include "adapters/raster/png_encoder.h"
#include "analysis/animal_run.h"
#include "analysis/settings_text.h"
#include "platform/runtime_error.h"
#include "results_page/animal_table.h"
#include "results_page/page_parts.h"
#include "results_page/results_page.h"
#include "tests/unit/kde_tool/run_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace wxl::results_page {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

const std::filesystem::path kFile = "/out/WXL_KDE_ANALYSIS.html";

std::size_t count_of(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
    return count;
}

struct ResultsPageTest : kde_tool::RunTest {
    files::PngEncoder Pictures;
    std::unique_ptr<ResultsPage> Page;

    void OpenWithPage() {
        Services.Pictures = &Pictures;
        Open();
        Page = std::make_unique<ResultsPage>(Services);
        Form->AddObserver(*Page);
        Form->txtBuffer.Text = "700";
        Form->chkHtml.Value = 1;
        WantPolygons("50, 95");
    }
    std::string Html() const { return Disk->Bytes(kFile); }
};

TEST_F(ResultsPageTest, Stands_beside_the_report_when_asked_for) {
    AddTwoAnimals();
    OpenWithPage();
    Run();
    const std::string html = Html();
    EXPECT_TRUE(html.starts_with("<!DOCTYPE html>\n<html lang=\"en\">"));
    EXPECT_TRUE(html.ends_with("</html>\n"));
    EXPECT_THAT(html, HasSubstr("<h1><bdi>bears</bdi></h1>"));
    EXPECT_EQ(count_of(html, "<article class=\"animal\""), 2U);
    EXPECT_EQ(count_of(html, "<svg class=\"map\""), 2U);
    EXPECT_EQ(count_of(html, "href=\"data:image/png;base64,iVBORw0KGgo"), 2U);
    EXPECT_EQ(Page->Written(), kFile);
    EXPECT_THAT(Files.List("/out"), Not(Contains(HasSubstr(".part"))));
    Form->chkHtml.Value = 0;
    Files.DeleteFile(kFile, false);
    Form->txtR.Text = "L";
    Run();
    EXPECT_FALSE(Files.FileExists(kFile));
    EXPECT_TRUE(Page->Written().empty());
}

TEST_F(ResultsPageTest, Is_one_file_without_network) {
    AddTwoAnimals();
    OpenWithPage();
    Run();
    const std::string html = Html();
    for (const char* part : {"http://", "https://", "<link", "@import", "url(", " src="})
        EXPECT_THAT(html, Not(HasSubstr(part)));
    EXPECT_THAT(html, HasSubstr("default-src 'none'"));
}

TEST_F(ResultsPageTest, Significant_autocorrelation_leads_to_its_remedy) {
    for (int i = 0; i < 12; ++i)
        Points->AddPoint(1000.0 + 60.0 * i, 500.0 + 5.0 * i * i, {std::string("Cy"), std::int64_t{3}});
    OpenWithPage();
    Run();
    const std::string html = Html();
    EXPECT_EQ(count_of(html, "<dt id=\"autocorrelation\">"), 1U);
    EXPECT_THAT(html, HasSubstr("<code>wxl akde bears --id-field ID --time-field FIELD --out akde</code>"));
    EXPECT_THAT(html, HasSubstr("<a class=\"warn\" href=\"#autocorrelation\"><strong>significant "
                                "autocorrelation</strong></a>"));
}

TEST_F(ResultsPageTest, Table_tells_areas_by_falling_percentage_and_has_buttons_to_sort) {
    AddTwoAnimals();
    OpenWithPage();
    Run();
    const std::string html = Html();
    const std::size_t first = html.find("95 % area");
    EXPECT_LT(first, html.find("50 % area"));
    EXPECT_EQ(count_of(html, "aria-sort=\"none\"><button type=\"button\">"), 9U);
    EXPECT_THAT(html, HasSubstr("<th scope=\"row\"><a href=\"#animal-1\"><bdi>3</bdi></a></th>"
                                "<td class=\"num\" data-value=\"4\">4</td>"));
    EXPECT_THAT(html, HasSubstr("<td>user-defined</td><td class=\"num\" data-value=\"100\">100</td>"));
}

// The corners of a square of side 200; two fixes have no area, and the raster's CRS no name for its unit.
TEST_F(ResultsPageTest, Tells_and_draws_minimum_convex_polygons) {
    AddTwoAnimals();
    OpenWithPage();
    Form->ConvexPercentages = analysis::typed_numbers("100,50");
    Run();
    const std::string html = Html();
    EXPECT_EQ(count_of(html, "<button type=\"button\">MCP 100 % (square map units)</button>"), 1U);
    EXPECT_THAT(html,
                HasSubstr("<td class=\"num\" data-value=\"40000\">40000</td><td class=\"num\" data-value=\"40000\">"));
    EXPECT_EQ(count_of(html, "<caption>Minimum convex polygons</caption>"), 2U);
    EXPECT_THAT(html, HasSubstr("100 %</th><td class=\"num\">4</td><td class=\"num\">40000</td></tr>"));
    EXPECT_THAT(html, HasSubstr("100 %</th><td class=\"num\">2</td><td class=\"num\">0</td></tr>"));
    EXPECT_EQ(count_of(html, "<svg class=\"map\""), 2U);
    EXPECT_THAT(html,
                HasSubstr("<tr><th scope=\"row\">Minimum convex polygons</th><td>100,50 % of the fixes</td></tr>"));
    EXPECT_THAT(html, HasSubstr(" --mcp 100,50 "));
}

TEST_F(ResultsPageTest, Ends_with_the_methods_to_copy) {
    AddTwoAnimals();
    OpenWithPage();
    Form->Where = "NAME < 'C'";
    Run();
    const std::string html = Html();
    EXPECT_THAT(html, HasSubstr("<p>We estimated the home ranges of 2 animals from 6 fixes (median 3, range 2 to 4 per "
                                "animal). Fixes were those that meet the condition NAME &lt; &#39;C&#39;. "));
    EXPECT_THAT(html, HasSubstr("The bandwidth was set to 100 map units."));
    EXPECT_THAT(html, HasSubstr("<li>Worton, B. J. 1989. "));
    EXPECT_GT(html.find("id=\"methods\""), html.find("id=\"repeat\""));
}

TEST_F(ResultsPageTest, Hostile_names_are_text) {
    MakePoints(platform::FieldType::kText);
    const std::string name = "</script><img onerror=x>&\"'\x01\xE2\x80\xAE";
    for (const auto& [x, y] : {std::pair(0.0, 0.0), {200.0, 0.0}, {0.0, 200.0}})
        Points->AddPoint(x, y, {std::string("n"), name});
    OpenWithPage();
    Run();
    const std::string html = Html();
    EXPECT_THAT(html, Not(HasSubstr("<img")));
    EXPECT_EQ(count_of(html, "</script>"), 1U);
    EXPECT_THAT(html, HasSubstr("<bdi>&lt;/script&gt;&lt;img onerror=x&gt;&amp;&quot;&#39;\xEF\xBF\xBD</bdi>"));
}

TEST_F(ResultsPageTest, Calls_a_raster_that_misses_much_of_a_distribution_cut) {
    AddTwoAnimals();
    // Animal 3 lies evenly on both sides of the raster's right edge at x = 1100; animal 7 ends 4 bandwidths from it.
    Application->Doc().Map().AddLayer(memory::layer_of(
        std::make_shared<memory::MemoryRasterLayer>("study area", platform::RasterGeometry{500.0, 0.0, 50.0, 12, 24})));
    OpenWithPage();
    Choose(Form->optExtRef, &kde_tool::frmKDE::optExtRef_Click);
    ASSERT_TRUE(Form->cmbExtRef.Select("study area"));
    Form->chkBnds.Value = 0;
    Form->chkBnds_Click();
    Run();
    const std::string html = Html();
    EXPECT_THAT(html,
                HasSubstr("<strong class=\"warn\">cut</strong>: only 50 % of the distribution lies on the raster"));
    EXPECT_THAT(
        html,
        HasSubstr("<strong class=\"warn\">cut</strong>: less than 0.01 % of the distribution lies on the raster"));
    EXPECT_THAT(html, HasSubstr("<li>2 rasters hold less than 99 % of the distribution: choose a larger extent.</li>"));
    EXPECT_EQ(count_of(html, "<td><strong class=\"warn\">cut</strong></td>"), 2U);
    EXPECT_THAT(html, Not(HasSubstr("clear")));
    EXPECT_EQ(Keeper.Records.at(0).Reason, "only 50 % of the distribution lies on its raster: choose a larger extent");
}

TEST_F(ResultsPageTest, Tells_of_a_failed_animal_without_a_map) {
    AddTwoAnimals();
    Points->AddPoint(1500.0, 600.0, {std::string("One"), std::int64_t{9}});
    OpenWithPage();
    Choose(Form->optBE_HREF, &kde_tool::frmKDE::optBE_HREF_Click);
    Form->txtBuffer.Text = "9000";
    Run();
    const std::string html = Html();
    EXPECT_THAT(html, HasSubstr("<li>1 distribution could not be computed.</li>"));
    EXPECT_THAT(html, HasSubstr("<td class=\"remark\">1 fix is too few for a bandwidth</td>"));
    EXPECT_THAT(html, HasSubstr("No distribution was computed, so there is no map."));
    EXPECT_EQ(count_of(html, "<svg class=\"map\""), 2U);
}

TEST_F(ResultsPageTest, A_raster_that_is_gone_leaves_a_line) {
    AddTwoAnimals();
    OpenWithPage();
    Form->chkHtml.Value = 0;
    Run();
    analysis::RunFrame frame;
    frame.Folder = "/out";
    frame.Wanted.Html = true;
    Rasters.Delete("/out", "K3");
    const analysis::GroupedFixes unknown;
    Page->RunBegins(frame, unknown);
    for (const auto& record : Keeper.Records) Page->AnimalDone(record);
    Page->RunEnds(analysis::RunOutcome::kStopped);
    EXPECT_THAT(Html(), HasSubstr("The raster is not in the folder, so there is no map."));
    EXPECT_THAT(Html(), HasSubstr("The run was stopped"));
    EXPECT_EQ(count_of(Html(), "<svg class=\"map\""), 1U);
}

TEST_F(ResultsPageTest, Replaces_its_own_page_and_nothing_else) {
    AddTwoAnimals();
    OpenWithPage();
    Run();
    const std::string first = Html();
    Form->txtR.Text = "L";
    Run();
    EXPECT_NE(Html(), first);
    Files.DeleteFile(kFile, false);
    Disk->AddFile(kFile, "<p>my page</p>");
    Form->txtR.Text = "M";
    Run();
    EXPECT_EQ(Html(), "<p>my page</p>");
    EXPECT_THAT(
        Messages.Texts(),
        Contains("Warning: /out/WXL_KDE_ANALYSIS.html is not a page of this tool and was left as it is; no page "
                 "was written."));
}

TEST_F(ResultsPageTest, A_full_disk_leaves_no_half_page) {
    AddTwoAnimals();
    OpenWithPage();
    analysis::RunFrame frame;
    frame.Folder = "/out";
    frame.Wanted.Html = true;
    Page->RunBegins(frame, {});
    Disk->Fail(memory::DiskStep::kWrite, 3, platform::error_number::kDiskFull);
    EXPECT_THROW(Page->RunEnds(analysis::RunOutcome::kComplete), platform::RuntimeError);
    EXPECT_TRUE(Files.List("/out").empty());
}

TEST_F(ResultsPageTest, Is_the_same_from_records_and_fixes) {
    AddTwoAnimals();
    OpenWithPage();
    struct FrameKeeper final : analysis::IRunObserver {
        analysis::RunFrame Frame;
        analysis::GroupedFixes Animals;
        void RunBegins(const analysis::RunFrame& frame, const analysis::GroupedFixes& animals) override {
            Frame = frame;
            Animals = animals;
        }
        void AnimalDone(const analysis::AnimalRecord&) override {}
        void RunEnds(analysis::RunOutcome) override {}
    } frames;
    Form->AddObserver(frames);
    Run();
    const std::string live = Html();
    ResultsPage later(Services);
    later.RunBegins(frames.Frame, frames.Animals);
    for (const auto& record : Keeper.Records) later.AnimalDone(record);
    later.RunEnds(analysis::RunOutcome::kComplete);
    EXPECT_EQ(Html(), live);
}

// Four corners of a square, and two fixes.
TEST_F(ResultsPageTest, Draws_the_fixes_with_a_box_that_hides_them) {
    AddTwoAnimals();
    OpenWithPage();
    Run();
    const std::string html = Html();
    EXPECT_THAT(html, HasSubstr("<input type=\"checkbox\" class=\"shows-dots\" id=\"map-1-dots\" checked><svg"));
    EXPECT_THAT(html, HasSubstr("</svg><label for=\"map-1-dots\">Dots: its 4 fixes</label></figure>"));
    EXPECT_EQ(count_of(html, "h0"), 4U + 2U);
    EXPECT_EQ(count_of(html, "<path class=\"dots few\" transform=\"scale(0.5)\""), 2U) << "few are drawn larger";
}

TEST(PageParts, Times_and_sizes_are_told) {
    PageRun run;
    run.Reference = {.Name = "U", .Wkt = "w", .UnitName = "metre", .MetersPerUnit = 1.0, .IsGeographic = false};
    run.Wanted.Isopleths = true;
    run.Wanted.Percentages = analysis::typed_numbers("95");
    analysis::AnimalRecord record;
    record.Id = std::string("Bo");
    record.SampleSize = 3;
    record.Isopleths = {{95.0, 0.5, 25000.0}};
    record.Times = tracking_times::facts_on_times({1525000000, 1525003600, 1525014400});
    record.Distorted = platform::Distortion{0.031, 0.0002};
    run.Records = {record, record};
    run.Records.back().Distorted = platform::Distortion{0.01, 0.004};
    const std::string table = animal_table(run);
    EXPECT_THAT(table,
                HasSubstr("<td class=\"num\" data-value=\"25000\">0.025<br><span class=\"quiet\">2.5 ha</span>"));
    EXPECT_THAT(table, HasSubstr("<span class=\"period\">2018-04-29</span>"));
    EXPECT_THAT(table, HasSubstr("data-value=\"0.166666666666667\">0.1667</td>"));
    EXPECT_THAT(table, HasSubstr("<td class=\"num\" data-value=\"7200\">2 h</td>"));
    EXPECT_THAT(settings_section(run), HasSubstr("<th scope=\"row\">Sizes on its map</th><td>areas are up to 3.1 % and "
                                                 "distances up to 0.4 % wrong</td>"));
    EXPECT_THAT(problems(run), HasSubstr("<li>In U areas are up to 3.1 % and distances up to 0.4 % wrong: take an "
                                         "equal-area projection.</li>"));
}

TEST(PageParts, What_significant_autocorrelation_means_is_told) {
    EXPECT_THAT(
        reading_notes(PageRun{}),
        HasSubstr("<dt id=\"autocorrelation\">Significant autocorrelation</dt><dd>Each fix lies nearer to the one "
                  "before than two fixes of the animal do that are taken at random"));
}

TEST(PictureSize, Shrinks_with_the_number_of_distributions) {
    EXPECT_EQ(picture_size(1).Side, 300);
    EXPECT_EQ(picture_size(150).Side, 300);
    EXPECT_EQ(picture_size(600).Side, 150);
    EXPECT_EQ(picture_size(1000000).Side, 96);
    EXPECT_EQ(picture_size(600).LinePoints, 750U);
    EXPECT_EQ(picture_size(1000000).LinePoints, 200U);
}

TEST(PageRun, Areas_are_in_square_kilometres_where_the_unit_is_known) {
    PageRun run;
    EXPECT_EQ(area_unit(run), "square map units");
    EXPECT_EQ(area_text(run, 1234567.0), "1235000");
    run.Reference.MetersPerUnit = 1.0;
    run.Reference.UnitName = "metre";
    EXPECT_EQ(area_unit(run), "km²");
    EXPECT_EQ(area_text(run, 1234567.0), "1.235");
    EXPECT_EQ(area_text(run, std::nullopt), "");
    EXPECT_EQ(length_unit(run), "m");
}

}  // namespace
}  // namespace wxl::results_page
