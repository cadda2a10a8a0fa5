#pragma once
// A run: home ranges of all animals of a layer.

#include "akde/animal_range.h"
#include "akde/listener.h"
#include "akde/timed_animals.h"
#include "platform/clock.h"
#include "platform/services.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace wxl::akde {

/// Which grid a raster has.
enum class RangeExtent {
    kMinimum,   ///< each animal's own
    kFull,      ///< one for all animals, around all fixes
    kReference  ///< that of a raster
};

struct RangeSettings {
    TimedFields Fields;
    FitSettings Fit;
    std::filesystem::path Folder;  ///< exists
    std::string Prefix;
    std::optional<double> CellSize;  ///< map units, above 0; nothing: as advised
    double Scaling = 1e6;            ///< above 0
    RangeExtent Extent = RangeExtent::kMinimum;
    std::optional<double> Buffer;        ///< of the full extent, map units; nothing: as far as the widest kernel
    platform::RasterGeometry Reference;  ///< of the reference
    std::string ReferenceName;           ///< how the user called it
    std::string RasterFormat = "GRID";   ///< "GRID", "GTiff"
    std::vector<double> Percentages = {95.0, 50.0};  ///< above 0, below 100
    bool Optimal = false;                            ///< weights
    bool Lines = false;                              ///< isopleths as lines too
    bool Overwrite = false;

    // Told on the page only:
    std::string LayerName;
    std::string Source;  ///< of the layer; empty: no file that is known
    std::string Where;   ///< the condition that the fixes meet; empty: none
    bool SelectedOnly = false;
};

/// What became of one animal.
struct RangeRecord {
    platform::FieldValue Id;
    std::string NamingId;
    std::size_t Given = 0;  ///< fixes
    std::size_t Used = 0;
    std::string First;  ///< time of the first used fix; "" without one
    std::string Last;
    double Duration = 0.0;  ///< seconds
    std::vector<movement_models::FittedModel> Models;
    std::optional<movement_models::FittedModel> Chosen;
    bool GivenModel = false;
    std::vector<movement_models::VariogramPoint> Variogram;
    movement_models::Verdict Verdict;
    std::vector<std::string> Notes;
    std::string Reason;  ///< why there is no range; "" where there is one

    // Of a range:
    movement_models::Matrix2 Matrix;  ///< of the kernel, square map units
    double H = 0.0;                   ///< bandwidth in units of the range
    double DofBandwidth = 0.0;        ///< independent fixes that would ask for it
    double Bias = 0.0;
    double EffectiveWeights = 0.0;
    std::size_t ZeroWeights = 0;
    platform::RasterGeometry Grid;
    double Volume = 0.0;         ///< share of the distribution on the raster
    double HighestAtEdge = 0.0;  ///< density per square map unit
    std::vector<RangeIsopleth> Isopleths;
    std::string RasterName;
    std::vector<std::string> Files;

    bool IsDone() const { return Reason.empty(); }

    /// The area of a percentage at a bound ("low", "est", "high"); nothing where it is not defined.
    std::optional<double> AreaAt(double percent, const std::string& bound) const;

    /// Whether an outline is cut by the edge of the raster.
    bool IsCut() const;
};

/// Name of the summary in the output folder.
inline constexpr const char* kRangeSummary = "WXL_AKDE_SUMMARY.csv";

/// What stands in the output folder under the names of the files that a run would write for these animals.
std::vector<std::filesystem::path> standing_outputs(const RangeSettings& settings, const TimedAnimals& animals,
                                                    const platform::Services& services);

/// What a run came to.
struct RangeOutcome {
    std::size_t Done = 0;  ///< animals met
    std::size_t Failed = 0;
    bool Stopped = false;
    std::filesystem::path Summary;
};

/// Fits, smooths and writes animal by animal, and the summary at the end, of a stopped run too.
class RangeRun {
public:
    /// All outlive the object.
    RangeRun(const RangeSettings& settings, const platform::Services& services, IListener& listener)
        : m_settings(settings), m_services(services), m_listener(listener) {}

    /// `met` is told of every animal. RuntimeError 58 when a name is taken (and Overwrite is not set), 70 while another
    /// run writes into the folder; nothing is written then. A fault of one animal is its Reason.
    RangeOutcome Run(const TimedAnimals& animals, const std::function<void(const RangeRecord&)>& met);

private:
    /// An animal that waits for its grid.
    struct Prepared {
        RangeRecord Record;
        Smoothing Kernels;
    };
    Prepared Prepare(const TimedAnimal& animal, bool numberTimes) const;
    AnimalRange Smooth(const Prepared& prepared, const platform::RasterGeometry* grid) const;
    void Finish(Prepared& prepared, const platform::RasterGeometry* grid,
                const platform::SpatialReference& reference) const;
    void ReportGrid(const RangeRecord& record) const;
    std::vector<Prepared> PrepareAll(const TimedAnimals& animals, RangeOutcome& outcome) const;

    const RangeSettings& m_settings;
    const platform::Services& m_services;
    IListener& m_listener;
};

}  // namespace wxl::akde
