#pragma once
// The lines of the analysis report, as functions of what they tell. No line carries its line end.

#include "kde_tool/run_inputs.h"
#include "kde_tool/run_record.h"
#include "platform/clock.h"

#include <optional>
#include <string>
#include <vector>

namespace wxl::kde_tool {

using Lines = std::vector<std::string>;

/// A table row of the report: cells as they stand in the dialog's table, without the naming ID column.
using TableRow = std::vector<std::string>;

/// Input and statistics of a run.
struct RunHeader {
    platform::DateTime Start;
    std::string InputName = {};
    std::string IdField = {};
    bool TextIds = false;
    bool SelectedOnly = false;
    std::vector<std::string> Ids = {};
    std::vector<std::string> NamingIds = {};                 ///< one per ID
    std::string IndependenceField = {};                      ///< the ID field of the independence table
    std::optional<std::vector<TableRow>> Independence = {};  ///< absent when the table was not calculated
    std::vector<TableRow> Variances = {};
};

/// What separates a run from the one before it in the same file.
Lines separator_lines();

/// From the title to the variances.
Lines header_lines(const RunHeader& header);

/// From "KERNEL SETTINGS" to the scaling factor.
Lines kernel_settings_lines(const RunInputs& inputs);

/// Extent, isopleths and the heading of the animals' blocks.
Lines extent_settings_lines(const RunInputs& inputs);

/// An animal's block up to the outcome of its kernel. `textIds`: its naming ID was generated.
Lines animal_lines(const AnimalRecord& record, const RunInputs& inputs, bool textIds);

/// The end of an animal's block, after its isopleths.
Lines animal_end_lines(const AnimalRecord& record);

Lines finish_lines(const platform::DateTime& finish);

/// Shown and written when a distribution reaches the edge of its raster.
extern const char* const kEdgeWarningText;

}  // namespace wxl::kde_tool
