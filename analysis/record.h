#pragma once
// What an analysis run tells whoever started it, one animal at a time.

#include "analysis/coincidence.h"
#include "analysis/position_error.h"
#include "analysis/settings.h"
#include "comparison/adhoc_bandwidth.h"
#include "comparison/area_curve.h"
#include "comparison/minimum_convex_polygon.h"
#include "engine/search_profile.h"
#include "platform/distortion.h"
#include "platform/values.h"
#include "tracking_times/time_facts.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace wxl::analysis {

/// One isopleth: the density level that encloses a percentage of the volume.
struct IsoplethRecord {
    double Percent = 0.0;
    double Level = 0.0;               ///< density per square map unit x scaling factor
    std::optional<double> Area = {};  ///< square map units; absent where the level has no contour
    platform::Geometry Shape = {};    ///< the polygon, where a package of the ranges is written; null else
    std::int32_t Parts = 0;           ///< polygons that the area lies in; 0 where the level has no contour
    friend bool operator==(const IsoplethRecord&, const IsoplethRecord&) = default;
};

/// One distribution of one animal: with several bandwidths per animal there is one record for each.
struct AnimalRecord {
    platform::FieldValue Id;
    std::string NamingId;        ///< the part of the output names that stands for the animal
    std::string Subfolder = {};  ///< of the output folder, holds the datasets; empty: the folder itself
    std::int32_t SampleSize = 0;
    Coincidence Coincident;
    std::optional<double> Schoener;      ///< indices of independence; absent where not defined
    std::optional<double> SwihartSlade;  ///< the same
    BandwidthMethod Method = BandwidthMethod::kHref;
    double Value = 0.0;                ///< the bandwidth or proportion of a list; 0 for the other methods
    double Bandwidth = 0.0;            ///< units of the stored sample (unit variance when rescaled)
    double BandwidthMapUnits = 0.0;    ///< the same in map units
    double Href = 0.0;                 ///< units of the stored sample; 0 for a user-defined bandwidth
    bool Minimized = false;            ///< LSCV and BCV: the search ended at a minimum inside its range
    engine::SearchProfile Profile;     ///< LSCV and BCV: every row, also those that the search did not reach
    comparison::AdHocBandwidth AdHoc;  ///< of the ad hoc method: the search, proportion by proportion
    platform::RasterGeometry Grid;
    double Volume = 0.0;
    bool Adaptive = false;     ///< the kernel is
    double Reach = 0.0;        ///< bandwidths that kernels reach: the search radius / bandwidth in map units
    double BeyondReach = 0.0;  ///< share of the distribution beyond the kernels' reach
    double LostAtEdge = 0.0;   ///< share of it within their reach, but beyond the raster's edge
    std::string RasterName;
    std::vector<IsoplethRecord> Isopleths;
    std::vector<comparison::MinimumConvexPolygon> ConvexPolygons;  ///< one for each percentage asked for
    /// Area of the minimum convex polygon against the number of fixes, at some 50 numbers of those that were looked at;
    /// absent where the fixes are not known to stand in the order of time.
    std::optional<comparison::AreaCurve> Curve;
    std::optional<double> MaxEdgeValue;  ///< absent when no isopleths were made
    bool EdgeWarning = false;
    std::optional<double> CutTo;      ///< share of the distribution on its raster, where the raster cuts it below 99 %
    std::int32_t Status = 0;          ///< the calculator's status, 0 when the distribution was computed
    std::int32_t IsoplethStatus = 0;  ///< the isopleth object's status, 0 when isopleths were made or not asked for
    std::string Warnings;             ///< the calculator's warnings, each followed by a carriage return
    std::string Reason;               ///< what is wrong with the search, the distribution or its edge; one line
    std::vector<std::string> Files;   ///< datasets written, in the order of writing
    tracking_times::TimeFacts Times;  ///< of the animal's fixes
    /// What the projection does to sizes, at most over the fixes; absent in degrees and where it is not known.
    std::optional<platform::Distortion> Distorted;
    std::optional<PositionError> Error;  ///< of the positions, where the table tells it
    friend bool operator==(const AnimalRecord&, const AnimalRecord&) = default;
};

struct RunFrame;
struct GroupedFixes;

/// How a run ended.
enum class RunOutcome {
    kNone,       ///< there was none yet
    kComplete,   ///< every distribution was met, failing ones included
    kStopped,    ///< the user stopped it; what was done is kept
    kRefused,    ///< a check failed, before anything was written
    kCancelled,  ///< cancelled by an answer
    kFailed      ///< a run-time error
};

/// Listens to a run. The run keeps no record after it was handed over, so that a long batch costs no memory.
class IRunObserver {
public:
    virtual ~IRunObserver() = default;

    /// All questions are answered and the first distribution comes next. Both arguments outlive the run.
    virtual void RunBegins(const RunFrame& frame, const GroupedFixes& animals) = 0;

    /// A distribution was met, a failing one included.
    virtual void AnimalDone(const AnimalRecord& record) = 0;

    /// A run that had begun is over: the report is closed (or deleted, after a run-time error) and the output folder is
    /// still held. Called before the closing message.
    virtual void RunEnds(RunOutcome outcome) = 0;
};

}  // namespace wxl::analysis
