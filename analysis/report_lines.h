#pragma once
// The lines of the analysis report, as functions of what they tell. No line carries its line end.

#include "analysis/record.h"
#include "analysis/settings.h"
#include "platform/clock.h"

#include <optional>
#include <string>
#include <vector>

namespace wxl::analysis {

using Lines = std::vector<std::string>;

/// A table row of the report: the animal's ID, and the cells that belong to it.
using TableRow = std::vector<std::string>;

/// Input and statistics of a run.
struct RunHeader {
    platform::DateTime Start;
    std::string InputName = {};
    std::string IdField = {};
    bool TextIds = false;
    bool SelectedOnly = false;
    std::vector<std::string> Remarks = {};  ///< on the points; each becomes a line in brackets
    std::vector<std::string> Ids = {};
    std::vector<std::string> NamingIds = {};                 ///< one per ID
    std::string IndependenceField = {};                      ///< the ID field of the independence table
    std::optional<std::vector<TableRow>> Independence = {};  ///< absent when it was not calculated
    std::vector<TableRow> Variances = {};
};

/// What separates a run from the one before it in the same file.
Lines separator_lines();

/// What is odd about the points of a run, in sentences without a full stop: some without an ID, a layer in degrees.
std::vector<std::string> remarks_of(const std::string& idField, std::int64_t withoutId, bool inDegrees);

/// From the title to the variances.
Lines header_lines(const RunHeader& header);

/// From "KERNEL SETTINGS" to the scaling factor.
Lines kernel_settings_lines(const Settings& settings);

/// Extent, isopleths and the heading of the animals' blocks.
Lines extent_settings_lines(const Settings& settings);

/// An animal's block up to the outcome of its kernel. `textIds`: its naming ID was generated.
Lines animal_lines(const AnimalRecord& record, const Settings& settings, bool textIds);

/// The end of an animal's block, after its isopleths.
Lines animal_end_lines(const AnimalRecord& record);

Lines finish_lines(const platform::DateTime& finish);

/// Shown and written when a distribution reaches the edge of its raster.
extern const char* const kEdgeWarningText;

}  // namespace wxl::analysis
