#pragma once
#include "platform/services.h"
#include "results_page/overlap_run.h"

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace wxl::results_page {

/// The files of a comparison in an output folder: WXL_OVERLAP.csv, the heat map WXL_OVERLAP.svg (of up to
/// comparison::kAllPairs animals), the page WXL_OVERLAP_ANALYSIS.html, and the layer "overlap" of RANGES.gpkg.
class OverlapFiles {
public:
    /// The services outlive the object.
    OverlapFiles(const platform::Services& services, std::filesystem::path folder)
        : m_services(services), m_folder(std::move(folder)) {}

    /// All places that are written to.
    std::vector<std::filesystem::path> Places() const;

    /// RuntimeError 58 where a result of an earlier comparison stands.
    void RefuseStanding() const;

    /// What was written, and what could not be.
    struct Written {
        std::filesystem::path Page;     ///< empty: none
        std::filesystem::path Package;  ///< empty: none
        std::vector<std::string> Warnings;
    };

    /// Writes all files, each whole or not at all, in place of those of an earlier comparison; the time of the run's
    /// end is that of the call. RuntimeError where one cannot be written.
    Written Write(OverlapRun run, const std::function<void(double)>& progress) const;

private:
    std::filesystem::path Csv() const { return m_folder / "WXL_OVERLAP.csv"; }
    std::filesystem::path Picture() const { return m_folder / "WXL_OVERLAP.svg"; }
    std::filesystem::path Page() const;
    std::filesystem::path Package() const;

    const platform::Services& m_services;
    std::filesystem::path m_folder;
};

}  // namespace wxl::results_page
