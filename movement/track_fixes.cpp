#include "movement/track_fixes.h"

#include "platform/text.h"

#include <algorithm>

namespace wxl::movement {

using namespace wxl::platform;

namespace {

/// The columns that the player reads; -1 where the table lacks one.
struct Columns {
    int Time1, Date, MePerSec, Dist;
};

Columns find_columns(const ITable& table) {
    const int date = table.FindField("Date");
    return {table.FindField("Time1"), date >= 0 ? date : table.FindField("Date_"), table.FindField("Me_Per_Sec"),
            table.FindField("Dist")};
}

FieldValue value_of(const IFeature& row, int column) {
    return column < 0 ? FieldValue() : row.Value(column);
}

std::string text_or_no_data(const FieldValue& value) {
    return IsMissing(value) ? "No data" : ValueText(value);
}

double number_or_zero(const FieldValue& value) {
    return ValueNumber(IsMissing(value) ? FieldValue("0") : value);
}

}  // namespace

std::vector<TrackFix> gather_fixes(IFeatureClass& features, ISelectionSet& selection) {
    const Columns columns = find_columns(features.Table());
    std::vector<TrackFix> fixes;
    const auto rows = selection.Find({});
    while (const auto row = rows->NextFeature()) {
        const Geometry shape = row->Shape();
        TrackFix fix;
        fix.FID = row->OID();
        if (!shape.IsNull()) fix.Location = shape.Location;
        fix.Time1 = value_of(*row, columns.Time1);
        fix.Date = value_of(*row, columns.Date);
        fix.MePerSec = value_of(*row, columns.MePerSec);
        fix.Dist = value_of(*row, columns.Dist);
        fixes.push_back(std::move(fix));
    }
    std::sort(fixes.begin(), fixes.end(), [](const TrackFix& a, const TrackFix& b) { return a.FID < b.FID; });
    return fixes;
}

std::string stats_text(const TrackFix& fix) {
    return "Meters per sec: " + NumberText(number_or_zero(fix.MePerSec)) +
           " Distance: " + NumberText(number_or_zero(fix.Dist));
}

std::string date_and_time_text(const TrackFix& fix) {
    return "Date: " + text_or_no_data(fix.Date) + " at " + text_or_no_data(fix.Time1);
}

std::int64_t last_fid(IFeatureCursor& cursor) {
    std::int64_t last = 0;
    while (const auto feature = cursor.NextFeature()) last = feature->OID();
    return last;
}

}  // namespace wxl::movement
