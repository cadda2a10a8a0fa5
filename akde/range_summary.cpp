#include "akde/range_summary.h"

#include "platform/foreign_cell.h"
#include "platform/text.h"

#include <initializer_list>

namespace wxl::akde {

namespace {

using platform::NumberText;

constexpr const char* kHeader =
    "id,n,model,tau_position_s,tau_velocity_s,dof_area,h,dof_bandwidth,bias,weights,cell_size,volume,percent,area_low,"
    "area,area_high,reason\n";

std::string line_of(std::initializer_list<std::string> cells) {
    std::string line;
    for (const std::string& cell : cells) line += (&cell == cells.begin() ? "" : ",") + platform::ForeignCell(cell);
    return line + "\n";
}

std::string positive(double value) {
    return value > 0.0 ? NumberText(value) : std::string();
}

std::string text_of(std::optional<double> value) {
    return value ? NumberText(*value) : std::string();
}

}  // namespace

void RangeSummary::Add(const RangeRecord& record) {
    const std::string id = platform::ValueText(record.Id);
    const std::string n = std::to_string(record.Used);
    if (!record.IsDone()) {
        m_rows += line_of({id, n, "", "", "", "", "", "", "", "", "", "", "", "", "", "", record.Reason});
        return;
    }
    const movement_models::FittedModel& model = *record.Chosen;
    for (const RangeIsopleth& isopleth : record.Isopleths) {
        if (isopleth.Bound != "est") continue;
        m_rows += line_of({id, n, model_title(model.Model.Kind, model.Shape), positive(model.Model.Scales.Position),
                           positive(model.Model.Scales.Velocity), positive(model.DofArea), NumberText(record.H),
                           NumberText(record.DofBandwidth), NumberText(record.Bias),
                           m_settings.Optimal ? "optimal" : "uniform", NumberText(record.Grid.CellSize),
                           NumberText(record.Volume), NumberText(isopleth.Percent),
                           text_of(record.AreaAt(isopleth.Percent, "low")), NumberText(isopleth.Area),
                           text_of(record.AreaAt(isopleth.Percent, "high")), ""});
    }
}

std::string RangeSummary::Text() const {
    return kHeader + m_rows;
}

}  // namespace wxl::akde
