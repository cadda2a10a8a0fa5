// Tracking files in the layouts that people have, each imported as a user would, and every fix compared.

#include "adapters/gdal/gdal_support.h"
#include "adapters/gdal/projection.h"
#include "adapters/ogr/ogr_feature_class.h"
#include "platform/text.h"
#include "tests/support/places.h"
#include "tests/unit/cli/layer_files.h"
#include "tracking_times/timestamps.h"

#include <cmath>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <tuple>

namespace wxl::cli {
namespace {

using Json = nlohmann::json;

std::filesystem::path layouts() {
    return tests::SourceFile("tests/data/layouts");
}

/// A fix as it must be, or as it was imported.
struct Fix {
    std::string Animal;
    std::optional<std::int64_t> Seconds;
    platform::Point Place;
};

/// The fixes of all cases.
std::map<std::string, std::vector<Fix>> read_truth() {
    std::map<std::string, std::vector<Fix>> truth;
    std::ifstream source(layouts() / "truth.tsv");
    std::string line;
    std::getline(source, line);
    while (std::getline(source, line)) {
        const auto cells = platform::Split(line, '\t');
        truth[cells.at(0)].push_back({cells.at(1),
                                      tracking_times::seconds_from_timestamp(cells.at(2)),
                                      {std::stod(cells.at(3)), std::stod(cells.at(4))}});
    }
    return truth;
}

std::vector<Json> read_cases() {
    std::ifstream source(layouts() / "expected.json");
    return Json::parse(source).get<std::vector<Json>>();
}

/// The fixes of a layer, their places in another coordinate system.
std::vector<Fix> read_fixes(const std::string& layer, const std::string& system) {
    const auto points = files::OgrFeatureClass::Open(layer);
    const int animal = points->Table().FindField("animal");
    const int time = points->Table().FindField("Time2");
    std::vector<Fix> fixes;
    std::vector<platform::Point> places;
    const auto cursor = points->Find({});
    while (const auto feature = cursor->NextFeature()) {
        Fix fix{platform::ValueText(feature->Value(animal)), std::nullopt, {}};
        const auto seconds = time < 0 ? platform::FieldValue() : feature->Value(time);
        if (!platform::IsMissing(seconds)) fix.Seconds = static_cast<std::int64_t>(platform::ValueNumber(seconds));
        fixes.push_back(fix);
        places.push_back(feature->Shape().Location);
    }
    EXPECT_FALSE(files::project(places, points->Reference(), files::ReferenceFromText(system)));
    for (std::size_t i = 0; i < fixes.size(); ++i) fixes[i].Place = places[i];
    return fixes;
}

bool is_same(const Fix& wanted, const Fix& found, double tolerance) {
    const bool time = wanted.Seconds.has_value() == found.Seconds.has_value() &&
                      (!wanted.Seconds || std::abs(*wanted.Seconds - *found.Seconds) <= 1);
    return time && std::abs(wanted.Place.X - found.Place.X) <= tolerance &&
           std::abs(wanted.Place.Y - found.Place.Y) <= tolerance;
}

/// Sum of the numbers in the line of the rows that were left out.
std::int64_t left_out(const std::string& messages) {
    const std::size_t start = messages.find("rows left out:");
    std::int64_t sum = 0;
    std::int64_t number = 0;
    for (std::size_t i = start; i < messages.size() && messages[i] != '\n'; ++i) {
        const bool digit = messages[i] >= '0' && messages[i] <= '9';
        if (!digit) sum += std::exchange(number, 0);
        if (digit) number = number * 10 + (messages[i] - '0');
    }
    return sum + number;
}

class Layouts : public testing::TestWithParam<std::tuple<Json, const char*>> {
protected:
    const Json& Case() const { return std::get<0>(GetParam()); }

    void ExpectRefusal(const Ran& ran, const std::string& named) const {
        EXPECT_NE(ran.Code, 0);
        EXPECT_EQ(ran.Out, "");
        EXPECT_NE(ran.Err.find(named), std::string::npos) << ran.Err;
    }

    /// Another column may tell the animals apart as well.
    std::string NameOf(const Fix& found) const {
        if (Case().value("any_name", false)) return Case()["animals"].begin().key();
        return Case().contains("aliases") ? Case()["aliases"].value(found.Animal, found.Animal) : found.Animal;
    }

    void ExpectFixes(std::vector<Fix> found) const {
        const double tolerance = Case()["crs_units"] == "degrees" ? 1e-6 : 0.02;
        EXPECT_EQ(found.size(), Case()["fixes"].get<std::size_t>());
        static const auto truth = read_truth();
        for (const Fix& wanted : truth.at(Case()["case"].get<std::string>())) {
            const auto match = std::find_if(found.begin(), found.end(), [&](const Fix& fix) {
                return NameOf(fix) == wanted.Animal && is_same(wanted, fix, tolerance);
            });
            ASSERT_NE(match, found.end()) << wanted.Animal << " at " << wanted.Place.X << ", " << wanted.Place.Y;
            found.erase(match);
        }
    }
};

TEST_P(Layouts, Come_in_as_they_are) {
    const tests::ScratchFolder folder;
    const std::string out = (folder / (std::string("out") + std::get<1>(GetParam()))).string();
    std::vector<std::string> call{"import", (layouts() / Case()["file"].get<std::string>()).string(), out};
    for (const auto& option : Case()["options"]) call.push_back(option.get<std::string>());
    const Ran ran = run_wxl(call);
    if (Case()["outcome"] == "refuse") {
        ExpectRefusal(ran, Case()["refuse_names"]);
        EXPECT_TRUE(names_in(folder.Path()).empty());
        return;
    }
    ASSERT_EQ(ran.Code, 0) << ran.Err;
    ExpectFixes(read_fixes(out, Case()["truth_crs"]));
    std::int64_t rows = 0;
    for (const auto& count : Case()["left_out"]) rows += count.get<std::int64_t>();
    EXPECT_EQ(left_out(ran.Err), rows) << ran.Err;
}

std::string case_name(const testing::TestParamInfo<Layouts::ParamType>& info) {
    std::string name;
    for (const char c : std::get<0>(info.param)["case"].get<std::string>() + std::get<1>(info.param))
        name += std::isalnum(static_cast<unsigned char>(c)) != 0 ? c : '_';
    return name;
}

INSTANTIATE_TEST_SUITE_P(Import, Layouts,
                         testing::Combine(testing::ValuesIn(read_cases()), testing::Values(".gpkg", ".shp")),
                         case_name);

}  // namespace
}  // namespace wxl::cli
