// Tracking tables of any bytes: read whole or refused with file and line, and timestamps that mean one second.

#include "adapters/tracking/tracking_file.h"
#include "fuzz/fuzz_input.h"
#include "platform/text.h"
#include "tracking_times/timestamps.h"

#include <cmath>
#include <sstream>

namespace {

using namespace wxl;
using fuzz::require;

void check_fixes(const tracking::Tracking& data) {
    for (std::size_t i = 1; i < data.Animals.size(); ++i)
        require(data.Animals[i - 1] < data.Animals[i], "animals ascend");
    for (const std::string& animal : data.Animals)
        require(!animal.empty() && animal.size() <= 254 && platform::IsUtf8(animal), "names that a table can hold");
    std::int64_t withoutTime = 0;
    for (std::size_t i = 0; i < data.Fixes.size(); ++i) {
        const tracking::TrackingFix& fix = data.Fixes[i];
        require(std::isfinite(fix.X) && std::isfinite(fix.Y), "finite positions");
        require(fix.Animal < data.Animals.size(), "an animal that is there");
        withoutTime += fix.HasTime() ? 0 : 1;
        if (fix.HasTime())
            require(
                tracking_times::seconds_from_timestamp(tracking_times::date_text(fix.Seconds) + " " +
                                                       tracking_times::time_of_day_text(fix.Seconds)) == fix.Seconds,
                "a time that reads back");
        if (i == 0 || data.Fixes[i - 1].Animal != fix.Animal) continue;
        const tracking::TrackingFix& before = data.Fixes[i - 1];
        require(before.HasTime() || !fix.HasTime(), "fixes without a time last");
        require(!fix.HasTime() || before.Seconds <= fix.Seconds, "times ascend");
    }
    require(withoutTime == data.Files.front().WithoutTime, "fixes without a time counted");
}

/// Records that hold as many bytes as the file, whatever the cells.
void check_records(const std::string& bytes) {
    std::istringstream source(bytes);
    tracking::CsvReader reader(source, "f");
    std::int64_t line = 0;
    while (reader.Next()) {
        require(reader.Line() > line, "lines go up");
        line = reader.Line();
        require(!reader.Cells().empty(), "a record has a cell");
        require(reader.Position() <= bytes.size(), "no more bytes than there are");
    }
}

/// Rows that can be read again, with as many values as there are columns.
void check_rows(tracking::Tracking& data) {
    std::vector<platform::FieldValue> values;
    for (const tracking::TrackingFix& fix : data.Fixes) {
        data.ReadRow(fix, values);
        require(values.size() == data.Others.size(), "a value for each column");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzInput input(data, size);
    const auto choice = input.Take<std::uint8_t>();
    const std::string bytes = input.Rest();
    tracking::ReadOptions options;
    if ((choice & 1U) != 0U) options.Columns.Id = "id";
    if ((choice & 2U) != 0U) options.Columns.X = "x", options.Columns.Y = "y";
    if ((choice & 4U) != 0U) options.Columns.Time = "time";
    if ((choice & 8U) != 0U) options.Unit = tracking::PositionUnit::kLengths;
    if ((choice & 16U) != 0U) options.Order = tracking::DateOrder::kDayMonthYear;
    fuzz::fault_of([&] { check_records(bytes); });
    const std::int32_t fault = fuzz::fault_of([&] {
        tracking::Tracking fixes(options);
        fixes.Add(std::make_unique<std::istringstream>(bytes), "f", "animal");
        fixes.Sort();
        check_fixes(fixes);
        check_rows(fixes);
    });
    require(fault == 0 || fault == platform::error_number::kTypeMismatch, "a refusal is a type mismatch");
    return 0;
}
