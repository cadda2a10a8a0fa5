#pragma once
#include "analysis/record.h"
#include "platform/services.h"

#include <filesystem>
#include <string>
#include <vector>

namespace wxl::analysis {

/// Writes the minimum convex polygons of a run that asked for them as one shapefile in the output folder, at its end,
/// complete or stopped. It appears whole or not at all. A run that was cancelled or failed leaves none.
class ConvexPolygonLayer final : public IRunObserver {
public:
    /// The services outlive the object.
    explicit ConvexPolygonLayer(const platform::Services& services) : m_services(services) {}

    void RunBegins(const RunFrame& frame, const GroupedFixes& animals) override;
    void AnimalDone(const AnimalRecord& record) override;

    /// RuntimeError when the shapefile cannot be written.
    void RunEnds(RunOutcome outcome) override;

    /// Whether the shapefile of the last run was asked for and could not be written.
    bool Failed() const { return m_failed; }

    /// The shapefile of the last run; empty when there is none.
    const std::filesystem::path& Written() const { return m_written; }

private:
    struct Animal {
        std::string NamingId;
        std::string Name;
        std::vector<comparison::MinimumConvexPolygon> Polygons;
    };

    void Write() const;

    const platform::Services& m_services;
    std::filesystem::path m_folder;
    std::string m_name;  ///< of the shapefile; empty: none is wanted
    platform::SpatialReference m_reference;
    std::vector<Animal> m_animals;
    std::filesystem::path m_written;
    bool m_failed = false;
};

}  // namespace wxl::analysis
