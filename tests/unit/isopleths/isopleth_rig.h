#pragma once
// A clsHISO with everything around it in memory, but real contours and geometry.

#include "adapters/geos/geos_operators.h"
#include "adapters/memory/memory_file_system.h"
#include "adapters/memory/memory_rasters.h"
#include "adapters/memory/memory_services.h"
#include "adapters/memory/memory_shapefile_workspace.h"
#include "adapters/raster/contour_operation.h"
#include "isopleths/clsHISO.h"
#include "tests/unit/isopleths/surfaces.h"
#include "utilities/Utilities.h"

namespace wxl::tests {

/// A store that can be told to fail.
class FailingShapefiles final : public platform::IShapefileWorkspace {
public:
    explicit FailingShapefiles(platform::IShapefileWorkspace& store) : m_store(store) {}

    std::shared_ptr<platform::IFeatureClass> Open(const std::filesystem::path& folder,
                                                  const std::string& name) override {
        return m_store.Open(folder, name);
    }
    std::shared_ptr<platform::IFeatureClass> Create(const std::filesystem::path& folder,
                                                    const platform::FeatureClassDefinition& definition) override {
        if (OnCreate) OnCreate(definition.Name);
        auto made = m_store.Create(folder, definition);
        if (OnCreated) OnCreated(*made);
        return made;
    }
    void Publish(const std::shared_ptr<platform::IFeatureClass>& created) override {
        if (OnPublish) OnPublish();
        m_store.Publish(created);
    }
    void Delete(const std::filesystem::path& folder, const std::string& name) override { m_store.Delete(folder, name); }

    std::function<void(const std::string&)> OnCreate;
    std::function<void(platform::IFeatureClass&)> OnCreated;
    std::function<void()> OnPublish;

private:
    platform::IShapefileWorkspace& m_store;
};

struct IsoplethRig {
    IsoplethRig() {
        Files.Disk().AddFolder("/out");
        Services.Messages = &Messages;
        Services.Host = &Host;
        Services.Files = &Files;
        Services.Shapefiles = &FailingStore;
        Services.Geometry = &Geometry;
        Services.Contours = &Contours;
    }

    /// An object set up as the analysis run does it.
    isopleths::clsHISO Object(const Surface& surface, std::vector<double> percentages) {
        isopleths::clsHISO hiso(Services, Utilities());
        hiso.SetCalculateLines(true);
        hiso.SetCalculatePolys(true);
        hiso.SetCalculateDonuts(true);
        hiso.SetIsoplethBoundaries(std::move(percentages));
        hiso.SetOutputFolder("/out");
        hiso.SetOutputName("ELK12_iso");
        hiso.SetRasterDataset(memory::MakeRaster("ELK12", surface.Geometry, surface.Cells, Reference));
        return hiso;
    }

    utilities::Utilities& Utilities() {
        if (!m_utilities) m_utilities = std::make_unique<utilities::Utilities>(Services);
        return *m_utilities;
    }

    /// A published output; null when there is none of that name.
    std::shared_ptr<memory::MemoryFeatureClass> Output(const std::string& suffix) const {
        return Shapefiles.Find("/out", "ELK12_iso" + suffix);
    }

    /// All values of a field, in the order of the features.
    static std::vector<double> Column(const memory::MemoryFeatureClass& features, const std::string& field) {
        std::vector<double> values;
        for (const std::int64_t oid : features.OIDs())
            values.push_back(platform::ValueNumber(features.ValueOf(oid, field)));
        return values;
    }

    static std::vector<std::string> FieldNames(platform::IFeatureClass& features) {
        std::vector<std::string> names;
        for (const platform::Field& field : features.Table().Fields()) names.push_back(field.Name);
        return names;
    }

    platform::SpatialReference Reference{"NAD83 / UTM zone 15N", "PROJCS[]", "metre", 1.0, false};
    memory::MemoryMessages Messages;
    memory::MemoryHost Host;
    memory::MemoryFileSystem Files;
    memory::MemoryShapefileWorkspace Shapefiles{&Files};
    FailingShapefiles FailingStore{Shapefiles};
    files::GeosOperators Geometry;
    files::ContourOperation Contours;
    platform::Services Services;

private:
    std::unique_ptr<utilities::Utilities> m_utilities;
};

}  // namespace wxl::tests
