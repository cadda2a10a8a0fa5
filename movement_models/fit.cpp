#include "movement_models/fit.h"

#include "movement_models/chi_square.h"
#include "movement_models/scale_search.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace wxl::movement_models {

namespace {

constexpr double kLeastGain = 1e-6;  ///< in log-likelihood over the nested models
constexpr double kEqualAicc = 1e-9;
constexpr double kLevel = 0.95;

bool is_restricted(Estimation estimation) {
    return estimation != Estimation::kMl;
}

Criterion criterion_of(Estimation estimation) {
    return is_restricted(estimation) ? Criterion::kReml : Criterion::kMl;
}

/// Number of fixes less the degree of freedom that REML gives to the mean.
double fixes_less(const Track& track, Estimation estimation) {
    return static_cast<double>(track.Size()) - (is_restricted(estimation) ? 1.0 : 0.0);
}

/// The second-order criterion (Hurvich and Tsai 1989), with the count of data that REML leaves.
double aicc(const Track& track, const FittedModel& fit) {
    const double data = 2.0 * static_cast<double>(track.Size());
    const double nu = fit.Parameters();
    const double k = nu + 2.0;
    const double rest = data - k - nu;
    if (rest <= 0.0) return std::numeric_limits<double>::infinity();
    const double left = is_restricted(fit.Used) ? data - 2.0 : data;
    return -2.0 * fit.LogLikelihood + left * 2.0 * k / rest;
}

double deviation(const Matrix2& hessian, std::size_t count, std::size_t index) {
    Vector2 unit{};
    unit.at(index) = 1.0;
    const auto column = solved(hessian, unit, count);
    return column ? std::sqrt(column->at(index)) : 0.0;
}

/// Effective sample size and deviations of the time scales, from the curvature of the criterion in use.
void measure_certainty(const Track& track, const SlopeSums& slopes, FittedModel& fit) {
    const auto linear = [&](const Expansion& e) { return in_linear_scales(e, fit.Model.Scales); };
    const Expansion p = linear(slopes.Penalty(fit.Shape, criterion_of(fit.Used)));
    const Expansion size = linear(slopes.LogSize(fit.Shape));
    const auto turned = solved(p.Hessian, size.Gradient, p.Count);
    if (!turned) return;
    fit.DofArea = 1.0 / (1.0 / fixes_less(track, fit.Used) + product(size.Gradient, *turned));
    if (p.Count > 0) fit.Deviations.Position = deviation(p.Hessian, p.Count, 0);
    if (p.Count > 1) fit.Deviations.Velocity = deviation(p.Hessian, p.Count, 1);
}

/// Everything that follows from time scales and method.
void complete(const Track& track, FittedModel& fit) {
    const FilterSums<double> sums = filter(track, fit.Model);
    fit.Covariance = profiled_covariance(sums, track.Size(), fit.Shape, criterion_of(fit.Used));
    fit.Mean = {track.Origin.X + sums.MeanX, track.Origin.Y + sums.MeanY};
    fit.DofMean = sums.Weight;
    fit.LogLikelihood = log_likelihood(sums, track.Size(), fit.Covariance, Criterion::kMl);
    fit.Aicc = aicc(track, fit);
    measure_certainty(track, SlopeSums(track, fit.Model), fit);
    const double size = fit.Covariance.Determinant();
    if (!std::isfinite(fit.LogLikelihood) || !std::isfinite(size) || !(size > 0.0)) fit.Status = FitStatus::kNoNumber;
}

bool has_restricted_bowl(const Track& track, const FittedModel& fit, const TimeScales& scales) {
    const Expansion p =
        in_linear_scales(SlopeSums(track, {fit.Model.Kind, scales}).Penalty(fit.Shape, Criterion::kReml), scales);
    return is_positive_definite(p.Hessian, p.Count);
}

/// The Newton step from the ML time scales towards REML; nothing where it is not defined.
std::optional<TimeScales> perturbed_scales(const Track& track, const FittedModel& fit) {
    const TimeScales& ml = fit.Model.Scales;
    const SlopeSums slopes(track, fit.Model);
    const Expansion p = in_linear_scales(slopes.Penalty(fit.Shape, Criterion::kMl), ml);
    const Expansion restricted = in_linear_scales(slopes.Penalty(fit.Shape, Criterion::kReml), ml);
    const auto step = solved(p.Hessian, restricted.Gradient, p.Count);
    if (!step) return std::nullopt;
    const TimeScales moved{ml.Position - (*step)[0], ml.Velocity - (*step)[1]};
    const bool two = p.Count == 2;
    if (!(moved.Position > 0.0) || (two && !(moved.Velocity > 0.0 && moved.Velocity < moved.Position)))
        return std::nullopt;
    if (!has_restricted_bowl(track, fit, moved)) return std::nullopt;
    return moved;
}

/// From the ML time scales to those of the method, with its fall-backs.
void apply_method(const Track& track, Estimation asked, FittedModel& fit) {
    fit.Used = asked;
    if (asked != Estimation::kPhreml || fit.Model.Kind == ModelKind::kIid) return;
    if (const auto moved = perturbed_scales(track, fit)) {
        fit.Model.Scales = *moved;
    } else {
        fit.Used = has_restricted_bowl(track, fit, fit.Model.Scales) ? Estimation::kHreml : Estimation::kMl;
    }
}

/// How many likelihoods a choice computes, about: for its progress.
constexpr double kWork = 540.0;

/// The fits of one shape, from the smallest model upwards.
class Choice {
public:
    Choice(const Track& track, Estimation asked, const std::function<void(double)>& progress)
        : m_track(track), m_asked(asked), m_progress(progress), m_tick([this] { Tick(); }) {}

