#pragma once
#include "analysis/animal_fixes.h"
#include "analysis/record.h"
#include "analysis/settings.h"
#include "analysis/statistics.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace wxl::analysis {

/// The indices of independence that a report repeats.
struct ShownIndependence {
    std::string IdField;
    std::vector<IndependenceRow> Rows;
};

/// Whoever starts a run: has what was known before it, shows how it goes, and may end it.
class IRunView {
public:
    virtual ~IRunView() = default;

    /// The fixes that the settings choose. Called once; RuntimeError where they cannot be read.
    virtual GroupedFixes TakeFixes() = 0;

    /// The largest reference bandwidth in map units, as it was last computed for whichever layer and field; 0 before.
    virtual double LargestHref() const = 0;

    /// The indices of independence, where they were computed.
    virtual std::optional<ShownIndependence> Independence() const = 0;

    /// Settings as the bytes of a settings file.
    virtual std::string SettingsRecord(const Settings& settings) const = 0;

    /// The spread of every animal's fixes, as the report has it.
    virtual void ShowVariances(std::span<const VarianceRow> rows) = 0;

    /// The user agreed to another buffer.
    virtual void ShowBuffer(const TypedNumber& buffer) = 0;

    /// What the run does now; "" when it is over.
    virtual void ShowStatus(const std::string& status) = 0;

    /// The run has told its observers that it is over; its closing message comes next.
    virtual void ShowEnd(RunOutcome outcome) = 0;

    /// How much of the run is done, 0 to 1.
    virtual void ShowProgress(double share) = 0;

    /// Whether the warnings of single animals stay out of message boxes; asked for each animal.
    virtual bool Silent() const = 0;

    /// Whether the run is to end after the present distribution.
    virtual bool StopRequested() const = 0;
};

}  // namespace wxl::analysis
