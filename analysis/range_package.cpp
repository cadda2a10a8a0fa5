#include "analysis/range_package.h"

#include "analysis/animal_run.h"
#include "analysis/range_styles.h"
#include "analysis/range_tables.h"
#include "analysis/summary_rows.h"
#include "platform/boxes.h"
#include "platform/text.h"
#include "tracking_times/timestamps.h"

#include <algorithm>
#include <array>

namespace wxl::analysis {
namespace {

using platform::FieldValue;
using platform::Geometry;
using platform::PackageTable;
using platform::ShapeType;

constexpr std::size_t kIsopleths = 0;
constexpr std::size_t kFixes = 1;
constexpr std::size_t kSummary = 2;
constexpr std::size_t kConvexPolygons = 3;

PackageTable isopleth_table() {
    return {"isopleths",
            ShapeType::kPolygon,
            {text_column("animal"), number_column("percent"), number_column("area_m2"), number_column("area_ha"),
             number_column("bandwidth"), text_column("method"), whole_column("n"), text_column("first"),
             text_column("last"), whole_column("parts"), text_column("raster")},
            10,
            isopleth_style()};
}

PackageTable fix_table() {
    return {"fixes", ShapeType::kPoint, {text_column("animal"), whole_column("fix")}, 0, fix_style()};
}

PackageTable summary_table() {
    return {"summary",
            ShapeType::kNull,
            {text_column("animal"),       whole_column("n"),
             text_column("first"),        text_column("last"),
             number_column("days"),       whole_column("distinct_days"),
             number_column("median_s"),   number_column("q1_s"),
             number_column("q3_s"),       number_column("iqr_s"),
             whole_column("equal_times"), text_column("method"),
             number_column("bandwidth"),  number_column("href"),
             text_column("minimised"),    number_column("cell_size"),
             number_column("volume"),     text_column("edge_warning"),
             number_column("schoener"),   number_column("swihart_slade"),
             text_column("reason"),       text_column("raster"),
             whole_column("status")},
            21};
}

FieldValue instant(const std::optional<std::int64_t>& seconds) {
    return seconds ? FieldValue(tracking_times::instant_text(*seconds)) : FieldValue();
}

FieldValue yes_no(bool value) {
    return std::string(value ? "yes" : "no");
}

std::vector<const IsoplethRecord*> largest_first(const AnimalRecord& record) {
    std::vector<const IsoplethRecord*> order;
    for (const IsoplethRecord& isopleth : record.Isopleths)
        if (!isopleth.Shape.IsNull()) order.push_back(&isopleth);
    std::ranges::stable_sort(order, [](const auto* a, const auto* b) { return a->Percent > b->Percent; });
    return order;
}

void put_fixes(const GroupedFixes& animals, platform::IPackageWriter& package) {
    std::array<FieldValue, 2> cells;
    for (const AnimalFixes& animal : animals.Animals) {
        const FieldValue id = utf8_cell(platform::ValueText(animal.Id));
        package.Drop(kFixes, std::get<std::string>(id));
        cells[0] = id;
        for (std::size_t i = 0; i < animal.Fixes.size(); ++i) {
            cells[1] = static_cast<std::int64_t>(i + 1);
            package.Put(kFixes, Geometry::OfPoint(animal.Fixes[i]), cells);
        }
    }
}

/// A polygon as a shape; none where it has no area.
Geometry shape_of(const comparison::MinimumConvexPolygon& polygon) {
    if (polygon.Status != comparison::PolygonStatus::kGood) return {};
    std::vector<platform::Point> ring(polygon.Corners.rbegin(), polygon.Corners.rend());
    ring.push_back(ring.front());
    return {ShapeType::kPolygon, {}, {std::move(ring)}};
}

/// What tables tell of the rasters that the record's replaces.
void drop_rows(const AnimalRecord& record, const std::string& prefix, platform::IPackageWriter& package) {
    for (const std::size_t table : {kIsopleths, kSummary})
        for (const std::string& raster : {raster_place(record), plain_raster_place(record, prefix)})
            package.Drop(table, raster);
}

void put_summary(const AnimalRecord& record, platform::IPackageWriter& package) {
    const std::string raster = raster_place(record);
    const tracking_times::TimeFacts& times = record.Times;
    const auto interval = [&](auto value) {
        return times.Intervals ? FieldValue(value(*times.Intervals)) : FieldValue();
    };
    const bool done = record.Status == 0;
    const std::vector<FieldValue> cells = {
        utf8_cell(platform::ValueText(record.Id)),
        std::int64_t{record.SampleSize},
        instant(times.First),
        instant(times.Last),
        times.First ? FieldValue(times.Days) : FieldValue(),
        cell_of(times.DaysWithFix),
        interval([](const auto& quartiles) { return quartiles.Median; }),
        interval([](const auto& quartiles) { return quartiles.Lower; }),
        interval([](const auto& quartiles) { return quartiles.Upper; }),
        interval([](const auto& quartiles) { return quartiles.Range(); }),
        cell_of(times.EqualTimes),
        std::string(method_name(record.Method)),
        record.BandwidthMapUnits > 0.0 ? FieldValue(record.BandwidthMapUnits) : FieldValue(),
        cell_of(href_in_map_units(record)),
        is_search(record.Method) ? yes_no(record.Minimized) : FieldValue(),
        record.Grid.CellSize,
        done ? FieldValue(record.Volume) : FieldValue(),
        record.MaxEdgeValue ? yes_no(record.EdgeWarning) : FieldValue(),
        cell_of(record.Schoener),
        cell_of(record.SwihartSlade),
        utf8_cell(record.Reason),
        utf8_cell(raster),
        std::int64_t{record.Status}};
    package.Put(kSummary, {}, cells);
}

}  // namespace

std::vector<PackageTable> package_tables() {
    return {isopleth_table(), fix_table(), summary_table()};
}

void RangePackage::RunBegins(const RunFrame& frame, const GroupedFixes& animals) {
    m_written.clear();
    m_failed = false;
    m_package.Forget();
    if (!frame.Wanted.GeoPackage) return;
    m_reference = frame.Reference;
    m_prefix = frame.Wanted.Prefix;
    m_hasConvexPolygons = !frame.Wanted.ConvexPercentages.Values.empty();
    m_lastConvex.clear();
    std::vector<PackageTable> tables = package_tables();
    if (m_hasConvexPolygons) tables.push_back(convex_polygon_table());
    m_package.Begin(frame.Folder, m_reference, std::move(tables));
    m_package.Put([&](platform::IPackageWriter& package) { put_fixes(animals, package); });
}

void RangePackage::AnimalDone(const AnimalRecord& record) {
    m_package.Put([&](platform::IPackageWriter& package) {
        drop_rows(record, m_prefix, package);
        PutIsopleths(record, package);
        put_summary(record, package);
        PutConvexPolygons(record, package);
    });
}

/// They do not hang on the value that a distribution was computed with: the first of an animal has all.
void RangePackage::PutConvexPolygons(const AnimalRecord& record, platform::IPackageWriter& package) {
    if (!m_hasConvexPolygons || record.NamingId == m_lastConvex) return;
    m_lastConvex = record.NamingId;
    const FieldValue id = utf8_cell(platform::ValueText(record.Id));
    package.Drop(kConvexPolygons, std::get<std::string>(id));
    for (const comparison::MinimumConvexPolygon& polygon : record.ConvexPolygons) {
        const std::optional<double> area = square_metres(area_of(polygon), m_reference);
        const std::vector<FieldValue> cells = {id,
                                               polygon.Percent,
                                               cell_of(area),
                                               cell_of(hectares_of(area)),
                                               static_cast<std::int64_t>(polygon.Kept),
                                               std::string(comparison::status_name(polygon.Status))};
        package.Put(kConvexPolygons, shape_of(polygon), cells);
    }
}

void RangePackage::PutIsopleths(const AnimalRecord& record, platform::IPackageWriter& package) const {
    const std::string raster = raster_place(record);
    for (const IsoplethRecord* isopleth : largest_first(record)) {
        const std::optional<double> area = square_metres(isopleth->Area, m_reference);
        const std::vector<FieldValue> cells = {utf8_cell(platform::ValueText(record.Id)),
                                               isopleth->Percent,
                                               cell_of(area),
                                               cell_of(hectares_of(area)),
                                               record.BandwidthMapUnits,
                                               std::string(method_name(record.Method)),
                                               std::int64_t{record.SampleSize},
                                               instant(record.Times.First),
                                               instant(record.Times.Last),
                                               std::int64_t{isopleth->Parts},
                                               utf8_cell(raster)};
        package.Put(kIsopleths, isopleth->Shape, cells);
    }
}

void RangePackage::RunEnds(RunOutcome outcome) {
    if (outcome != RunOutcome::kComplete && outcome != RunOutcome::kStopped) return m_package.Forget();
    if (m_package.IsForeign())
        return platform::ShowWarning(*m_services.Messages,
                                     "Warning: " + m_package.File().string() +
                                         " is not a package of this tool's ranges in the coordinate system of the "
                                         "points, and was left as it is; no package was written.");
    m_failed = true;
    m_written = m_package.Publish();
    m_failed = false;
}

}  // namespace wxl::analysis
