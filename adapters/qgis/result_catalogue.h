#pragma once
#include "akde/range_run.h"
#include "analysis/record.h"

#include <map>
#include <memory>
#include <qgscoordinatereferencesystem.h>
#include <qgslayertreegroup.h>
#include <qgsmaplayer.h>
#include <QPointer>
#include <QString>
#include <string>
#include <vector>

namespace wxl::qgis {

/// A dataset that a run wrote, and how it is shown.
struct ResultDataset {
    std::string Path;
    QString Name;            ///< "Freja: density"
    std::size_t Animal = 0;  ///< running number, which gives the hue
    bool IsRaster = false;
    double Maximum = 0.0;             ///< rasters
    std::vector<double> Percentages;  ///< isopleths, in the order of the run
    bool Bounded = false;             ///< isopleths: with outlines of the limits
};

/// What a run wrote, as layers: names, hues, the name of the group, and where that stands.
class ResultCatalogue {
public:
    void Begin(const analysis::RunFrame& frame);

    /// Of a layer in the project, or of that name and system; `method` ends the name of the group.
    void Begin(const std::string& layerName, const QString& method, const platform::SpatialReference& reference);

    /// Home ranges with limits.
    void Add(const akde::RangeRecord& record);

    /// Looks through a raster for the range of its colours, so that nothing is left to do at the end but opening it.
    void Add(const analysis::AnimalRecord& record);

    /// Isopleths, then rasters, each in the order of the animals.
    std::vector<ResultDataset> Datasets() const;
    void Clear();

    const QString& GroupName() const { return m_groupName; }
    const QgsCoordinateReferenceSystem& Crs() const { return m_crs; }

    /// A new group of that name (numbered where there is one already), right below the fixes that were analysed, so
    /// that they stay above it and base maps below; on top where the fixes are in no tree. `fill` puts the layers into
    /// it before the tree on screen knows of it.
    template <class Fill>
    QgsLayerTreeGroup& NewGroup(Fill&& fill) const {
        auto group = EmptyGroup();
        fill(*group);
        return Insert(std::move(group));
    }

private:
    std::unique_ptr<QgsLayerTreeGroup> EmptyGroup() const;
    QgsLayerTreeGroup& Insert(std::unique_ptr<QgsLayerTreeGroup> group) const;

    QString m_groupName;
    QPointer<QgsMapLayer> m_fixes;
    QgsCoordinateReferenceSystem m_crs;
    std::size_t m_valuesPerAnimal = 1;
    std::map<std::string, std::size_t> m_valuesDone;  ///< of each animal
    std::map<std::string, std::size_t> m_animals;     ///< running numbers
    std::vector<ResultDataset> m_rasters;
    std::vector<ResultDataset> m_isopleths;
};

/// Opens the dataset as a styled layer, which may be invalid.
std::unique_ptr<QgsMapLayer> open_result(const ResultDataset& dataset);

/// Name, style and, where it is known, the coordinate system.
void dress_result(QgsMapLayer& layer, const ResultDataset& dataset, const QgsCoordinateReferenceSystem& crs);

}  // namespace wxl::qgis
