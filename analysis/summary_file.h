#pragma once
// Summaries of results as comma-separated text (RFC 4180, UTF-8), to which every run in a folder adds its rows.

#include "platform/services.h"

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace wxl::analysis {

/// How the summaries of one estimator begin; their column "raster" names what a row tells of.
struct SummaryColumns {
    std::string_view Header;              ///< the first line, without its line end
    std::string_view EarlierHeader = {};  ///< of summaries with fewer columns, the beginning of Header; empty: none
};

/// A row, ended by CR LF, of texts of any encoding. A spreadsheet computes nothing from it.
std::string summary_line(const std::vector<std::string>& cells);

/// `earlier` without the rows of `replaced` rasters, ended by CR LF; the header alone for an empty text. Rows are kept
/// to the byte; those under the earlier header get the other columns, empty. Nothing when the text is not such a
/// summary: another header, or a quote that is never closed.
std::optional<std::string> kept_summary(const SummaryColumns& columns, std::string_view earlier,
                                        const std::set<std::string>& replaced);

/// The summary of a run on its way into the file of its folder. Rows of earlier runs stay, but for those of rasters
/// that the run told of anew. The file appears whole or not at all; one of that name that is no summary stays.
class SummaryFile {
public:
    /// The services outlive the object.
    SummaryFile(const platform::Services& services, SummaryColumns columns)
        : m_services(services), m_columns(columns) {}

    /// Begins anew, for that file.
    void Begin(std::filesystem::path file);

    /// Rows of one raster, as it stands in them.
    void Add(const std::string& rows, const std::string& raster);

    /// False when the file is something else and stays as it is. RuntimeError when it cannot be read or written.
    bool Publish();

    const std::filesystem::path& File() const { return m_file; }

    /// What a file that is something else means.
    std::string ForeignText() const;

private:
    std::string Earlier() const;

    const platform::Services& m_services;
    SummaryColumns m_columns;
    std::filesystem::path m_file;
    std::string m_rows;
    std::set<std::string> m_rasters;
};

}  // namespace wxl::analysis
