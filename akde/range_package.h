#pragma once
#include "akde/range_record.h"
#include "analysis/package_draft.h"
#include "platform/services.h"

#include <filesystem>
#include <string>
#include <vector>

namespace wxl::akde {

/// The tables that it writes.
std::vector<platform::PackageTable> package_tables();

/// Writes all ranges of a run that asks for it into one GeoPackage: the layers "isopleths" (each estimate and its
/// limits) and "fixes", and the table "summary" (a row for each animal and percentage; one of an animal without a
/// range). Rows of earlier runs stay, but for those of rasters that the run made anew and of animals whose fixes it
/// read anew. The file appears whole or not at all; one of that name that is something else, such as the package of a
/// run of independent fixes, stays as it is.
class RangePackage {
public:
    /// Begins with the fixes of the animals. All outlive the object.
    RangePackage(const RangeSettings& settings, const platform::Services& services, const TimedAnimals& animals);

    /// With the outlines of the record's isopleths.
    void Add(const RangeRecord& record);

    bool IsForeign() const { return m_package.IsForeign(); }

    /// What a package that is foreign means, and what to do.
    std::string ForeignText() const;

    /// Where the package stands; empty without one. RuntimeError when it cannot be written.
    std::filesystem::path Publish() { return m_package.Publish(); }

private:
    void PutIsopleths(const RangeRecord& record, platform::IPackageWriter& package) const;
    void PutSummary(const RangeRecord& record, platform::IPackageWriter& package) const;

    const RangeSettings& m_settings;
    const platform::SpatialReference& m_reference;
    analysis::PackageDraft m_package;
};

}  // namespace wxl::akde
