#include "form_fixture.h"
#include "kde_tool/form_choices.h"

#include <gmock/gmock.h>

namespace wxl::kde_tool {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

template <class Set>
FormChoices given(Set&& set) {
    FormChoices choices;
    set(choices);
    return choices;
}

class GivenChoices : public FormTest {
protected:
    /// Animal 12 walks along a line of four fixes 1000 apart: HREF is sqrt(5/3) x 1000 x 4^(-1/6) = 1024.66...
    GivenChoices() {
        auto& points = AddPoints("fixes");
        for (const double place : {0.0, 1000.0, 2000.0, 3000.0}) points.AddPoint(place, place, {std::int64_t{12}, 1.0});
        AddRaster("dem");
        Open();
        ChooseField("Animal");
    }

    std::string BufferFor(const FormChoices& choices, const std::optional<std::string>& buffer = std::nullopt) {
        kde_tool::Choose(choices, form);
        TurnPages(choices, buffer, form);
        return form.txtBuffer.Text;
    }
};

TEST_F(GivenChoices, Nothing_given_changes_nothing) {
    const std::string before = Save();
    kde_tool::Choose({}, form);
    EXPECT_EQ(Save(), before);
    EXPECT_EQ(form.RasterFormat, "GRID");
}

TEST_F(GivenChoices, Kernel_and_texts_are_set) {
    kde_tool::Choose(given([](auto& c) {
                         c.Prefix = "ud";
                         c.CellSize = "30";
                         c.Scaling = "1000";
                         c.Adaptive = true;
                         c.Rescale = true;
                         c.VerboseLog = true;
                         c.Html = true;
                         c.RasterFormat = "GTiff";
                     }),
                     form);
    EXPECT_EQ(form.txtR.Text, "ud");
    EXPECT_EQ(form.txtCellSize.Text, "30");
    EXPECT_EQ(form.txtScaling.Text, "1000");
    EXPECT_TRUE(form.optAdaptive.Value);
    EXPECT_FALSE(form.optFixed.Value);
    EXPECT_EQ(form.chkRescale.Value, 1);
    EXPECT_EQ(form.chkVerbose.Value, 1);
    EXPECT_EQ(form.chkHtml.Value, 1);
    EXPECT_EQ(form.RasterFormat, "GTiff");
}

TEST_F(GivenChoices, Every_bandwidth_has_its_button) {
    const auto choose = [&](const std::string& text) {
        kde_tool::Choose(given([&](auto& c) { c.Bandwidth = text; }), form);
    };
    choose("lscv");
    EXPECT_TRUE(form.optBE_LSCV.Value);
    choose("bcv");
    EXPECT_TRUE(form.optBE_BCV.Value);
    choose("href");
    EXPECT_TRUE(form.optBE_HREF.Value);
    choose("prop:0.5,1");
    EXPECT_TRUE(form.optPropHref.Value);
    EXPECT_EQ(form.txtPropHref.Text, "0.5,1");
    choose("250,500");
    EXPECT_TRUE(form.optBE_MANUAL.Value);
    EXPECT_EQ(form.txtBW.Text, "250,500");
    EXPECT_FALSE(form.optPropHref.Value);
}

TEST_F(GivenChoices, A_kind_of_isopleths_switches_isopleths_on) {
    kde_tool::Choose(given([](auto& c) { c.Donuts = true; }), form);
    EXPECT_EQ(form.chkBnds.Value, 1);
    EXPECT_EQ(form.chkDonuts.Value, 1);
    EXPECT_EQ(form.chkLines.Value, 0);
    kde_tool::Choose(given([](auto& c) {
                         c.Isopleths = "95,50";
                         c.Lines = true;
                         c.Polygons = true;
                     }),
                     form);
    EXPECT_EQ(form.txtBnds.Text, "95,50");
    EXPECT_EQ(form.chkLines.Value, 1);
    EXPECT_EQ(form.chkPolys.Value, 1);
}

TEST_F(GivenChoices, Every_extent_has_its_button) {
    kde_tool::Choose(given([](auto& c) { c.Extent = "min"; }), form);
    EXPECT_TRUE(form.optSmall.Value);
    kde_tool::Choose(given([](auto& c) { c.Extent = "ref:dem"; }), form);
    EXPECT_TRUE(form.optExtRef.Value);
    EXPECT_EQ(form.cmbExtRef.Text(), "dem");
    kde_tool::Choose(given([](auto& c) { c.Extent = "full:500"; }), form);
    EXPECT_TRUE(form.optFull.Value);
}

TEST_F(GivenChoices, The_buffer_suits_the_widest_bandwidth) {
    EXPECT_EQ(BufferFor(given([](auto& c) { c.Bandwidth = "href"; })), "3586");
    EXPECT_EQ(BufferFor(given([](auto& c) { c.Bandwidth = "100"; })), "3586");
    EXPECT_EQ(BufferFor(given([](auto& c) { c.Bandwidth = "100,2000"; })), "7000");
    EXPECT_EQ(BufferFor(given([](auto& c) { c.Bandwidth = "prop:0.5,2"; })), "7173");
    EXPECT_EQ(BufferFor(given([](auto& c) { c.Bandwidth = "100,2000"; }), "12"), "12");
}

TEST_F(GivenChoices, Independence_is_calculated_when_asked) {
    TurnPages({}, std::nullopt, form);
    EXPECT_THAT(form.datagridIO.Rows, IsEmpty());
    TurnPages(given([](auto& c) { c.Independence = true; }), std::nullopt, form);
    EXPECT_THAT(form.datagridIO.Rows, SizeIs(1));
}

TEST(FormChoicesText, A_buffer_is_given_with_the_full_extent_alone) {
    EXPECT_EQ(GivenBuffer("full:250"), "250");
    EXPECT_EQ(GivenBuffer("full"), std::nullopt);
    EXPECT_EQ(GivenBuffer("min"), std::nullopt);
    EXPECT_EQ(GivenBuffer(std::nullopt), std::nullopt);
}

TEST(FormChoicesText, Positive_numbers) {
    EXPECT_TRUE(IsPositiveNumber("0.5"));
    for (const char* text : {"0", "-1", "", "abc"}) EXPECT_FALSE(IsPositiveNumber(text)) << text;
}

}  // namespace
}  // namespace wxl::kde_tool
