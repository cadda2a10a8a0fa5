#pragma once
#include "pictures/axis.h"
#include "pictures/profile_picture.h"

#include <string>

namespace wxl::pictures {

/// Both scales of a profile's plot, with their titles. The scale of the bandwidths holds HREF and the bandwidth in use.
struct ProfileAxes {
    Axis Bandwidths;
    Axis Scores;
    std::string BandwidthTitle;  ///< such as "Bandwidth h (metre)"
    std::string ScoreTitle;      ///< such as "LSCV score (× 10⁻⁶)"
};

ProfileAxes AxesOf(const ProfilePicture& picture, const ScoreRange& scores);

/// The names of the marks with their bandwidths: "Minimum 0.86269", "HREF 14.438", "In use 0.86269".
std::string MinimumName(const ProfilePicture& picture);
std::string HrefName(const ProfilePicture& picture);
std::string BandwidthName(const ProfilePicture& picture);

/// The title above a plot: "5515868: LSCV profile".
std::string TitleOf(const ProfilePicture& picture);

/// What the plot shows, in sentences for those who do not see it.
std::string DescriptionOf(const ProfilePicture& picture);

/// What a reader of the plot must know: scores cut off, a search without a minimum. "" when there is nothing.
std::string NoteOf(const ProfilePicture& picture, const ScoreRange& scores);

}  // namespace wxl::pictures
