// The plot of a bandwidth search on the form's page "Bandwidth".

#include "tests/unit/kde_tool/form_fixture.h"

#include <cmath>
#include <random>

namespace wxl::kde_tool {
namespace {

const std::string kChooseSearch = "Choose LSCV or BCV: the scores of the search are plotted here.";
const std::string kChooseLayer = "Choose a point layer and its ID field: the scores of the search are plotted here.";

/// Animal 1: the corners of a square of side 2. Animal 2: of side 20. Animal 3: a single fix.
class FormProfileTest : public FormTest {
protected:
    FormProfileTest() {
        memory::MemoryFeatureClass& points = AddPoints("wolves");
        for (const double side : {2.0, 20.0})
            for (const auto& [x, y] :
                 {std::pair{0.0, 0.0}, std::pair{1.0, 0.0}, std::pair{0.0, 1.0}, std::pair{1.0, 1.0}})
                points.AddPoint(side * x, side * y, {std::int64_t{side == 2.0 ? 1 : 2}, 5.0});
        points.AddPoint(0.0, 0.0, {std::int64_t{3}, 5.0});
        Open();
        ChooseField("Animal");
    }

    void ChooseRow(int row) {
        form.datagridHref.CurrentRow = row;
        form.datagridHref_Click();
    }
};

TEST_F(FormProfileTest, Other_bandwidths_have_no_search_to_plot) {
    GoToPage(2);
    EXPECT_EQ(form.plotProfile.Hint, kChooseSearch);
    Choose(form.optBE_LSCV, &frmKDE::optBE_LSCV_Click);
    EXPECT_EQ(form.plotProfile.Hint, "");
    Choose(form.optPropHref, &frmKDE::optPropHref_Click);
    EXPECT_EQ(form.plotProfile.Hint, kChooseSearch);
}

// Both variances are 4/3: HREF = sqrt(4/3) x 4^(-1/6) = 0.916486424665735. The range is 0.05 to 2 times that in 200
// steps, and one row more at its end.
TEST_F(FormProfileTest, First_animal_is_plotted_when_a_search_is_chosen) {
    GoToPage(2);
    EXPECT_EQ(form.datagridHref.CurrentRow, 0);
    Choose(form.optBE_LSCV, &frmKDE::optBE_LSCV_Click);
    const pictures::ProfilePicture& picture = form.plotProfile.Picture;
    EXPECT_EQ(picture.Title, "1");
    EXPECT_EQ(picture.Method, "LSCV");
    ASSERT_TRUE(picture.Href.has_value());
    EXPECT_NEAR(*picture.Href, 0.916486424665735, 1e-14);
    ASSERT_GE(picture.Curve.size(), 201U);
    EXPECT_NEAR(picture.Curve.front().Bandwidth, 0.05 * 0.916486424665735, 1e-14);
    EXPECT_NEAR(picture.Curve.back().Bandwidth, 2.0 * 0.916486424665735, 1e-12);
    EXPECT_TRUE(picture.Minimum.has_value());
    EXPECT_TRUE(picture.Bandwidth.has_value());
}

TEST_F(FormProfileTest, Animal_is_chosen_by_the_row_of_its_reference_bandwidth) {
    GoToPage(2);
    Choose(form.optBE_BCV, &frmKDE::optBE_BCV_Click);
    ChooseRow(1);
    EXPECT_EQ(form.plotProfile.Picture.Title, "2");
    EXPECT_EQ(form.plotProfile.Picture.Method, "BCV");
    EXPECT_NEAR(form.plotProfile.Picture.Href.value(), 9.16486424665735, 1e-13);
}

TEST_F(FormProfileTest, Animal_without_a_search_is_named) {
    GoToPage(2);
    Choose(form.optBE_LSCV, &frmKDE::optBE_LSCV_Click);
    ChooseRow(2);
    EXPECT_EQ(form.plotProfile.Hint, "The fixes of 3 are too few or have no spread for a search.");
    EXPECT_EQ(messages.Boxes().size(), 0U);
}

TEST_F(FormProfileTest, Chosen_row_stays_chosen_when_the_page_is_left_and_entered) {
    GoToPage(2);
    Choose(form.optBE_LSCV, &frmKDE::optBE_LSCV_Click);
    ChooseRow(1);
    GoToPage(1);
    GoToPage(2);
    EXPECT_EQ(form.datagridHref.CurrentRow, 1);
    EXPECT_EQ(form.plotProfile.Picture.Title, "2");
}

TEST_F(FormProfileTest, Nothing_is_searched_while_the_page_is_out_of_sight) {
    Choose(form.optBE_LSCV, &frmKDE::optBE_LSCV_Click);
    GoToPage(1);
    EXPECT_TRUE(form.plotProfile.Picture.Curve.empty());
    GoToPage(2);
    EXPECT_FALSE(form.plotProfile.Picture.Curve.empty());
}

TEST_F(FormProfileTest, Rescaled_search_is_in_units_of_the_variance) {
    form.chkRescale.Value = 1;
    GoToPage(2);
    Choose(form.optBE_LSCV, &frmKDE::optBE_LSCV_Click);
    EXPECT_EQ(form.plotProfile.Picture.Units, "unit variance");
    EXPECT_NEAR(form.plotProfile.Picture.Href.value(), std::pow(4.0, -1.0 / 6.0), 1e-14);
}

TEST_F(FormProfileTest, Another_ID_field_clears_the_plot) {
    GoToPage(2);
    Choose(form.optBE_LSCV, &frmKDE::optBE_LSCV_Click);
    ChooseField("Age");
    EXPECT_EQ(form.plotProfile.Hint, kChooseLayer);
    EXPECT_TRUE(form.plotProfile.Picture.Curve.empty());
}

// The search of 40,000 scattered fixes takes several turns of the host; in the first one another row is chosen.
TEST_F(FormProfileTest, Row_chosen_during_a_search_is_plotted_next) {
    memory::MemoryFeatureClass& points = AddPoints("many");
    std::mt19937 random(3);
    const auto coordinate = [&] { return static_cast<double>(random() % 100'000U); };
    for (int i = 0; i < 40'000; ++i) points.AddPoint(coordinate(), coordinate(), {std::int64_t{7}, 5.0});
    points.AddPoint(0.0, 0.0, {std::int64_t{8}, 5.0});
    points.AddPoint(1.0, 1.0, {std::int64_t{8}, 5.0});
    Open();
    ChooseLayer("many");
    ChooseField("Animal");
    GoToPage(2);
    host.SetOnYield([&] {
        if (form.datagridHref.CurrentRow == 0) ChooseRow(1);
    });
    Choose(form.optBE_LSCV, &frmKDE::optBE_LSCV_Click);
    EXPECT_EQ(form.plotProfile.Picture.Title, "8");
}

TEST_F(FormProfileTest, Animal_that_left_the_layer_is_told) {
    GoToPage(2);
    Choose(form.optBE_LSCV, &frmKDE::optBE_LSCV_Click);
    Map().RemoveLayers();
    ChooseRow(1);
    EXPECT_NE(form.plotProfile.Hint, "");
    EXPECT_TRUE(form.plotProfile.Picture.Curve.empty());
    EXPECT_EQ(messages.Boxes().size(), 0U);
}

}  // namespace
}  // namespace wxl::kde_tool
