#pragma once
#include "adapters/qgis/qgis_map.h"
#include "kde_tool/frmKDE.h"
#include "kde_tool/run_record.h"
#include "platform/messages.h"

#include <map>
#include <memory>
#include <qgscoordinatereferencesystem.h>
#include <qgsmaplayer.h>
#include <QString>
#include <string>
#include <vector>

namespace wxl::qgis {

/// Adds what a run wrote to the map when the form's chkAddToMap asks for it, also what a stopped run had done: one
/// group "Home ranges: LAYER, METHOD" on top of the layer tree, numbered when there is one of that name, with the
/// isopleths above the rasters, each in the order of the animals, in the coordinate system of the point layer.
class ResultLayers final : public kde_tool::IRunObserver {
public:
    /// All outlive the object. `host` gets a turn now and then, so that hundreds of animals do not freeze the desktop.
    ResultLayers(const kde_tool::frmKDE& form, Desktop desktop, platform::IHost& host)
        : m_form(form), m_desktop(std::move(desktop)), m_host(host) {}

    void RunBegins(const kde_tool::RunFrame& frame, const kde_tool::GroupedFixes& animals) override;

    /// Looks through the raster for the range of its colours, so that nothing is left to do at the end but opening it.
    void AnimalDone(const kde_tool::AnimalRecord& record) override;

    /// RuntimeError 57 that names the datasets that could not be opened, when the others are on the map.
    void RunEnds(kde_tool::RunOutcome outcome) override;

private:
    struct Dataset {
        std::string Path;
        QString Animal;
        double Maximum = 0.0;             ///< rasters
        std::vector<double> Percentages;  ///< isopleths
    };

    std::unique_ptr<QgsMapLayer> OpenRaster(const Dataset& dataset) const;
    std::unique_ptr<QgsMapLayer> OpenIsopleths(const Dataset& dataset) const;
    void Show(const QList<QgsMapLayer*>& layers) const;

    const kde_tool::frmKDE& m_form;
    Desktop m_desktop;
    platform::IHost& m_host;
    QString m_groupName;
    QgsCoordinateReferenceSystem m_crs;
    std::size_t m_valuesPerAnimal = 1;
    std::map<std::string, std::size_t> m_valuesDone;  ///< of each animal
    std::vector<Dataset> m_rasters;
    std::vector<Dataset> m_isopleths;
};

}  // namespace wxl::qgis
