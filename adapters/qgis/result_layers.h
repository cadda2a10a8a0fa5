#pragma once
#include "adapters/qgis/qgis_map.h"
#include "adapters/qgis/result_catalogue.h"
#include "analysis/record.h"
#include "kde_tool/frmKDE.h"
#include "platform/messages.h"

#include <qgsmaplayer.h>

namespace wxl::qgis {

/// Adds what a run wrote to the map when the form's chkAddToMap asks for it, also what a stopped run had done: one
/// group "Home ranges: LAYER, METHOD" right below the fixes, numbered when there is one of that name, with the
/// isopleths above the rasters, each in the order of the animals, in the coordinate system of the point layer.
class ResultLayers final : public analysis::IRunObserver {
public:
    /// All outlive the object. `host` gets a turn now and then, so that hundreds of animals do not freeze the desktop.
    ResultLayers(const kde_tool::frmKDE& form, Desktop desktop, platform::IHost& host)
        : m_form(form), m_desktop(std::move(desktop)), m_host(host) {}

    void RunBegins(const analysis::RunFrame& frame, const analysis::GroupedFixes& animals) override;
    void AnimalDone(const analysis::AnimalRecord& record) override;

    /// RuntimeError 57 that names the datasets that could not be opened, when the others are on the map.
    void RunEnds(analysis::RunOutcome outcome) override;

private:
    void Show(const QList<QgsMapLayer*>& layers) const;

    const kde_tool::frmKDE& m_form;
    Desktop m_desktop;
    platform::IHost& m_host;
    ResultCatalogue m_catalogue;
};

/// Shows the rectangle in the map, whatever system that has, with a margin; nothing where it cannot be transformed.
void show_extent(const Desktop& desktop, const platform::Extent& extent, const platform::SpatialReference& reference);

}  // namespace wxl::qgis
