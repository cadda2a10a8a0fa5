#include "analysis/convex_polygon_layer.h"

#include "analysis/animal_run.h"
#include "analysis/output_names.h"
#include "comparison/polygon_features.h"

namespace wxl::analysis {

void ConvexPolygonLayer::RunBegins(const RunFrame& frame, const GroupedFixes& /*animals*/) {
    m_folder = frame.Folder;
    m_name = frame.Wanted.ConvexPercentages.Values.empty() ? std::string() : convex_polygon_name(frame.Wanted);
    m_reference = frame.Reference;
    m_animals.clear();
    m_written.clear();
    m_failed = false;
}

/// The polygons of an animal do not hang on the value that its distribution was computed with.
void ConvexPolygonLayer::AnimalDone(const AnimalRecord& record) {
    if (m_name.empty() || (!m_animals.empty() && m_animals.back().NamingId == record.NamingId)) return;
    m_animals.push_back({record.NamingId, platform::ValueText(record.Id), record.ConvexPolygons});
}

void ConvexPolygonLayer::RunEnds(RunOutcome outcome) {
    const bool kept = outcome == RunOutcome::kComplete || outcome == RunOutcome::kStopped;
    if (!kept || m_name.empty()) return;
    m_failed = true;
    Write();
    m_written = m_folder / (m_name + ".shp");
    m_failed = false;
    m_animals.clear();
}

void ConvexPolygonLayer::Write() const {
    const auto created = m_services.Shapefiles->Create(
        m_folder, {m_name, platform::ShapeType::kPolygon, comparison::polygon_fields(), m_reference});
    const auto cursor = created->Insert();
    for (const Animal& animal : m_animals) comparison::insert_polygons(*cursor, animal.Name, animal.Polygons);
    cursor->Flush();
    m_services.Shapefiles->Publish(created);
}

}  // namespace wxl::analysis
