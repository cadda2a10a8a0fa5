#pragma once
#include "apps/cli/fix_import.h"

namespace wxl::cli {

/// Tells what was found in each file; what is the same as in the one before is not repeated.
void report_files(const tracking::Tracking& data, const FixOptions& options, Console& console);

/// Tells what the numbers of times were taken for, and the days that makes them in all files.
void report_numbers(const tracking::Tracking& data, Console& console);

/// Tells how many rows were left out, each kind on its own, and how many fixes have no time.
void report_left_out(const tracking::Tracking& data, Console& console);

/// Says when fixes lie at 0, 0, where few animals go.
void note_zero_positions(const tracking::Tracking& data, Console& console);

/// Says when times may be none, as of clocks that were not set.
void note_odd_times(tracking::Tracking& data, Console& console);

/// Says why no UTM zone was taken, when that is for a few fixes that may be wrong.
void note_far_fixes(const FixOptions& options, const tracking::NamedSystem& from, const tracking::NamedSystem& to,
                    const tracking::Tracking& data, Console& console);

/// Tells how wrong lengths and areas are in the system of the fixes, and what to do where that is much.
void report_distortion(const ImportedFixes& fixes, Console& console);

/// RuntimeError 13 that tells why no fix is left.
[[noreturn]] void refuse_without_fixes(const FixOptions& options, const tracking::Tracking& data);

}  // namespace wxl::cli
