// Saving the drawn track: the part of the player that writes a shapefile.

#include "movement/error_labels.h"
#include "movement/flag_up.h"
#include "movement/frmOVI.h"
#include "movement/selected_layer.h"
#include "platform/file_system.h"
#include "platform/guarded.h"
#include "platform/text.h"

#include <array>

namespace wxl::movement {

using namespace wxl::platform;
namespace labels = error_labels::track_export;

namespace {

/// The chosen file with the extension that a new shapefile gets, whether or not and however the user typed it.
std::filesystem::path with_extension(std::filesystem::path chosen) {
    return EqualNoCase(chosen.extension().string(), ".shp") ? chosen.replace_extension(".shp") : chosen += ".shp";
}

}  // namespace

void frmOVI::CmdSaveTravel_Click() {
    const std::string detail = "Save Travel";
    GuardedWithDetail(*m_services.Messages, labels::kConvertGraphics, detail, [&] { ConvertGraphics2Shapefile(); });
}

void frmOVI::ConvertGraphics2Shapefile() {
    std::string detail = "Save Travel";
    GuardedWithDetail(*m_services.Messages, labels::kConvertGraphics, detail, [&] {
        if (m_legs.empty()) {
            m_services.Messages->Show({.Text = "Please add a track"});
            return;
        }
        const auto chosen =
            m_services.Dialogs->SaveFile({.Title = "Save Travel", .Filter = "Shapefiles (*.shp)|*.shp"});
        if (!chosen) return;
        const std::filesystem::path shapefile = with_extension(*chosen);
        detail = shapefile.string();
        if (m_services.Shapefiles->Open(shapefile.parent_path(), shapefile.stem().string())) {
            m_services.Messages->Show({.Text = detail + " exists already. Please choose another name."});
            return;
        }
        const auto features = CreateFeatureClass1(shapefile);
        if (!features) Raise(error_number::kObjectNotSet);
        WriteLegs(*features);
        m_services.Shapefiles->Publish(features);
        AddShapeFile(shapefile);
    });
}

void frmOVI::WriteLegs(IFeatureClass& features) const {
    const auto rows = features.Insert();
    std::int64_t number = 0;
    for (const TrackLeg& leg : m_legs) {
        const Geometry line{ShapeType::kPolyline, {}, {{leg.From, leg.To}}};
        const std::array<FieldValue, 1> values = {++number};
        rows->Insert(line, values);
    }
    rows->Flush();
}

std::shared_ptr<IFeatureClass> frmOVI::CreateFeatureClass1(const std::filesystem::path& shapefile) {
    const std::string detail = shapefile.string();
    return GuardedWithDetail(*m_services.Messages, labels::kCreateFeatureClass, detail, [&] {
        FeatureClassDefinition definition = MakeGeometryDef1();
        definition.Name = shapefile.stem().string();
        CheckDatasetName(definition.Name);
        definition.Fields = {{.Name = "Id", .Type = FieldType::kInteger}};
        return m_services.Shapefiles->Create(shapefile.parent_path(), definition);
    });
}

FeatureClassDefinition frmOVI::MakeGeometryDef1() {
    return GuardedWithDetail(*m_services.Messages, labels::kCreateFeatureClass, m_layerName, [&] {
        if (!m_reference) Raise(error_number::kObjectNotSet);
        FeatureClassDefinition definition;
        definition.Shape = ShapeType::kPolyline;
        definition.Reference = *m_reference;
        return definition;
    });
}

void frmOVI::AddShapeFile(const std::filesystem::path& shapefile) {
    const std::string detail = shapefile.string();
    GuardedWithDetail(*m_services.Messages, labels::kAddShapeFile, detail, [&] {
        // The player's own layer is no reason to restart it.
        const FlagUp adding(m_addingOwnLayer);
        Map().AddDataset(shapefile);
    });
}

}  // namespace wxl::movement