    void Fit(ModelKind kind, const std::vector<RangeShape>& shapes, std::vector<FittedModel>& fits) {
        std::optional<ScaleGrid> grid;
        if (kind != ModelKind::kIid) grid.emplace(m_track, kind, m_tick);
        for (const RangeShape shape : shapes) {
            FittedModel fit{.Model = {kind, {}}, .Shape = shape};
            if (!grid || Search(*grid, fit)) {
                apply_method(m_track, m_asked, fit);
                complete(m_track, fit);
            }
            if (!grid) Remember(fit, PenaltyOf(fit.Model, shape));
            fits.push_back(fit);
        }
    }

    /// Whether this fit is better than all nested models and yet has no optimum: the restricted criterion may go on
    /// falling with ever longer time scales.
    bool IsEndless(const FittedModel& fit) const {
        return std::any_of(m_endless.begin(), m_endless.end(), [&](const FittedModel& endless) {
            return endless.Model.Kind == fit.Model.Kind && endless.Shape == fit.Shape;
        });
    }

    bool HasEndless() const { return !m_endless.empty(); }

private:
    Criterion SearchCriterion() const { return m_asked == Estimation::kReml ? Criterion::kReml : Criterion::kMl; }

    double PenaltyOf(const Autocorrelation& model, RangeShape shape) const {
        return penalty(filter(m_track, model), m_track.Size(), shape, SearchCriterion());
    }

    /// False, with the status set, where the model has no optimum of its own.
    bool Search(const ScaleGrid& grid, FittedModel& fit) {
        std::optional<Optimum> best;
        const std::vector<TimeScales> starts = grid.Starts(fit.Shape, SearchCriterion());
        for (const TimeScales& start : starts) {
            const auto found = minimum_from(m_track, fit.Model.Kind, fit.Shape, SearchCriterion(), start, m_tick);
            if (found && (!best || found->Penalty < best->Penalty)) best = found;
        }
        const Nested nested = BestNested(fit);
        if (!best && m_asked == Estimation::kReml && !starts.empty())
            NoteIfEndless(fit, PenaltyOf({fit.Model.Kind, starts.front()}, fit.Shape), nested);
        // p is -l without constants.
        if (!best || !(best->Penalty < nested.Penalty - kLeastGain)) {
            fit.Status = FitStatus::kCollapsed;
            fit.CollapsedTo = nested.Kind;
            return false;
        }
        fit.Model.Scales = best->Scales;
        Remember(fit, best->Penalty);
        return true;
    }

    struct Nested {
        ModelKind Kind = ModelKind::kIid;
        double Penalty = std::numeric_limits<double>::infinity();
    };

    void NoteIfEndless(const FittedModel& fit, double lowest, const Nested& nested) {
        if (!(lowest < nested.Penalty - kLeastGain)) return;
        m_endless.push_back(fit);
        Remember(fit, lowest);
    }

    Nested BestNested(const FittedModel& fit) const {
        const auto& fitted = m_fitted.at(static_cast<std::size_t>(fit.Shape));
        Nested best;
        for (const Nested& nested : fitted) {
            const bool isNested = nested.Kind == ModelKind::kIid || fit.Model.Kind == ModelKind::kOuf;
            if (isNested && nested.Penalty < best.Penalty) best = nested;
        }
        return best;
    }

