#pragma once
#include "analysis/package_draft.h"
#include "analysis/record.h"
#include "platform/services.h"

#include <filesystem>
#include <string>
#include <vector>

namespace wxl::analysis {

/// The tables that every run with a package writes.
std::vector<platform::PackageTable> package_tables();

/// Writes all ranges of a run that asked for it into one GeoPackage at its end, complete or stopped: the layers
/// "isopleths" and "fixes", the table "summary", and the layer "mcp" where minimum convex polygons are wanted. Rows of
/// earlier runs stay, but for those of rasters that the run made anew and of animals whose fixes it read anew. The file
/// appears whole or not at all; a file of that name that is something else stays as it is, and a message box says so.
class RangePackage final : public IRunObserver {
public:
    /// The services outlive the object.
    explicit RangePackage(const platform::Services& services) : m_services(services), m_package(services) {}

    void RunBegins(const RunFrame& frame, const GroupedFixes& animals) override;
    void AnimalDone(const AnimalRecord& record) override;

    /// RuntimeError when the package cannot be written.
    void RunEnds(RunOutcome outcome) override;

    /// Whether the package of the last run was asked for and could not be written.
    bool Failed() const { return m_failed; }

    /// The package of the last run; empty when there is none.
    const std::filesystem::path& Written() const { return m_written; }

private:
    void PutIsopleths(const AnimalRecord& record, platform::IPackageWriter& package) const;
    void PutConvexPolygons(const AnimalRecord& record, platform::IPackageWriter& package);

    const platform::Services& m_services;
    platform::SpatialReference m_reference;
    std::string m_prefix;
    PackageDraft m_package;
    std::filesystem::path m_written;
    bool m_failed = false;
    bool m_hasConvexPolygons = false;
    std::string m_lastConvex;  ///< naming ID of the animal whose polygons were put last
};

}  // namespace wxl::analysis
