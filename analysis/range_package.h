#pragma once
#include "analysis/record.h"
#include "platform/packages.h"
#include "platform/services.h"

#include <filesystem>
#include <memory>
#include <string>

namespace wxl::analysis {

/// Name of the package, joined to the output folder as a file in it.
inline constexpr const char* kRangePackage = "\\RANGES.gpkg";

/// Writes all ranges of a run that asked for it into one GeoPackage at its end, complete or stopped: the layers
/// "isopleths" and "fixes" and the table "summary". Rows of earlier runs stay, but for those of rasters that the run
/// made anew and of animals whose fixes it read anew. The file appears whole or not at all; a file of that name that is
/// something else stays as it is, and a message box says so.
class RangePackage final : public IRunObserver {
public:
    /// The services outlive the object.
    explicit RangePackage(const platform::Services& services) : m_services(services) {}

    void RunBegins(const RunFrame& frame, const GroupedFixes& animals) override;
    void AnimalDone(const AnimalRecord& record) override;

    /// RuntimeError when the package cannot be written.
    void RunEnds(RunOutcome outcome) override;

    /// Whether the package of the last run was asked for and could not be written.
    bool Failed() const { return m_failed; }

    /// The package of the last run; empty when there is none.
    const std::filesystem::path& Written() const { return m_written; }

private:
    template <class Work>
    void Kept(Work&& work);
    void PutFixes(const GroupedFixes& animals);
    void PutIsopleths(const AnimalRecord& record);
    void PutSummary(const AnimalRecord& record);

    const platform::Services& m_services;
    platform::SpatialReference m_reference;
    std::filesystem::path m_file;
    std::unique_ptr<platform::IPackageWriter> m_writer;
    std::string m_fault;  ///< the first; the run goes on without a package
    std::int32_t m_faultNumber = 0;
    std::filesystem::path m_written;
    bool m_failed = false;
    bool m_isForeign = false;  ///< the file there is something else
};

}  // namespace wxl::analysis
