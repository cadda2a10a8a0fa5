#pragma once
// Which movement model a track asks for, and how large a range that model sees.

#include "movement_models/likelihood.h"
#include "movement_models/models.h"
#include "movement_models/track.h"
#include "platform/values.h"

#include <functional>
#include <limits>
#include <optional>
#include <string_view>
#include <vector>

namespace wxl::movement_models {

/// How parameters are estimated.
enum class Estimation {
    kMl,      ///< maximum likelihood
    kReml,    ///< restricted maximum likelihood for all parameters
    kHreml,   ///< time scales by ML, covariance by REML
    kPhreml,  ///< one Newton step from ML towards REML for the time scales, covariance by REML (Fleming et al. 2019)
};

/// "ML", "REML", "HREML", "pHREML".
std::string_view estimation_name(Estimation estimation);

enum class FitStatus {
    kFitted,
    kCollapsed,  ///< no better than a smaller model, or no optimum between the limits: never chosen
    kOnALine,    ///< an anisotropic model of fixes on one line
    kNoNumber,   ///< no likelihood: coordinates beyond what squares of numbers can hold
};

/// A range of areas or anything proportional, at 95 %.
struct Interval {
    double Low = 0.0;
    double Estimate = 0.0;
    double High = 0.0;
};

/// One of the eight models, fitted.
struct FittedModel {
    Autocorrelation Model;
    RangeShape Shape = RangeShape::kIsotropic;
    FitStatus Status = FitStatus::kFitted;
    ModelKind CollapsedTo = ModelKind::kIid;
    Estimation Used = Estimation::kMl;  ///< asked for, or what it fell back to

    // Of a fitted model:
    TimeScales Deviations = {};  ///< standard deviations of the time scales, seconds; 0 where not defined
    Matrix2 Covariance = {};     ///< square map units
    platform::Point Mean = {};   ///< map units
    double LogLikelihood = 0;    ///< by ML, at the estimate in use
    double Aicc = std::numeric_limits<double>::infinity();  ///< infinite for too few fixes
    double DofArea = 0.0;                                   ///< effective sample size of the area; 0 where not defined
    double DofMean = 0.0;                                   ///< of the mean

    int Parameters() const { return parameter_count(Model.Kind, Shape); }

    /// Area of the Gaussian range that holds this share (0 to 1) of the time, square map units.
    double GaussianArea(double share) const;

    /// Root of the mean squared speed, map units per second; nothing for models without a velocity.
    std::optional<double> Speed() const;
    friend bool operator==(const FittedModel&, const FittedModel&) = default;
};

/// Limits of an area with this effective sample size at 95 % (chi-square with 2 DOF degrees); nothing where DOF is not
/// defined (0) or not finite.
std::optional<Interval> area_interval(double area, double dof);

/// All eight models, best first: fitted ones by AICc, then the others.
struct ModelChoice {
    std::vector<FittedModel> Models;
    const FittedModel* Chosen() const;  ///< the best with a finite AICc; null when there is none
    const FittedModel& Of(ModelKind kind, RangeShape shape) const;  ///< of a choice that was made
};

/// Fits all eight models. The track has three fixes or more at more than one place.
/// @param asked kMl, kReml or kPhreml; where the restricted likelihood of a model grows with its time scales without
///   end, kReml falls back to pHREML, and where that is not defined to HREML, then ML
/// @param onALine whether anisotropic models are out
/// @param progress told the share of the work done, 0 to 1
ModelChoice choose_model(const Track& track, Estimation asked, bool onALine,
                         const std::function<void(double)>& progress = {});

/// The model at given time scales: mean, covariance (REML) and effective sample size are those of the fixes.
FittedModel model_at(const Track& track, const Autocorrelation& model, RangeShape shape);

}  // namespace wxl::movement_models
