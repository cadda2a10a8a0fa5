#include "pictures/profile_axes.h"

#include "pictures/xml_text.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace wxl::pictures {

namespace {

constexpr std::size_t kShownUnits = 24;
constexpr int kDigits = 5;  ///< of the bandwidths in words

std::string with_units(double bandwidth, const ProfilePicture& picture) {
    return ShortNumber(bandwidth, kDigits) + (picture.Units.empty() ? "" : " " + picture.Units);
}

Axis bandwidth_axis(const ProfilePicture& picture) {
    std::vector<double> bandwidths;
    for (const engine::ProfileRow& row : picture.Curve) bandwidths.push_back(row.Bandwidth);
    for (const auto& mark : {picture.Href, picture.Bandwidth})
        if (mark) bandwidths.push_back(*mark);
    std::erase_if(bandwidths, [](double bandwidth) { return !std::isfinite(bandwidth); });
    if (bandwidths.empty()) return MakeAxis(0.0, 1.0, 6, 0.0);
    const auto [low, high] = std::minmax_element(bandwidths.begin(), bandwidths.end());
    return MakeAxis(*low, *high, 6, 0.02);
}

Axis score_axis(const ScoreRange& scores) {
    Axis axis = MakeAxis(scores.Lowest, scores.Highest, 6, 0.05);
    // What leaves a cut picture at the top must reach its edge.
    if (scores.Cut) axis.To = scores.Highest;
    std::erase_if(axis.Ticks, [&](const Tick& tick) { return tick.Value > axis.To; });
    return axis;
}

std::string score_title(const ProfilePicture& picture, const Axis& axis) {
    return picture.Method + " score" + (axis.Factor.empty() ? "" : " (× " + axis.Factor + ")");
}

std::string bandwidth_title(const ProfilePicture& picture, const Axis& axis) {
    const std::string units = Shortened(picture.Units, kShownUnits);
    if (axis.Factor.empty()) return units.empty() ? "Bandwidth h" : "Bandwidth h (" + units + ")";
    return "Bandwidth h (× " + axis.Factor + (units.empty() ? "" : " " + units) + ")";
}

std::string named(const char* name, const std::optional<double>& bandwidth) {
    return std::string(name) + (bandwidth ? " " + ShortNumber(*bandwidth, kDigits) : "");
}

}  // namespace

ProfileAxes AxesOf(const ProfilePicture& picture, const ScoreRange& scores) {
    ProfileAxes axes{bandwidth_axis(picture), score_axis(scores), {}, {}};
    axes.BandwidthTitle = bandwidth_title(picture, axes.Bandwidths);
    axes.ScoreTitle = score_title(picture, axes.Scores);
    return axes;
}

std::string MinimumName(const ProfilePicture& picture) {
    return named("Minimum", picture.Minimum ? std::optional(picture.Minimum->Bandwidth) : std::nullopt);
}

std::string HrefName(const ProfilePicture& picture) {
    return named("HREF", picture.Href);
}

std::string BandwidthName(const ProfilePicture& picture) {
    return named("In use", picture.Bandwidth);
}

std::string TitleOf(const ProfilePicture& picture) {
    return picture.Title + (picture.Title.empty() ? "" : ": ") + picture.Method + " profile";
}

std::string DescriptionOf(const ProfilePicture& picture) {
    if (!picture.Minimum) return "There are no scores to show.";
    std::string text = picture.Method + " scores of " + std::to_string(picture.Curve.size()) + " bandwidths from " +
                       with_units(picture.Curve.front().Bandwidth, picture) + " to " +
                       with_units(picture.Curve.back().Bandwidth, picture) + ". The smallest score is at " +
                       with_units(picture.Minimum->Bandwidth, picture) +
                       (picture.Minimised ? "." : "; the search ended without a minimum inside its range.");
    if (picture.Href) text += " HREF is " + with_units(*picture.Href, picture) + ".";
    if (picture.Bandwidth) text += " The bandwidth in use is " + with_units(*picture.Bandwidth, picture) + ".";
    return text;
}

std::string NoteOf(const ProfilePicture& picture, const ScoreRange& scores) {
    if (scores.Cut) return "Scores above " + ShortNumber(scores.Highest, 3) + " lie outside the picture.";
    return picture.Minimised ? "" : "The search ended without a minimum inside its range.";
}

}  // namespace wxl::pictures
