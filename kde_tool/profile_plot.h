#pragma once
#include "analysis/animal_fixes.h"
#include "analysis/settings.h"
#include "pictures/profile_picture.h"
#include "platform/messages.h"

#include <string>

namespace wxl::kde_tool {

/// The plot of one animal's bandwidth search as a control: the picture, or what to say in its place.
struct ProfilePlot {
    pictures::ProfilePicture Picture;
    std::string Hint;  ///< "" while the picture has something to show
    friend bool operator==(const ProfilePlot&, const ProfilePlot&) = default;
};

/// Searches the bandwidth of one animal by LSCV or BCV, as a run would, and shows the scores. `units` name the map
/// units. An animal that cannot be searched gives a hint that names it. Nothing is shown in message boxes; the host
/// gets a turn about every 50 ms.
ProfilePlot PlotSearch(const analysis::AnimalFixes& animal, analysis::BandwidthMethod method, bool rescale,
                       const std::string& units, platform::IHost* host);

}  // namespace wxl::kde_tool
