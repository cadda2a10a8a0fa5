#include "analysis/settings_text.h"
#include "form_fixture.h"
#include "kde_tool/form_settings.h"

#include <gmock/gmock.h>

namespace wxl::kde_tool {
namespace {

using analysis::BandwidthMethod;
using analysis::ExtentMode;
using analysis::Settings;
using testing::IsEmpty;
using testing::SizeIs;

class FormSettings : public FormTest {
protected:
    /// Animal 12 walks along a line of four fixes 1000 apart: HREF is sqrt(5/3) x 1000 x 4^(-1/6) = 1024.66...
    FormSettings() {
        auto& points = AddPoints("fixes");
        for (const double place : {0.0, 1000.0, 2000.0, 3000.0}) points.AddPoint(place, place, {std::int64_t{12}, 1.0});
        AddRaster("dem");
        Open();
        ChooseField("Animal");
    }

    /// Fills the form with what it holds but for this change.
    template <class Change>
    void FillWith(Change&& change) {
        Settings settings = settings_of(form);
        change(settings);
        fill(form, settings);
    }

    void FillBandwidth(const std::string& word) {
        FillWith([&](Settings& settings) {
            const analysis::BandwidthChoice choice = analysis::bandwidth_of(word);
            settings.Method = choice.Method;
            if (choice.Method == BandwidthMethod::kManual) settings.Bandwidths = choice.Values;
            if (choice.Method == BandwidthMethod::kProportion) settings.Proportions = choice.Values;
        });
    }

    std::string BufferFor(const std::string& word, const std::optional<analysis::TypedNumber>& buffer = std::nullopt) {
        FillBandwidth(word);
        turn_pages(form, false, buffer);
        return form.txtBuffer.Text;
    }
};

TEST_F(FormSettings, A_form_filled_with_what_it_holds_stays_as_it_is) {
    const std::string before = Save();
    const Settings settings = settings_of(form);
    fill(form, settings);
    EXPECT_EQ(Save(), before);
    EXPECT_EQ(settings_of(form), settings);
}

TEST_F(FormSettings, What_is_filled_in_comes_out_again) {
    Settings settings = settings_of(form);
    settings.Where = "Sex = 'f'";
    settings.Rescale = settings.Verbose = settings.Silent = settings.Html = true;
    settings.FixedKernel = false;
    settings.Method = BandwidthMethod::kProportion;
    settings.Bandwidths = analysis::typed_numbers("250,500");
    settings.Proportions = analysis::typed_numbers("0.5, 1");
    settings.KernelReach = *analysis::reach_of("whole");
    settings.OutputFolder = "/data/out";
    settings.Prefix = "ud";
    settings.Cells = analysis::cell_size_of("30.4");
    settings.ScalingFactor = analysis::typed_number("1000");
    settings.Mode = ExtentMode::kReference;
    settings.Buffer = analysis::typed_number("17");
    settings.ReferenceName = "dem";
    settings.Isopleths = settings.Lines = settings.Donuts = true;
    settings.Percentages = analysis::typed_numbers("95,50");
    settings.RasterFormat = "GTiff";
    settings.AnimalsPerSubfolder = 7;
    fill(form, settings);
    EXPECT_EQ(settings_of(form), settings);
    EXPECT_TRUE(form.optExtRef.Value);
    EXPECT_FALSE(form.optFull.Value);
    EXPECT_FALSE(form.txtBuffer.Enabled);
}

TEST_F(FormSettings, Every_bandwidth_has_its_button) {
    FillBandwidth("lscv");
    EXPECT_TRUE(form.optBE_LSCV.Value);
    FillBandwidth("bcv");
    EXPECT_TRUE(form.optBE_BCV.Value);
    FillBandwidth("href");
    EXPECT_TRUE(form.optBE_HREF.Value);
    FillBandwidth("prop:0.5,1");
    EXPECT_TRUE(form.optPropHref.Value);
    EXPECT_EQ(form.txtPropHref.Text, "0.5,1");
    FillBandwidth("250,500");
    EXPECT_TRUE(form.optBE_MANUAL.Value);
    EXPECT_EQ(form.txtBW.Text, "250,500");
    EXPECT_FALSE(form.optPropHref.Value);
}

TEST_F(FormSettings, Every_extent_has_its_button) {
    FillWith([](Settings& settings) { settings.Mode = ExtentMode::kMinimum; });
    EXPECT_TRUE(form.optSmall.Value);
    FillWith([](Settings& settings) { settings.Mode = ExtentMode::kFull; });
    EXPECT_TRUE(form.optFull.Value);
    EXPECT_FALSE(form.optSmall.Value);
}

TEST_F(FormSettings, A_long_prefix_is_cut_with_the_forms_warning) {
    FillWith([](Settings& settings) { settings.Prefix = "longname"; });
    EXPECT_EQ(settings_of(form).Prefix, "longna");
}

TEST_F(FormSettings, The_buffer_suits_the_widest_bandwidth) {
    EXPECT_EQ(BufferFor("href"), "3586");
    EXPECT_EQ(BufferFor("100"), "3586");
    EXPECT_EQ(BufferFor("100,2000"), "7000");
    EXPECT_EQ(BufferFor("prop:0.5,2"), "7173");
    EXPECT_EQ(BufferFor("100,2000", analysis::typed_number("12")), "12");
}

TEST_F(FormSettings, Independence_is_calculated_when_asked) {
    turn_pages(form, false, std::nullopt);
    EXPECT_THAT(form.datagridIO.Rows, IsEmpty());
    turn_pages(form, true, std::nullopt);
    EXPECT_THAT(form.datagridIO.Rows, SizeIs(1));
}

}  // namespace
}  // namespace wxl::kde_tool
