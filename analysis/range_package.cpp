#include "analysis/range_package.h"

#include "analysis/animal_run.h"
#include "analysis/output_names.h"
#include "analysis/range_styles.h"
#include "analysis/summary_rows.h"
#include "platform/boxes.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "tracking_times/timestamps.h"

#include <algorithm>
#include <array>

namespace wxl::analysis {
namespace {

using platform::Field;
using platform::FieldType;
using platform::FieldValue;
using platform::Geometry;
using platform::PackageTable;
using platform::ShapeType;

constexpr std::size_t kIsopleths = 0;
constexpr std::size_t kFixes = 1;
constexpr std::size_t kSummary = 2;
constexpr double kSquareMetresPerHectare = 1e4;

Field text(const char* name) {
    return {name, FieldType::kText};
}
Field number(const char* name) {
    return {name, FieldType::kDouble};
}
Field whole(const char* name) {
    return {name, FieldType::kInteger};
}

PackageTable isopleth_table() {
    return {"isopleths",
            ShapeType::kPolygon,
            {text("animal"), number("percent"), number("area_m2"), number("area_ha"), number("bandwidth"),
             text("method"), whole("n"), text("first"), text("last"), whole("parts"), text("raster")},
            10,
            isopleth_style()};
}

PackageTable fix_table() {
    return {"fixes", ShapeType::kPoint, {text("animal"), whole("fix")}, 0, fix_style()};
}

PackageTable summary_table() {
    return {
        "summary",
        ShapeType::kNull,
        {text("animal"),         whole("n"),         text("first"),        text("last"),       number("days"),
         whole("distinct_days"), number("median_s"), number("q1_s"),       number("q3_s"),     number("iqr_s"),
         whole("equal_times"),   text("method"),     number("bandwidth"),  number("href"),     text("minimised"),
         number("cell_size"),    number("volume"),   text("edge_warning"), number("schoener"), number("swihart_slade"),
         text("reason"),         text("raster"),     whole("status")},
        21};
}

/// What the package tells as the moment of its last change: always the same, so that the same run gives the same bytes.
/// The report has the time.
constexpr const char* kChanged = "1970-01-01T00:00:00.000Z";

FieldValue instant(const std::optional<std::int64_t>& seconds) {
    return seconds ? FieldValue(tracking_times::instant_text(*seconds)) : FieldValue();
}

FieldValue cell(const std::optional<double>& value) {
    return value ? FieldValue(*value) : FieldValue();
}

FieldValue cell(std::size_t count) {
    return static_cast<std::int64_t>(count);
}

FieldValue utf8(const std::string& value) {
    return platform::IsUtf8(value) ? value : platform::FromWindows1252(value);
}

FieldValue yes_no(bool value) {
    return std::string(value ? "yes" : "no");
}

/// Twice the area of a ring, positive where it turns like the hands of a clock: outer rings do.
double clockwise(const std::vector<platform::Point>& ring) {
    double sum = 0.0;
    for (std::size_t i = 1; i < ring.size(); ++i)
        sum += (ring[i].X - ring[0].X) * (ring[i - 1].Y - ring[0].Y) -
               (ring[i - 1].X - ring[0].X) * (ring[i].Y - ring[0].Y);
    return sum;
}

std::int64_t parts_of(const Geometry& shape) {
    return std::ranges::count_if(shape.Parts, [](const auto& ring) { return clockwise(ring) > 0.0; });
}

/// Square metres; nothing where the length of a map unit is not known.
std::optional<double> square_metres(const std::optional<double>& area, const platform::SpatialReference& reference) {
    const double metres = reference.MetersPerUnit;
    if (!area || reference.IsGeographic || !(metres > 0.0)) return std::nullopt;
    return *area * metres * metres;
}

std::vector<const IsoplethRecord*> largest_first(const AnimalRecord& record) {
    std::vector<const IsoplethRecord*> order;
    for (const IsoplethRecord& isopleth : record.Isopleths)
        if (!isopleth.Shape.IsNull()) order.push_back(&isopleth);
    std::ranges::stable_sort(order, [](const auto* a, const auto* b) { return a->Percent > b->Percent; });
    return order;
}

}  // namespace

/// Work on the package; after its first fault there is none, and the run goes on.
template <class Work>
void RangePackage::Kept(Work&& work) {
    if (!m_writer) return;
    try {
        work();
    } catch (...) {
        const platform::RuntimeError fault = platform::CurrentError();
        m_fault = fault.Description;
        m_faultNumber = fault.Number;
        m_writer.reset();
    }
}

void RangePackage::RunBegins(const RunFrame& frame, const GroupedFixes& animals) {
    m_writer.reset();
    m_written.clear();
    m_fault.clear();
    m_failed = false;
    m_isForeign = false;
    if (!frame.Wanted.GeoPackage || m_services.Packages == nullptr) return;
    m_reference = frame.Reference;
    m_file = file_in_folder(frame.Folder, kRangePackage);
    try {
        m_writer = m_services.Packages->Open(
            {m_file, m_reference, {isopleth_table(), fix_table(), summary_table()}, kChanged});
        m_isForeign = !m_writer;
    } catch (...) {
        const platform::RuntimeError fault = platform::CurrentError();
        m_fault = fault.Description;
        m_faultNumber = fault.Number;
    }
    Kept([&] { PutFixes(animals); });
}

void RangePackage::PutFixes(const GroupedFixes& animals) {
    std::array<FieldValue, 2> cells;
    for (const AnimalFixes& animal : animals.Animals) {
        const FieldValue id = utf8(platform::ValueText(animal.Id));
        m_writer->Drop(kFixes, std::get<std::string>(id));
        cells[0] = id;
        for (std::size_t i = 0; i < animal.Fixes.size(); ++i) {
            cells[1] = static_cast<std::int64_t>(i + 1);
            m_writer->Put(kFixes, Geometry::OfPoint(animal.Fixes[i]), cells);
        }
    }
}

void RangePackage::AnimalDone(const AnimalRecord& record) {
    Kept([&] {
        PutIsopleths(record);
        PutSummary(record);
    });
}

void RangePackage::PutIsopleths(const AnimalRecord& record) {
    const std::string raster = raster_place(record);
    m_writer->Drop(kIsopleths, raster);
    for (const IsoplethRecord* isopleth : largest_first(record)) {
        const std::optional<double> area = square_metres(isopleth->Area, m_reference);
        const std::optional<double> hectares = area ? std::optional(*area / kSquareMetresPerHectare) : std::nullopt;
        const std::vector<FieldValue> cells = {utf8(platform::ValueText(record.Id)),
                                               isopleth->Percent,
                                               cell(area),
                                               cell(hectares),
                                               record.BandwidthMapUnits,
                                               std::string(method_name(record.Method)),
                                               std::int64_t{record.SampleSize},
                                               instant(record.Times.First),
                                               instant(record.Times.Last),
                                               parts_of(isopleth->Shape),
                                               utf8(raster)};
        m_writer->Put(kIsopleths, isopleth->Shape, cells);
    }
}

void RangePackage::PutSummary(const AnimalRecord& record) {
    const std::string raster = raster_place(record);
    m_writer->Drop(kSummary, raster);
    const tracking_times::TimeFacts& times = record.Times;
    const auto interval = [&](auto value) {
        return times.Intervals ? FieldValue(value(*times.Intervals)) : FieldValue();
    };
    const bool done = record.Status == 0;
    const std::vector<FieldValue> cells = {
        utf8(platform::ValueText(record.Id)),
        std::int64_t{record.SampleSize},
        instant(times.First),
        instant(times.Last),
        times.First ? FieldValue(times.Days) : FieldValue(),
        cell(times.DaysWithFix),
        interval([](const auto& quartiles) { return quartiles.Median; }),
        interval([](const auto& quartiles) { return quartiles.Lower; }),
        interval([](const auto& quartiles) { return quartiles.Upper; }),
        interval([](const auto& quartiles) { return quartiles.Range(); }),
        cell(times.EqualTimes),
        std::string(method_name(record.Method)),
        record.BandwidthMapUnits > 0.0 ? FieldValue(record.BandwidthMapUnits) : FieldValue(),
        cell(href_in_map_units(record)),
        is_search(record.Method) ? yes_no(record.Minimized) : FieldValue(),
        record.Grid.CellSize,
        done ? FieldValue(record.Volume) : FieldValue(),
        record.MaxEdgeValue ? yes_no(record.EdgeWarning) : FieldValue(),
        cell(record.Schoener),
        cell(record.SwihartSlade),
        utf8(record.Reason),
        utf8(raster),
        std::int64_t{record.Status}};
    m_writer->Put(kSummary, {}, cells);
}

void RangePackage::RunEnds(RunOutcome outcome) {
    const auto writer = std::move(m_writer);
    if (outcome != RunOutcome::kComplete && outcome != RunOutcome::kStopped) return;
    if (m_isForeign)
        return platform::ShowWarning(*m_services.Messages,
                                     "Warning: " + m_file.string() +
                                         " is not a package of this tool's ranges in the coordinate system of the "
                                         "points, and was left as it is; no package was written.");
    if (!m_fault.empty()) {
        m_failed = true;
        platform::Raise(m_faultNumber, m_fault);
    }
    if (!writer) return;
    m_failed = true;
    writer->Publish();
    m_written = m_file;
    m_failed = false;
}

}  // namespace wxl::analysis
