#include "akde/range_package.h"

#include "akde/animal_models.h"
#include "analysis/range_styles.h"
#include "isopleths/rings.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace wxl::akde {
namespace {

using analysis::cell_of;
using analysis::number_column;
using analysis::text_column;
using analysis::utf8_cell;
using analysis::whole_column;
using movement_models::FittedModel;
using platform::FieldValue;
using platform::PackageTable;
using platform::ShapeType;

constexpr std::size_t kIsopleths = 0;
constexpr std::size_t kFixes = 1;
constexpr std::size_t kSummary = 2;

PackageTable isopleth_table() {
    return {"isopleths",
            ShapeType::kPolygon,
            {text_column("animal"), number_column("percent"), text_column("bound"), number_column("area_m2"),
             number_column("area_ha"), text_column("method"), text_column("model"), whole_column("n"),
             number_column("dof_area"), text_column("first"), text_column("last"), whole_column("parts"),
             text_column("raster")},
            12,
            analysis::limits_style()};
}

PackageTable fix_table() {
    return {"fixes",
            ShapeType::kPoint,
            {text_column("animal"), whole_column("fix"), text_column("time")},
            0,
            analysis::fix_style()};
}

PackageTable summary_table() {
    return {"summary",
            ShapeType::kNull,
            {text_column("animal"),
             whole_column("n"),
             whole_column("n_given"),
             text_column("first"),
             text_column("last"),
             text_column("model"),
             number_column("tau_position_s"),
             number_column("tau_velocity_s"),
             number_column("dof_area"),
             number_column("h"),
             number_column("dof_bandwidth"),
             number_column("bias"),
             text_column("weights"),
             number_column("effective_weights"),
             whole_column("zero_weights"),
             number_column("cell_size"),
             number_column("volume"),
             number_column("percent"),
             number_column("area_low_m2"),
             number_column("area_m2"),
             number_column("area_high_m2"),
             text_column("reason"),
             text_column("raster"),
             whole_column("status")},
            22};
}

FieldValue animal_of(const platform::FieldValue& id) {
    return utf8_cell(platform::ValueText(id));
}

FieldValue text_or_none(const std::string& text) {
    return text.empty() ? FieldValue() : FieldValue(text);
}

FieldValue if_positive(double value) {
    return value > 0.0 ? FieldValue(value) : FieldValue();
}

void put_fixes(const TimedAnimals& animals, platform::IPackageWriter& package) {
    std::array<FieldValue, 3> cells;
    for (const TimedAnimal& animal : animals.Animals) {
        cells[0] = animal_of(animal.Id);
        package.Drop(kFixes, std::get<std::string>(cells[0]));
        for (std::size_t i = 0; i < animal.Fixes.size(); ++i) {
            cells[1] = static_cast<std::int64_t>(i + 1);
            cells[2] = moment_text(animal.Times[i], animals.NumberTimes);
            package.Put(kFixes, platform::Geometry::OfPoint(animal.Fixes[i]), cells);
        }
    }
}

/// Places of the isopleths that are drawn.
std::vector<std::size_t> largest_first(const RangeRecord& record) {
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < record.Outlines.size(); ++i)
        if (!record.Outlines[i].IsNull()) order.push_back(i);
    std::ranges::stable_sort(
        order, [&](std::size_t a, std::size_t b) { return record.Isopleths[a].Area > record.Isopleths[b].Area; });
    return order;
}

}  // namespace

std::vector<PackageTable> package_tables() {
    return {isopleth_table(), fix_table(), summary_table()};
}

RangePackage::RangePackage(const RangeSettings& settings, const platform::Services& services,
                           const TimedAnimals& animals)
    : m_settings(settings), m_reference(animals.Reference), m_package(services) {
    if (!settings.GeoPackage) return;
    m_package.Begin(settings.Folder, m_reference, package_tables());
    m_package.Put([&](platform::IPackageWriter& package) { put_fixes(animals, package); });
}

void RangePackage::Add(const RangeRecord& record) {
    m_package.Put([&](platform::IPackageWriter& package) {
        PutIsopleths(record, package);
        PutSummary(record, package);
    });
}

void RangePackage::PutIsopleths(const RangeRecord& record, platform::IPackageWriter& package) const {
    const std::string raster = record.RasterPlace();
    package.Drop(kIsopleths, raster);
    if (!record.IsDone()) return;
    const FittedModel& model = *record.Chosen;
    for (const std::size_t place : largest_first(record)) {
        const RangeIsopleth& isopleth = record.Isopleths[place];
        const std::optional<double> area = analysis::square_metres(isopleth.Area, m_reference);
        const std::vector<FieldValue> cells = {animal_of(record.Id),
                                               isopleth.Percent,
                                               isopleth.Bound,
                                               cell_of(area),
                                               cell_of(analysis::hectares_of(area)),
                                               std::string("akde"),
                                               model_title(model.Model.Kind, model.Shape),
                                               cell_of(record.Used),
                                               if_positive(model.DofArea),
                                               text_or_none(record.First),
                                               text_or_none(record.Last),
                                               std::int64_t{isopleths::outer_rings_of(record.Outlines[place])},
                                               utf8_cell(raster)};
        package.Put(kIsopleths, record.Outlines[place], cells);
    }
}

void RangePackage::PutSummary(const RangeRecord& record, platform::IPackageWriter& package) const {
    const std::string raster = record.RasterPlace();
    package.Drop(kSummary, raster);
    const bool done = record.IsDone();
    const FittedModel model = record.Chosen.value_or(FittedModel{});
    const auto of_range = [&](double value) { return done ? FieldValue(value) : FieldValue(); };
    const auto row = [&](const RangeIsopleth* isopleth) {
        const auto area = [&](const char* bound) {
            return isopleth != nullptr
                       ? cell_of(analysis::square_metres(record.AreaAt(isopleth->Percent, bound), m_reference))
                       : FieldValue();
        };
        const std::vector<FieldValue> cells = {
            animal_of(record.Id),
            cell_of(record.Used),
            cell_of(record.Given),
            text_or_none(record.First),
            text_or_none(record.Last),
            record.Chosen ? FieldValue(model_title(model.Model.Kind, model.Shape)) : FieldValue(),
            if_positive(model.Model.Scales.Position),
            if_positive(velocity_scale(model)),
            if_positive(model.DofArea),
            of_range(record.H),
            of_range(record.DofBandwidth),
            of_range(record.Bias),
            std::string(m_settings.Optimal ? "optimal" : "uniform"),
            of_range(record.EffectiveWeights),
            done ? cell_of(record.ZeroWeights) : FieldValue(),
            of_range(record.Grid.CellSize),
            of_range(record.Volume),
            isopleth != nullptr ? FieldValue(isopleth->Percent) : FieldValue(),
            area("low"),
            area("est"),
            area("high"),
            text_or_none(record.Reason),
            utf8_cell(raster),
            std::int64_t{done ? 0 : 1}};
        package.Put(kSummary, {}, cells);
    };
    if (!done) row(nullptr);
    for (const RangeIsopleth& isopleth : record.Isopleths)
        if (isopleth.Bound == "est") row(&isopleth);
}

std::string RangePackage::ForeignText() const {
    return "Warning: " + m_package.File().string() +
           " is not a package of ranges with limits in the coordinate system of the points, and was left as it is; no "
           "package was written. Choose another output folder for one.";
}

}  // namespace wxl::akde
