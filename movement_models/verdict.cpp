#include "movement_models/verdict.h"

#include "platform/text.h"

#include <cmath>

namespace wxl::movement_models {

namespace {

/// With this many significant digits.
std::string rounded(double value, int digits) {
    if (!std::isfinite(value) || value == 0.0) return platform::NumberText(value);
    const double scale = std::pow(10.0, digits - 1 - static_cast<int>(std::floor(std::log10(std::abs(value)))));
    return platform::NumberText(scale > 1e300 ? value : std::round(value * scale) / scale);
}

std::string counted(std::size_t count, const std::string& one, const std::string& several) {
    return std::to_string(count) + " " + (count == 1 ? one : several);
}

std::string size_text(double dof) {
    return rounded(dof, 3) + (rounded(dof, 3) == "1" ? " effective fix" : " effective fixes");
}

void add(std::string& text, const std::string& sentence) {
    text += (text.empty() ? "" : " ") + sentence;
}

std::vector<std::string> warnings_of(const PreparedTrack& track, const FittedModel& fit, bool rises) {
    std::vector<std::string> warnings;
    if (!(fit.DofArea > 0.0)) {
        warnings.emplace_back("The effective sample size is not defined, so that the area has no limits.");
    } else if (fit.DofArea < kHardlyCrossed) {
        warnings.push_back("The range is hardly crossed: the record is worth " + size_text(fit.DofArea) +
                           ". Look at the variogram before using the area.");
    } else if (fit.DofArea < kFewEffectiveFixes) {
        warnings.push_back("The data are few: the record is worth " + size_text(fit.DofArea) + ".");
    }
    if (fit.Model.Scales.Position > track.Fixes.Duration())
        warnings.push_back("The range was not resolved: crossing it takes " + duration_text(fit.Model.Scales.Position) +
                           ", longer than the record of " + duration_text(track.Fixes.Duration()) + ".");
    if (rises)
        warnings.emplace_back("The variogram does not level off: within this record positions still drift apart.");
    return warnings;
}

}  // namespace

std::string duration_text(double seconds) {
    if (seconds < 90.0) return rounded(seconds, 3) + " s";
    if (seconds < 5400.0) return rounded(seconds / 60.0, 3) + " min";
    if (seconds < 129600.0) return rounded(seconds / 3600.0, 3) + " h";
    return rounded(seconds / 86400.0, 3) + " days";
}

std::string problem_text(const PreparedTrack& track, const std::string& firstConflict) {
    switch (track.Problem) {
        case TrackProblem::kNone:
            break;
        case TrackProblem::kTooFewFixes:
            return (track.Order.size() == 1 ? "There is " : "There are ") +
                   counted(track.Order.size(), "fix", "fixes") + " of different times: at least 3 are needed.";
        case TrackProblem::kNeverMoved:
            return "All fixes lie at one place: the animal never moved.";
        case TrackProblem::kTwoPlacesAtOneTime:
            return counted(track.Conflicts, "fix has", "fixes have") +
                   " the time of another fix at another place (the first: " + firstConflict +
                   "): no model of movement has a likelihood. Remove duplicates in time first (wxl remove-duplicates "
                   "--by time2), or name a field whose times tell them apart.";
    }
    return {};
}

std::vector<std::string> notes_on(const PreparedTrack& track, const FittedModel& fit, Estimation asked) {
    std::vector<std::string> notes;
    if (!track.Sorted) notes.emplace_back("The fixes were sorted by time.");
    if (track.Repeats > 0)
        notes.push_back(counted(track.Repeats, "exact repeat", "exact repeats") +
                        " of another fix (same time and place) counted once.");
    if (track.OnALine)
        notes.emplace_back("All fixes lie on one line: anisotropic models are out, isotropic ones hold.");
    if (fit.Used != asked)
        notes.push_back("The estimate by " + std::string(estimation_name(asked)) + " is not defined here: it is by " +
                        std::string(estimation_name(fit.Used)) + ".");
    return notes;
}

Verdict verdict_of(const PreparedTrack& track, const FittedModel& fit, bool rises) {
    Verdict verdict;
    verdict.Warnings = warnings_of(track, fit, rises);
    const bool crossed = fit.DofArea >= kHardlyCrossed && fit.Model.Scales.Position <= track.Fixes.Duration();
    verdict.Resident = crossed && !rises;
    if (verdict.Resident)
        verdict.Text = fit.Model.Kind == ModelKind::kIid
                           ? "Resident: the fixes are independent and worth " + size_text(fit.DofArea) + "."
                           : "Resident: the range is crossed in about " + duration_text(fit.Model.Scales.Position) +
                                 ", and the record is worth " + size_text(fit.DofArea) + ".";
    else
        verdict.Text = "Not shown to be resident.";
    for (const std::string& warning : verdict.Warnings) add(verdict.Text, warning);
    return verdict;
}

}  // namespace wxl::movement_models