    void Remember(const FittedModel& fit, double p) {
        m_fitted.at(static_cast<std::size_t>(fit.Shape)).push_back({fit.Model.Kind, p});
    }

    void Tick() {
        ++m_done;
        if (m_progress) m_progress(std::min(1.0, m_done / kWork));
    }

    const Track& m_track;
    Estimation m_asked;
    const std::function<void(double)>& m_progress;
    std::function<void()> m_tick;
    double m_done = 0.0;
    std::array<std::vector<Nested>, 2> m_fitted;  ///< by shape
    std::vector<FittedModel> m_endless;
};

bool is_better(const FittedModel& a, const FittedModel& b) {
    const bool aFits = a.Status == FitStatus::kFitted;
    const bool bFits = b.Status == FitStatus::kFitted;
    if (aFits != bFits) return aFits;
    return aFits && a.Aicc < b.Aicc;
}

/// Of those that are equal to the best the one with the fewest parameters comes first.
void order_by_aicc(std::vector<FittedModel>& models) {
    std::stable_sort(models.begin(), models.end(), is_better);
    auto best = models.begin();
    for (auto model = models.begin(); model != models.end(); ++model) {
        const bool equal = model->Status == FitStatus::kFitted && model->Aicc <= models.front().Aicc + kEqualAicc;
        if (equal && model->Parameters() < best->Parameters()) best = model;
    }
    std::rotate(models.begin(), best, best + 1);
}

}  // namespace

std::string_view estimation_name(Estimation estimation) {
    switch (estimation) {
        case Estimation::kMl:
            return "ML";
        case Estimation::kReml:
            return "REML";
        case Estimation::kHreml:
            return "HREML";
        case Estimation::kPhreml:
            break;
    }
    return "pHREML";
}

double FittedModel::GaussianArea(double share) const {
    return -2.0 * std::log1p(-share) * std::numbers::pi * std::sqrt(Covariance.Determinant());
}

std::optional<double> FittedModel::Speed() const {
    if (Model.Kind != ModelKind::kOuf && Model.Kind != ModelKind::kCritical) return std::nullopt;
    const double fast = Model.Kind == ModelKind::kOuf ? Model.Scales.Velocity : Model.Scales.Position;
    return std::sqrt(Covariance.Trace() / (Model.Scales.Position * fast));
}

std::optional<Interval> area_interval(double area, double dof) {
    if (!(dof > 0.0) || !std::isfinite(dof)) return std::nullopt;
    const double tail = 0.5 * (1.0 - kLevel);
    return Interval{area * chi_square_quantile(tail, 2.0 * dof) / (2.0 * dof), area,
                    area * chi_square_quantile(1.0 - tail, 2.0 * dof) / (2.0 * dof)};
}

const FittedModel* ModelChoice::Chosen() const {
    if (Models.empty() || Models.front().Status != FitStatus::kFitted) return nullptr;
    return std::isfinite(Models.front().Aicc) ? &Models.front() : nullptr;
}

const FittedModel& ModelChoice::Of(ModelKind kind, RangeShape shape) const {
    return *std::find_if(Models.begin(), Models.end(),
                         [&](const FittedModel& model) { return model.Model.Kind == kind && model.Shape == shape; });
}

ModelChoice choose_model(const Track& track, Estimation asked, bool onALine,
                         const std::function<void(double)>& progress) {
    std::vector<RangeShape> shapes{RangeShape::kIsotropic};
    if (!onALine) shapes.push_back(RangeShape::kAnisotropic);
    ModelChoice choice;
    Choice fits(track, asked, progress);
    for (const ModelKind kind : kModelKinds) {
        fits.Fit(kind, shapes, choice.Models);
        if (onALine)
            choice.Models.push_back(
                {.Model = {kind, {}}, .Shape = RangeShape::kAnisotropic, .Status = FitStatus::kOnALine});
    }
    if (fits.HasEndless()) {
        const ModelChoice perturbed = choose_model(track, Estimation::kPhreml, onALine);
        for (FittedModel& fit : choice.Models)
            if (fits.IsEndless(fit)) fit = perturbed.Of(fit.Model.Kind, fit.Shape);
    }
    order_by_aicc(choice.Models);
    return choice;
}

FittedModel model_at(const Track& track, const Autocorrelation& model, RangeShape shape) {
    FittedModel fit{.Model = model, .Shape = shape, .Used = Estimation::kReml};
    complete(track, fit);
    return fit;
}

}  // namespace wxl::movement_models
