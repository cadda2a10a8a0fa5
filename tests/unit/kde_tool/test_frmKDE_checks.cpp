#include "form_fixture.h"

#include <gmock/gmock.h>

namespace wxl::kde_tool {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

MATCHER_P2(Says, control, text, "") {
    return arg.Control == control && arg.Text == text;
}

struct Advice final : IFormAdvice {
    std::optional<std::size_t> AnimalField(const std::vector<std::string>&) const override { return std::nullopt; }
    std::optional<analysis::Settings> LastSettings() const override { return std::nullopt; }
    bool CanWrite(const std::filesystem::path& folder) const override { return folder != "/locked"; }
};

/// Animal 12 walks along a line of four fixes 1000 apart: HREF is 1024.66.
class CheckedFields : public FormTest {
protected:
    CheckedFields() {
        auto& points = AddPoints("fixes");
        for (const double place : {0.0, 1000.0, 2000.0, 3000.0}) points.AddPoint(place, place, {std::int64_t{12}, 1.0});
        form.Advice = &advice;
        Open();
    }

    Advice advice;
};

TEST_F(CheckedFields, Nothing_is_said_of_empty_fields_before_OK) {
    form.CheckFields();
    EXPECT_THAT(form.Problems, IsEmpty());
    EXPECT_EQ(form.lblBuffer.Caption, "2000 on every side");
}

TEST_F(CheckedFields, Empty_fields_are_told_in_the_order_of_the_pages_once_OK_was_pressed) {
    form.SSTab1.Current = 3;
    form.FocusOnFirstProblem();
    EXPECT_THAT(form.Problems, ElementsAre(Says("cmbUIDFLD", "Choose the field that names the animals."),
                                           Says("txtOutFolder", "Choose an output folder."),
                                           Says("txtCellSize", "Type a cell size in map units.")));
    EXPECT_EQ(form.FocusOn, "cmbUIDFLD");
    EXPECT_EQ(form.SSTab1.Current, 0);
    ChooseField("Animal");
    form.SetOutputFolder("/out");
    form.FocusOnFirstProblem();
    EXPECT_EQ(form.FocusOn, "txtCellSize");
    EXPECT_EQ(form.SSTab1.Current, 3);
    form.txtCellSize.Text = "50";
    form.FocusOn.clear();
    form.FocusOnFirstProblem();
    EXPECT_EQ(form.FocusOn, "");
    EXPECT_THAT(messages.Boxes(), IsEmpty()) << "the run has the boxes";
}

TEST_F(CheckedFields, Folders_must_be_there_and_take_files) {
    form.SetOutputFolder("/gone");
    form.CheckFields();
    EXPECT_THAT(form.Problems, ElementsAre(Says("txtOutFolder", "This folder does not exist.")));
    Disk().AddFolder("/locked");
    form.SetOutputFolder("/locked");
    form.CheckFields();
    EXPECT_THAT(form.Problems,
                ElementsAre(Says("txtOutFolder", "You cannot write into this folder. Choose another one.")));
    form.SetOutputFolder("/out");
    form.CheckFields();
    EXPECT_THAT(form.Problems, IsEmpty());
}

TEST_F(CheckedFields, Cells_are_compared_with_the_bandwidths_that_the_pages_show) {
    form.txtCellSize.Text = "1025";
    form.CheckFields();
    EXPECT_THAT(form.Problems, IsEmpty()) << "no field is chosen yet";
    ChooseField("Animal");
    GoToPage(3);
    form.CheckFields();
    EXPECT_EQ(form.ProblemOf("txtCellSize"),
              "Cells must not be larger than the bandwidth, and the smallest is 1024.66.");
    EXPECT_EQ(form.ProblemOf("txtBW"), "");
    form.txtCellSize.Text = "1024";
    form.CheckFields();
    EXPECT_EQ(form.ProblemOf("txtCellSize"), "");
    form.txtCellSize.Text = "1025";
    ChooseField("Age");
    form.CheckFields();
    EXPECT_EQ(form.ProblemOf("txtCellSize"), "") << "of other animals";
}

// 3.5 x 1024.66 = 3586.3.
TEST_F(CheckedFields, The_buffer_that_a_run_will_use_is_shown) {
    ChooseField("Animal");
    GoToPage(3);
    form.CheckFields();
    EXPECT_EQ(form.lblBuffer.Caption, "3586 on every side");
    form.txtBuffer.Text = "500";
    form.CheckFields();
    EXPECT_EQ(form.lblBuffer.Caption,
              "500 on every side; OK asks whether to use 3586 instead, 3.5 times the widest bandwidth");
    form.txtBuffer.Text = "x";
    form.CheckFields();
    EXPECT_EQ(form.lblBuffer.Caption, "");
    EXPECT_EQ(form.ProblemOf("txtBuffer"), "\"x\" is not a number.");
    form.optSmall.Value = true;
    form.optSmall_Click();
    form.CheckFields();
    EXPECT_EQ(form.lblBuffer.Caption, "");
    EXPECT_EQ(form.ProblemOf("txtBuffer"), "");
}

}  // namespace
}  // namespace wxl::kde_tool
