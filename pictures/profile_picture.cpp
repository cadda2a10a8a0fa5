#include "pictures/profile_picture.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace wxl::pictures {

void SetCurve(ProfilePicture& picture, engine::SearchProfile profile) {
    picture.Curve = engine::ReachedRows(std::move(profile));
    picture.Minimum = engine::SmallestScore(picture.Curve);
}

std::optional<ScoreRange> ShownScores(const ProfilePicture& picture) {
    constexpr double kHeightOfLastScore = 3.0;
    std::optional<ScoreRange> range;
    double last = 0.0;
    for (const engine::ProfileRow& row : picture.Curve) {
        if (!std::isfinite(row.Score)) continue;
        if (!range) range = ScoreRange{row.Score, row.Score, false};
        range->Lowest = std::min(range->Lowest, row.Score);
        range->Highest = std::max(range->Highest, row.Score);
        last = row.Score;
    }
    if (!range || !picture.Minimised) return range;
    const double enough = range->Lowest + kHeightOfLastScore * (last - range->Lowest);
    if (enough <= range->Lowest || range->Highest <= enough) return range;
    return ScoreRange{range->Lowest, enough, true};
}

}  // namespace wxl::pictures
