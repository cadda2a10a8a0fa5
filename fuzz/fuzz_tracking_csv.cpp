// Tracking tables of any bytes: read whole or refused with file and line, and timestamps that mean one second.

#include "adapters/files/tracking_csv.h"
#include "fuzz/fuzz_input.h"
#include "platform/text.h"
#include "tracking_times/timestamps.h"

#include <cmath>
#include <sstream>

namespace {

using namespace wxl;
using fuzz::require;

void check_fixes(const files::Tracking& tracking) {
    require(!tracking.Fixes.empty(), "fixes, or a refusal");
    for (std::size_t i = 1; i < tracking.Animals.size(); ++i)
        require(tracking.Animals[i - 1] < tracking.Animals[i], "animals ascend");
    for (const std::string& animal : tracking.Animals)
        require(!animal.empty() && animal.size() <= 254 && platform::IsUtf8(animal), "names that a table can hold");
    std::int64_t withoutTime = 0;
    for (std::size_t i = 0; i < tracking.Fixes.size(); ++i) {
        const files::TrackingFix& fix = tracking.Fixes[i];
        require(std::isfinite(fix.X) && std::isfinite(fix.Y), "finite positions");
        require(fix.Animal < tracking.Animals.size(), "an animal that is there");
        withoutTime += fix.HasTime() ? 0 : 1;
        if (fix.HasTime())
            require(
                tracking_times::seconds_from_timestamp(tracking_times::date_text(fix.Seconds) + " " +
                                                       tracking_times::time_of_day_text(fix.Seconds)) == fix.Seconds,
                "a time that reads back");
        if (i == 0 || tracking.Fixes[i - 1].Animal != fix.Animal) continue;
        const files::TrackingFix& before = tracking.Fixes[i - 1];
        require(before.HasTime() || !fix.HasTime(), "fixes without a time last");
        require(!fix.HasTime() || before.Seconds <= fix.Seconds, "times ascend");
    }
    require(withoutTime == tracking.WithoutTime, "fixes without a time counted");
}

/// Records that hold as many bytes as the file, whatever the cells.
void check_records(const std::string& bytes) {
    std::istringstream source(bytes);
    files::CsvReader reader(source, "f");
    std::int64_t line = 0;
    while (reader.Next()) {
        require(reader.Line() > line, "lines go up");
        line = reader.Line();
        require(!reader.Cells().empty(), "a record has a cell");
        require(reader.Position() <= bytes.size(), "no more bytes than there are");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzInput input(data, size);
    const auto choice = input.Take<std::uint8_t>();
    const std::string bytes = input.Rest();
    files::TrackingColumns wanted;
    if ((choice & 1U) != 0U) wanted.Id = "id";
    if ((choice & 2U) != 0U) wanted.X = "x", wanted.Y = "y";
    if ((choice & 4U) != 0U) wanted.Time = "time";
    fuzz::fault_of([&] { check_records(bytes); });
    const std::int32_t fault = fuzz::fault_of([&] {
        std::istringstream source(bytes);
        files::CsvReader reader(source, "f");
        check_fixes(files::read_tracking(reader, wanted));
    });
    require(fault == 0 || fault == platform::error_number::kTypeMismatch, "a refusal is a type mismatch");
    return 0;
}
