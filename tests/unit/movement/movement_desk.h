#pragma once
#include "adapters/memory/memory_map.h"
#include "adapters/memory/memory_services.h"
#include "adapters/memory/memory_shapefile_workspace.h"
#include "movement/FrmPW.h"
#include "platform/runtime_error.h"
#include "platform/services.h"

#include <cmath>
#include <gtest/gtest.h>

namespace wxl::tests {

/// Distances in the plane; the movement tools ask for nothing else.
class PlaneGeometry final : public platform::IGeometryOperators {
public:
    double Distance(const platform::Point& a, const platform::Point& b) override {
        return std::hypot(a.X - b.X, a.Y - b.Y);
    }
    platform::Geometry Difference(const platform::Geometry&, const platform::Geometry&) override {
        return Unused<platform::Geometry>();
    }
    platform::Geometry CleanUp(const platform::Geometry&) override { return Unused<platform::Geometry>(); }
    double Area(const platform::Geometry&) override { return Unused<double>(); }
    double Length(const platform::Geometry&) override { return Unused<double>(); }

private:
    template <class Result>
    Result Unused() {
        platform::Raise(platform::error_number::kInvalidCall);
    }
};

/// Records what happens to the "Please Wait" window.
class RecordingPleaseWait final : public movement::IPleaseWaitWindow {
public:
    void ShowPleaseWait(movement::FrmPW& form) override {
        Form = &form;
        ++Shown;
    }
    void HidePleaseWait(movement::FrmPW& form) override {
        LastValue = form.PBar.Value;
        Form = nullptr;
        ++Hidden;
    }

    movement::FrmPW* Form = nullptr;  ///< the form on screen
    int Shown = 0;
    int Hidden = 0;
    double LastValue = 0.0;
};

inline platform::SpatialReference utm15() {
    return {.Name = "NAD_1983_UTM_Zone_15N",
            .Wkt = "PROJCS[\"NAD_1983_UTM_Zone_15N\"]",
            .UnitName = "metre",
            .MetersPerUnit = 1.0,
            .IsGeographic = false};
}

/// A desktop in memory with one point layer highlighted.
class MovementDesk : public ::testing::Test {
protected:
    MovementDesk() {
        Services.Messages = &Messages;
        Services.Dialogs = &Dialogs;
        Services.Host = &Host;
        Services.Clock = &Clock;
        Services.Geometry = &Geometry;
        Services.Shapefiles = &Shapefiles;
    }

    /// Highlights a new layer with these columns and returns its table.
    memory::MemoryFeatureClass& AddLayer(std::vector<platform::Field> fields,
                                         const platform::SpatialReference& reference = utm15(),
                                         platform::ShapeType shape = platform::ShapeType::kPoint) {
        auto features = std::make_shared<memory::MemoryFeatureClass>(shape, std::move(fields), reference);
        Layer = std::make_shared<memory::MemoryFeatureLayer>("fixes", features);
        Application->Doc().AddSelectedLayer(memory::layer_of(Layer));
        return Layer->Features();
    }

    /// Highlights a layer whose data cannot be opened.
    void SelectUnreadableLayer() {
        platform::Layer layer;
        layer.Name = "gone";
        layer.Feature = std::make_shared<memory::MemoryFeatureLayer>("gone", nullptr);
        Application->Doc().SetSelectedLayer(layer);
    }

    using Texts = std::vector<std::string>;

    memory::MemoryMessages Messages;
    memory::MemoryFileDialogs Dialogs;
    memory::MemoryHost Host;
    memory::MemoryClock Clock;
    memory::MemoryShapefileWorkspace Shapefiles;
    PlaneGeometry Geometry;
    platform::Services Services;
    RecordingPleaseWait PleaseWait;
    std::shared_ptr<memory::MemoryApplication> Application = std::make_shared<memory::MemoryApplication>();
    std::shared_ptr<memory::MemoryFeatureLayer> Layer;
};

}  // namespace wxl::tests
