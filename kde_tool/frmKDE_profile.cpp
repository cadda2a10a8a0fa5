// The plot of a bandwidth search on the page "Bandwidth".

#include "kde_tool/frmKDE.h"
#include "platform/runtime_error.h"

#include <algorithm>
#include <utility>

namespace wxl::kde_tool {

namespace {

constexpr int kBandwidthPage = 2;

std::optional<analysis::BandwidthMethod> chosen_search(const frmKDE& form) {
    if (form.optBE_LSCV.Value) return analysis::BandwidthMethod::kLscv;
    if (form.optBE_BCV.Value) return analysis::BandwidthMethod::kBcv;
    return std::nullopt;
}

ProfilePlot hint(std::string text) {
    return {.Picture = {}, .Hint = std::move(text)};
}

}  // namespace

void frmKDE::datagridHref_Click() {
    ShowProfile(nullptr);
}

/// A search takes a moment, so it runs only when the page is in sight and the plot does not show it already. The host
/// gets its turns meanwhile: another choice made then is plotted next. `fixes` are the layer's points where the caller
/// has just read them.
void frmKDE::ShowProfile(const analysis::GroupedFixes* fixes) {
    if (m_plotting || m_running) return;
    m_plotting = true;
    while (const auto wanted = SearchToPlot()) {
        m_plotted = wanted;
        try {
            plotProfile = PlotChosenAnimal(*wanted, fixes);
        } catch (...) {
            plotProfile = hint(platform::CurrentError().Description);
        }
        fixes = nullptr;
    }
    m_plotting = false;
}

/// The search that the plot should show and does not yet. Without one to show the plot gets its hint.
std::optional<frmKDE::PlottedSearch> frmKDE::SearchToPlot() {
    const auto method = chosen_search(*this);
    if (!method || m_hrefs.empty() || m_hrefChoice != ChosenFixes()) {
        m_plotted.reset();
        plotProfile = hint(method ? "Choose a point layer and its ID field: the scores of the search are plotted here."
                                  : "Choose LSCV or BCV: the scores of the search are plotted here.");
        return std::nullopt;
    }
    const PlottedSearch wanted{datagridHref.CurrentRow, *method, chkRescale.Value != 0};
    if (SSTab1.Current != kBandwidthPage || wanted.Row < 0 || m_plotted == wanted) return std::nullopt;
    return wanted;
}

/// Throws where the layer cannot be read or no longer has the animal of the row.
ProfilePlot frmKDE::PlotChosenAnimal(const PlottedSearch& search, const analysis::GroupedFixes* fixes) const {
    analysis::GroupedFixes read;
    if (fixes == nullptr) read = ReadFixes();
    const std::vector<analysis::AnimalFixes>& animals = fixes == nullptr ? read.Animals : fixes->Animals;
    const platform::FieldValue id = m_hrefs.at(static_cast<std::size_t>(search.Row)).Id;
    const auto animal =
        std::find_if(animals.begin(), animals.end(), [&](const analysis::AnimalFixes& each) { return each.Id == id; });
    if (animal == animals.end())
        platform::Raise(platform::error_number::kObjectNotSet,
                        "The layer has no fixes of " + platform::ValueText(id) + " any more.");
    const std::string units = PointLayer().Feature->FeatureClass()->Reference().UnitName;
    return PlotSearch(*animal, search.Method, search.Rescale, units, m_services.Host);
}

}  // namespace wxl::kde_tool
