#include "results_page/overlap_files.h"

#include "akde/range_package.h"
#include "analysis/output_names.h"
#include "analysis/overlap_layer.h"
#include "analysis/package_draft.h"
#include "analysis/range_package.h"
#include "analysis/range_tables.h"
#include "platform/runtime_error.h"
#include "platform/text_table.h"
#include "results_page/overlap_page.h"
#include "results_page/overlap_pictures.h"

#include <utility>

namespace wxl::results_page {
namespace {

namespace error_number = platform::error_number;

/// All that runs put into a package of ranges.
std::vector<platform::PackageTable> tables_of_analyses() {
    std::vector<platform::PackageTable> tables = analysis::package_tables();
    for (platform::PackageTable& table : akde::package_tables()) tables.push_back(std::move(table));
    tables.push_back(analysis::convex_polygon_table());
    return tables;
}

std::string left_out_text(std::size_t leftOut) {
    return "RANGES.gpkg has the " + std::to_string(analysis::kMostOverlaps) + " nearest common areas; " +
           std::to_string(leftOut) + " more are in the table alone";
}

}  // namespace

std::filesystem::path OverlapFiles::Page() const {
    return m_folder / kOverlapPageFile;
}

std::filesystem::path OverlapFiles::Package() const {
    return analysis::file_in_folder(m_folder, analysis::kRangePackage);
}

std::vector<std::filesystem::path> OverlapFiles::Places() const {
    return {Csv(), Picture(), Page(), Package()};
}

void OverlapFiles::RefuseStanding() const {
    for (const std::filesystem::path& file : {Csv(), Picture(), Page()})
        if (m_services.Files->FileExists(file))
            platform::Raise(error_number::kFileExists,
                            file.string() + " exists: choose another folder, or give --overwrite");
    if (m_services.Packages->HasRows(Package(), analysis::overlap_table().Name))
        platform::Raise(error_number::kFileExists, Package().string() +
                                                       " has a layer overlap already: choose another folder, or give "
                                                       "--overwrite");
}

OverlapFiles::Written OverlapFiles::Write(OverlapRun run, const std::function<void(double)>& progress) const {
    Written written;
    const comparison::ComparedRanges& ranges = *run.Ranges;
    const analysis::OverlapLayer layer =
        analysis::write_overlap_layer(*m_services.Packages, {Package(), run.Units.Reference, tables_of_analyses()},
                                      ranges, *run.Indices.front(), progress);
    if (!layer.IsForeign) written.Package = Package();
    if (layer.IsForeign)
        written.Warnings.push_back("Warning: " + Package().string() +
                                   " is not a package of this tool's ranges in the coordinate system of the ranges, "
                                   "and was left as it is; no layer of common areas was written.");
    if (layer.LeftOut > 0) written.Warnings.push_back(left_out_text(layer.LeftOut));
    if (ranges.Animals.size() <= comparison::kAllPairs)
        platform::PublishFile(
            *m_services.Files, Picture(),
            pictures::HeatMapSvg(heat_map(ranges, index_sections(ranges, run.Indices).front(), all_animals(ranges))));
    platform::PublishFile(*m_services.Files, Csv(), platform::csv_text(long_table(ranges, run.Indices)));
    run.Warnings.insert(run.Warnings.end(), written.Warnings.begin(), written.Warnings.end());
    run.Finish = m_services.Clock->Now();
    written.Page = write_overlap_page(*m_services.Files, m_folder, run);
    if (written.Page.empty())
        written.Warnings.push_back("Warning: " + Page().string() +
                                   " is not a page of this tool and was left as it is; no page was written.");
    return written;
}

}  // namespace wxl::results_page
