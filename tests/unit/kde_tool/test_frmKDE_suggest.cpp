#include "analysis/settings_text.h"
#include "form_fixture.h"
#include "kde_tool/form_settings.h"

#include <algorithm>

namespace wxl::kde_tool {
namespace {

/// Finds the field "Animal", and gives what a test says as the last settings.
struct Advice final : IFormAdvice {
    std::optional<std::size_t> AnimalField(const std::vector<std::string>& fields) const override {
        const auto found = std::ranges::find(fields, "Animal");
        return found == fields.end() ? std::nullopt : std::optional(static_cast<std::size_t>(found - fields.begin()));
    }
    bool CanWrite(const std::filesystem::path&) const override { return true; }
    std::optional<analysis::Settings> LastSettings() const override { return Last; }

    std::optional<analysis::Settings> Last;
};

/// Four fixes on a line, 1000 apart in x and y: HREF is sqrt(5/3) x 1000 x 4^(-1/6) = 1024.66.
void add_line(memory::MemoryFeatureClass& points) {
    for (const double place : {0.0, 1000.0, 2000.0, 3000.0}) points.AddPoint(place, place, {std::int64_t{12}, 1.0});
}

class Suggesting : public FormTest {
protected:
    Suggesting() {
        add_line(AddPoints("other"));
        add_line(AddPoints("fixes"));
        form.Advice = &advice;
    }

