#include "analysis/isopleth_failure.h"

#include "analysis/settings_text.h"
#include "isopleths/clsHISO.h"

namespace wxl::analysis {

bool lacks_isopleths(const AnimalRecord& record) {
    return record.Status == 0 && record.IsoplethStatus != 0;
}

std::string isopleth_failure(const AnimalRecord& record, const Settings& settings) {
    namespace isopleth_status = isopleths::isopleth_status;
    if (!lacks_isopleths(record)) return {};
    if (above_hundred(settings.Percentages) || not_positive(settings.Percentages))
        return "there are no isopleths. Choose percentages above 0 and up to 100.";
    if (record.IsoplethStatus == isopleth_status::kNothingWanted)
        return "no kind of isopleths is chosen. Tick lines, polygons or donuts.";
    if (record.IsoplethStatus == isopleth_status::kNoContours && !record.Reason.empty())
        return record.Reason + ". Choose larger percentages or smaller cells.";
    if (record.CutTo) return record.Reason + ". Choose a larger extent.";
    return "the isopleths could not be computed (code " + std::to_string(record.IsoplethStatus) +
           "). Choose smaller cells or a larger extent.";
}

}  // namespace wxl::analysis
