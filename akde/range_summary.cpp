#include "akde/range_summary.h"

#include "akde/animal_models.h"
#include "platform/text.h"

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace wxl::akde {

namespace {

using platform::NumberText;

std::string positive(double value) {
    return value > 0.0 ? NumberText(value) : std::string();
}

std::string text_of(std::optional<double> value) {
    return value ? NumberText(*value) : std::string();
}

/// Model, kernel, raster and areas are empty.
std::string failed_row(const RangeRecord& record) {
    constexpr std::size_t kEmpty = 14;
    std::vector<std::string> cells(kEmpty);
    cells.insert(cells.begin(), {platform::ValueText(record.Id), std::to_string(record.Used)});
    cells.insert(cells.end(), {record.Reason, record.RasterPlace()});
    return analysis::summary_line(cells);
}

}  // namespace

std::string summary_rows(const RangeRecord& record, const RangeSettings& settings) {
    if (!record.IsDone()) return failed_row(record);
    const movement_models::FittedModel& model = *record.Chosen;
    std::string rows;
    for (const RangeIsopleth& isopleth : record.Isopleths) {
        if (isopleth.Bound != "est") continue;
        rows += analysis::summary_line(
            {platform::ValueText(record.Id), std::to_string(record.Used), model_title(model.Model.Kind, model.Shape),
             positive(model.Model.Scales.Position), positive(velocity_scale(model)), positive(model.DofArea),
             NumberText(record.H), NumberText(record.DofBandwidth), NumberText(record.Bias),
             settings.Optimal ? "optimal" : "uniform", NumberText(record.Grid.CellSize), NumberText(record.Volume),
             NumberText(isopleth.Percent), text_of(record.AreaAt(isopleth.Percent, "low")), NumberText(isopleth.Area),
             text_of(record.AreaAt(isopleth.Percent, "high")), "", record.RasterPlace()});
    }
    return rows;
}

}  // namespace wxl::akde