    Advice advice;
};

TEST_F(Suggesting, Nothing_is_chosen_before) {
    Open();
    EXPECT_EQ(form.cmbPntL.Text(), "other");
    EXPECT_EQ(form.cmbUIDFLD.Text(), "");
    EXPECT_EQ(form.txtCellSize.Text, "");
    EXPECT_EQ(form.chkBnds.Value, 0);
    EXPECT_TRUE(form.optFull.Value);
}

TEST_F(Suggesting, Fills_in_what_suits_the_highlighted_layer) {
    application->Doc().SetSelectedLayer(memory::layer_of(layers[1]));
    Open();
    form.btnSuggest_Click();
    EXPECT_EQ(form.cmbPntL.Text(), "fixes");
    EXPECT_EQ(form.cmbUIDFLD.Text(), "Animal");
    EXPECT_EQ(form.txtCellSize.Text, "100");
    EXPECT_EQ(form.chkBnds.Value, 1);
    EXPECT_EQ(form.txtBnds.Text, "95, 50");
    EXPECT_TRUE(form.txtBnds.Enabled);
    EXPECT_EQ(form.chkPolys.Value, 1);
    EXPECT_EQ(form.chkLines.Value, 0);
    EXPECT_TRUE(form.optSmall.Value);
    EXPECT_FALSE(form.optFull.Value);
    EXPECT_FALSE(form.txtBuffer.Enabled);
    EXPECT_EQ(form.txtStatus.Text, "Suggested for fixes, animals by Animal: cell size 100");
    EXPECT_EQ(form.datagridHref.Rows.size(), 1U) << "the tables are those of the layer";
}

TEST_F(Suggesting, Keeps_the_chosen_layer_where_another_kind_is_highlighted) {
    AddRaster("dem");
    application->Doc().SetSelectedLayer(
        platform::Layer{.Name = "dem", .Class = platform::LayerClass::kRaster, .Feature = nullptr, .Raster = nullptr});
    Open();
    form.btnSuggest_Click();
    EXPECT_EQ(form.cmbPntL.Text(), "other");
    EXPECT_EQ(form.txtCellSize.Text, "100");
}

TEST_F(Suggesting, Asks_for_the_field_where_none_is_found_and_keeps_one_that_was_chosen) {
    form.Advice = nullptr;
    Open();
    form.btnSuggest_Click();
    EXPECT_EQ(form.txtStatus.Text, "Suggested, but please choose the field that names the animals");
    EXPECT_EQ(form.txtCellSize.Text, "");
    EXPECT_EQ(form.txtBnds.Text, "95, 50");
    ChooseField("Animal");
    form.btnSuggest_Click();
    EXPECT_EQ(form.txtCellSize.Text, "100");
}

TEST_F(Suggesting, Leaves_the_cell_size_of_a_layer_in_degrees_alone) {
    auto features = std::make_shared<memory::MemoryFeatureClass>(
        platform::ShapeType::kPoint,
        std::vector<platform::Field>{{.Name = "Animal", .Type = platform::FieldType::kInteger},
                                     {.Name = "Age", .Type = platform::FieldType::kDouble}},
        platform::SpatialReference{"WGS 84", "", "degree", 0.0, true});
    add_line(*features);
    layers.push_back(std::make_shared<memory::MemoryFeatureLayer>("gps", features));
    Map().AddLayer(memory::layer_of(layers.back()));
    application->Doc().SetSelectedLayer(memory::layer_of(layers.back()));
    Open();
    form.btnSuggest_Click();
    EXPECT_EQ(form.cmbPntL.Text(), "gps");
    EXPECT_EQ(form.txtCellSize.Text, "");
    EXPECT_EQ(form.txtCellSize.Hint, "");
    EXPECT_EQ(form.txtStatus.Text,
              "Suggested, but no cell size: the layer has no reference bandwidth in a unit of length");
}

TEST_F(Suggesting, Hints_tell_it_before) {
    Open();
    EXPECT_EQ(form.cmbUIDFLD.Hint, "suggested: Animal");
    EXPECT_EQ(form.txtCellSize.Hint, "");
    ChooseField("Animal");
    GoToPage(3);
    EXPECT_EQ(form.txtCellSize.Hint, "suggested: 100");
    EXPECT_EQ(form.txtCellSize.Text, "");
    ChooseField("Age");
    EXPECT_EQ(form.txtCellSize.Hint, "") << "of other animals";
}

TEST_F(Suggesting, Without_layers_it_does_nothing) {
    Map().RemoveLayers();
    Open();
    form.btnSuggest_Click();
    EXPECT_EQ(form.chkBnds.Value, 0);
}

TEST_F(Suggesting, The_last_settings_need_a_last_run) {
    Open();
    EXPECT_FALSE(form.btnLastSettings.Enabled);
    form.btnLastSettings_Click();
    EXPECT_EQ(form.txtStatus.Text, "");
}

TEST_F(Suggesting, The_last_settings_come_back) {
    Open();
    ChooseLayer("fixes");
    ChooseField("Animal");
    analysis::Settings last = settings_of(form);
    last.SelectedOnly = true;
    last.Method = analysis::BandwidthMethod::kLscv;
    last.Cells = analysis::cell_size_of("30");
    last.OutputFolder = "/out";
    last.Mode = analysis::ExtentMode::kMinimum;
    advice.Last = last;
    frmKDE next(Services(), geodata);
    next.Advice = &advice;
    next.Form_Load();
    EXPECT_TRUE(next.btnLastSettings.Enabled);
    EXPECT_EQ(next.cmbPntL.Text(), "other") << "only the button fills them in";
    EXPECT_EQ(next.txtCellSize.Text, "");
    next.btnLastSettings_Click();
    EXPECT_EQ(settings_of(next), last);
    EXPECT_EQ(next.txtStatus.Text, "Settings of the last run");
    last.LayerName = "gone";
    advice.Last = last;
    next.btnLastSettings_Click();
    EXPECT_EQ(next.cmbPntL.Text(), "fixes");
    EXPECT_EQ(next.txtStatus.Text, "Settings of the last run; its layer gone is not in the map");
}

TEST_F(Suggesting, A_file_without_settings_is_said_so) {
    Open();
    Load("Dear colleague,\r\nplease find attached\r\n[SILENT]");
    EXPECT_EQ(form.txtStatus.Text, "Settings loaded");
    EXPECT_EQ(form.Panel.Headline, "settings.txt holds no settings: nothing was changed.");
    EXPECT_TRUE(messages.Boxes().empty()) << "no box";
    Load("[SILENT]\r\nTRUE\r\n\r\n");
    EXPECT_EQ(form.Panel.Headline, "");
}

}  // namespace
}  // namespace wxl::kde_tool
