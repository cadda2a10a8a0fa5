#include "kde_tool/statistics_tables.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <numbers>

namespace wxl::kde_tool {
namespace {

using testing::ElementsAre;

analysis::AnimalFixes animal(platform::FieldValue id, std::string namingId, std::vector<platform::Point> fixes) {
    return {.Id = std::move(id), .NamingId = std::move(namingId), .Fixes = std::move(fixes)};
}

/// A line along x (y does not vary), a square, a diagonal, a single fix, three fixes at one place, none at all.
std::vector<analysis::AnimalFixes> animals() {
    return {animal(std::int64_t{1}, "1", {{0, 0}, {1, 0}, {2, 0}, {3, 0}}),
            animal(std::int64_t{2}, "2", {{0, 0}, {2, 0}, {2, 2}, {0, 2}}),
            animal(std::int64_t{3}, "3", {{0, 0}, {1, 1}, {2, 2}, {3, 3}}),
            animal(std::int64_t{4}, "4", {{5, 5}}),
            animal(std::int64_t{5}, "5", {{0.1, 0.1}, {0.1, 0.1}, {0.1, 0.1}}),
            animal(std::int64_t{6}, "6", {})};
}

// Walk around the square: leading x 0 2 2, trailing x 2 2 0, leading y 0 0 2, trailing y 0 2 2.
// xx = (-4/3)(2/3) + (2/3)(2/3) + (2/3)(-4/3) = -4/3 over 8/3 = -0.5; yy: (-2/3)(-4/3) + (-2/3)(2/3) + (4/3)(2/3)
// = 4/3 over 8/3 = 0.5; x with next y: (-4/3)(-4/3) + (2/3)(2/3) + (2/3)(2/3) = 8/3, so 1; y with next x:
// (-2/3)(2/3) + (-2/3)(2/3) + (4/3)(-4/3) = -8/3, so 1 as an absolute value. Sum 2.
TEST(IndependenceTable, Shows_both_indices_or_not_applicable) {
    const auto table = IndependenceTable(analysis::independence_rows(animals()), "Animal", false);
    EXPECT_THAT(table.Columns, ElementsAre("Animal", "Count", "Schoener", "Swihart_Slade"));
    EXPECT_THAT(table.Rows, ElementsAre(ElementsAre("1", "4", "0.6", "N/A"), ElementsAre("2", "4", "1.5", "2"),
                                        ElementsAre("3", "4", "0.6", "4"), ElementsAre("4", "1", "N/A", "N/A"),
                                        ElementsAre("5", "3", "N/A", "N/A"), ElementsAre("6", "0", "N/A", "N/A")));
}

TEST(IndependenceTable, Shows_the_naming_id_beside_a_text_id) {
    const std::vector<analysis::AnimalFixes> named = {animal("ann", "1", {{0, 0}}),
                                                      animal("bob", "2", {{0, 0}, {1, 1}})};
    const auto table = IndependenceTable(analysis::independence_rows(named), "Name", true);
    EXPECT_THAT(table.Columns, ElementsAre("Name", "Naming_ID", "Count", "Schoener", "Swihart_Slade"));
    EXPECT_THAT(table.Rows,
                ElementsAre(ElementsAre("ann", "1", "1", "N/A", "N/A"), ElementsAre("bob", "2", "2", "2", "N/A")));
}

TEST(IndependenceTable, Fits_the_indices_into_their_columns) {
    const std::vector<analysis::IndependenceRow> rows = {{.Id = std::int64_t{1},
                                                          .NamingId = "1",
                                                          .Count = 12230,
                                                          .Schoener = std::numbers::pi / 1000.0,
                                                          .SwihartSlade = -std::numbers::sqrt2}};
    const auto table = IndependenceTable(rows, "ID", false);
    EXPECT_THAT(table.Rows, ElementsAre(ElementsAre("1", "12230", "0.00314159", "-1.41421356")));
}

TEST(IndependenceCsv, Is_joined_by_commas_alone_and_quotes_nothing) {
    const std::vector<analysis::AnimalFixes> some = {animal(std::int64_t{1}, "1", {{0, 0}, {1, 0}, {2, 0}, {3, 0}}),
                                                     animal(std::int64_t{9}, "9", {{0, 0}})};
    EXPECT_EQ(IndependenceCsv(IndependenceTable(analysis::independence_rows(some), "ID", false)),
              "ID,Count,Schoener,Swihart_Slade\r\n1,4,0.6,N/A\r\n9,1,N/A,N/A\r\n");
    const std::vector<analysis::AnimalFixes> quoted = {animal("a \"b\"", "1", {{0, 0}, {2, 2}})};
    EXPECT_EQ(IndependenceCsv(IndependenceTable(analysis::independence_rows(quoted), "Name", true)),
              "Name,Count,Schoener,Swihart_Slade\r\na \"b\",1,2,2,N/A\r\n");
    const std::vector<analysis::AnimalFixes> named = {animal("Ada", "1", {{1900, 800}, {1500, 600}})};
    EXPECT_EQ(IndependenceCsv(IndependenceTable(analysis::independence_rows(named), "NAME", true)),
              "NAME,Count,Schoener,Swihart_Slade\r\nAda,1,2,2,N/A\r\n");
    EXPECT_EQ(IndependenceCsv(IndependenceTable({}, "ID", false)), "ID,Count,Schoener,Swihart_Slade\r\n");
    EXPECT_EQ(IndependenceCsv({}), "");
}

// Variance of 0 1 2 3 is 5/3; of the square's coordinates 4/3.
TEST(VarianceTable, Shows_standard_deviations_and_their_ratio) {
    const auto table = VarianceTable(analysis::variance_rows(animals()), "ID");
    EXPECT_THAT(table.Columns, ElementsAre("ID", "Count", "StdDev(x)", "StdDev(y)", "Ratio(x:y)"));
    EXPECT_THAT(table.Rows,
                ElementsAre(ElementsAre("1", "4", "1.29099444873581", "0", "N/A"),
                            ElementsAre("2", "4", "1.15470053837925", "1.15470053837925", "1"),
                            ElementsAre("3", "4", "1.29099444873581", "1.29099444873581", "1"),
                            ElementsAre("4", "1", "N/A", "N/A", "N/A"), ElementsAre("5", "3", "0", "0", "N/A"),
                            ElementsAre("6", "0", "N/A", "N/A", "N/A")));
}

// HREF of the line: sqrt((5/3 + 0) / 2) x 4^(-1/6); of the square: sqrt(4/3) x 4^(-1/6); of the diagonal:
// sqrt(5/3) x 4^(-1/6). Rescaled to unit variance it is 4^(-1/6) = 0.7937005259841.
TEST(HrefTable, Shows_the_reference_bandwidth_raw_and_of_the_unit_variance_sample) {
    const auto rows = analysis::href_rows(animals());
    EXPECT_NEAR(rows[0].Href.value(), 0.724546136642011, 1e-14);
    EXPECT_NEAR(rows[1].Href.value(), 0.916486424665735, 1e-14);
    EXPECT_NEAR(rows[2].Href.value(), 1.02466297300416, 1e-14);
    EXPECT_NEAR(rows[1].HrefScaled.value(), 0.7937005259841, 1e-14);
    EXPECT_NEAR(rows[2].HrefScaled.value(), 0.7937005259841, 1e-14);

    const auto table = HrefTable(rows, "ID");
    EXPECT_THAT(table.Columns, ElementsAre("ID", "Count", "href", "href (scaled)"));
    EXPECT_THAT(table.Rows[1], ElementsAre("2", "4", "0.916486424665735", "0.7937005259841"));
    EXPECT_THAT(table.Rows[0][3], "N/A");
    EXPECT_THAT(table.Rows[3], ElementsAre("4", "1", "N/A", "N/A"));
    EXPECT_THAT(table.Rows[4], ElementsAre("5", "3", "N/A", "N/A"));
    EXPECT_THAT(table.Rows[5], ElementsAre("6", "0", "N/A", "N/A"));
}

}  // namespace
}  // namespace wxl::kde_tool
