#pragma once
#include "engine/search_profile.h"

#include <optional>
#include <string>

namespace wxl::pictures {

/// What a picture of a bandwidth search shows: the scores over the bandwidths, and the bandwidths of interest. All
/// bandwidths are in the units of the searched sample.
struct ProfilePicture {
    std::string Title;                          ///< such as the animal's ID; any text
    std::string Method;                         ///< "LSCV" or "BCV"
    std::string Units;                          ///< of the bandwidths, such as "metre"; "" when unknown
    engine::SearchProfile Curve;                ///< in the order of evaluation, without the rows not reached
    std::optional<engine::ProfileRow> Minimum;  ///< the smallest score; nothing without a score that is a number
    bool Minimised = false;                     ///< whether the search ended at a minimum inside its range
    std::optional<double> Href;                 ///< the reference bandwidth
    std::optional<double> Bandwidth;            ///< the bandwidth in use
    friend bool operator==(const ProfilePicture&, const ProfilePicture&) = default;
};

/// Takes the scores over: Curve without the unused rows (0, 0) at the end, Minimum.
void SetCurve(ProfilePicture& picture, engine::SearchProfile profile);

/// The part of the scores worth showing. A search that found its minimum often begins with scores many times above all
/// others, which would press the minimum flat: then the picture ends at three times the height of the last score above
/// the minimum, and higher scores leave it at the top.
struct ScoreRange {
    double Lowest = 0.0;
    double Highest = 0.0;
    bool Cut = false;  ///< scores above Highest are not shown
    friend bool operator==(const ScoreRange&, const ScoreRange&) = default;
};

/// Nothing without a score that is a number.
std::optional<ScoreRange> ShownScores(const ProfilePicture& picture);

/// How a picture is fitted into its surroundings.
struct SvgOptions {
    /// Begins the ids inside the picture; each picture of one page needs its own. Letters, digits, "-" and "_" are
    /// kept.
    std::string IdPrefix = "profile";
    int Width = 640;  ///< user units; also the size in pixels of a picture that stands alone
};

/// The picture as an SVG element (UTF-8, no XML declaration) that stands alone as a file and inside an HTML page.
///
/// Accessible: role "img", a title and a description in words, text as text. Its colours are presentation attributes
/// that any viewer understands; browsers take the page's CSS variables --wxl-paper, --wxl-ink, --wxl-faint,
/// --wxl-curve, --wxl-href and --wxl-used where they are set, and follow a preference for dark pages otherwise. The
/// marks differ in shape as well as in colour. A curve without scores gives a picture that says so.
std::string ProfileSvg(const ProfilePicture& picture, const SvgOptions& options = {});

}  // namespace wxl::pictures
