#include "akde/animal_models.h"

#include "analysis/diagnosis.h"
#include "platform/text.h"

#include <cmath>
#include <cstdint>
#include <string>

namespace wxl::akde {

namespace {

using namespace movement_models;

std::optional<ModelKind> kind_of(const std::string& name) {
    for (const ModelKind kind : kModelKinds)
        if (name == model_name(kind)) return kind;
    return std::nullopt;
}

std::optional<TimeScales> scales_of(ModelKind kind, const std::string& numbers) {
    const std::vector<std::string> pieces = platform::Split(numbers, ',');
    const auto wanted = static_cast<std::size_t>(scale_count(kind));
    if (pieces.size() != wanted) return std::nullopt;
    std::vector<double> scales;
    for (const std::string& piece : pieces) {
        if (!platform::IsNumeric(piece)) return std::nullopt;
        scales.push_back(platform::NumberFromText(piece));
        if (!(scales.back() > 0.0)) return std::nullopt;
    }
    if (wanted == 2 && !(scales[1] < scales[0])) return std::nullopt;
    return TimeScales{scales[0], wanted == 2 ? scales[1] : 0.0};
}

void choose(AnimalModels& fitted, const FitSettings& settings, IListener& listener) {
    const std::string what = "fitting models to " + platform::ValueText(fitted.Animal->Id);
    ModelChoice choice = choose_model(fitted.Track.Fixes, settings.Method, fitted.Track.OnALine,
                                      [&](double share) { listener.Progress(share, what); });
    if (const FittedModel* chosen = choice.Chosen()) fitted.Chosen = *chosen;
    fitted.Models = std::move(choice.Models);
    listener.EndProgress();
}

void take_given(AnimalModels& fitted, const GivenModel& given) {
    fitted.Given = true;
    if (fitted.Track.OnALine && given.Shape == RangeShape::kAnisotropic) {
        fitted.Verdict.Text =
            "All fixes lie on one line, so that the range has no ellipse: give the model with \":isotropic\".";
        return;
    }
    fitted.Models = {model_at(fitted.Track.Fixes, given.Model, given.Shape)};
    if (fitted.Models.front().Status == FitStatus::kFitted) fitted.Chosen = fitted.Models.front();
}

/// When the first two fixes stand at two places.
std::string first_conflict(const AnimalModels& fitted, bool numberTimes) {
    if (fitted.Track.Conflicts == 0) return {};
    return moment_text(fitted.Animal->Times[fitted.Track.FirstConflict[0]], numberTimes);
}

}  // namespace

std::optional<GivenModel> parse_given_model(const std::string& text) {
    std::vector<std::string> pieces = platform::Split(text, ':');
    const auto kind = pieces.empty() ? std::nullopt : kind_of(pieces.front());
    if (!kind) return std::nullopt;
    GivenModel given{{*kind, {}}, RangeShape::kAnisotropic};
    pieces.erase(pieces.begin());
    if (!pieces.empty() && platform::EqualNoCase(pieces.front(), "isotropic")) {
        given.Shape = RangeShape::kIsotropic;
        pieces.erase(pieces.begin());
    }
    const bool timeless = *kind == ModelKind::kIid;
    if (pieces.size() != (timeless ? 0U : 1U)) return std::nullopt;
    if (timeless) return given;
    const auto scales = scales_of(*kind, pieces.front());
    if (!scales) return std::nullopt;
    given.Model.Scales = *scales;
    return given;
}

double velocity_scale(const FittedModel& model) {
    const auto& [kind, scales] = model.Model;
    return kind == movement_models::ModelKind::kCritical ? scales.Position : scales.Velocity;
}

std::string status_text(const FittedModel& model) {
    switch (model.Status) {
        case FitStatus::kCollapsed:
            return "collapsed to " + std::string(model_name(model.CollapsedTo));
        case FitStatus::kOnALine:
            return "not fitted: all fixes on one line";
        case FitStatus::kNoNumber:
            return "no likelihood";
        case FitStatus::kFitted:
            break;
    }
    const bool few = !std::isfinite(model.Aicc);
    return "fitted by " + std::string(estimation_name(model.Used)) + (few ? ", too few fixes for AICc" : "");
}

std::string AnimalModels::FirstTime(bool number) const {
    return Track.Order.empty() ? "" : moment_text(Animal->Times[Track.Order.front()], number);
}

std::string AnimalModels::LastTime(bool number) const {
    return Track.Order.empty() ? "" : moment_text(Animal->Times[Track.Order.back()], number);
}

AnimalModels prepared_animal(const TimedAnimal& animal, bool numberTimes) {
    AnimalModels prepared;
    prepared.Animal = &animal;
    prepared.Track = prepare_track(animal.Seconds(), animal.Fixes);
    prepared.Verdict.Text = problem_text(prepared.Track, first_conflict(prepared, numberTimes));
    return prepared;
}

AnimalModels fit_animal(const TimedAnimal& animal, bool numberTimes, const FitSettings& settings, IListener& listener) {
    AnimalModels fitted = prepared_animal(animal, numberTimes);
    if (fitted.Track.Problem != TrackProblem::kNone) return fitted;
    if (settings.Given)
        take_given(fitted, *settings.Given);
    else
        choose(fitted, settings, listener);
    if (!fitted.Chosen) {
        if (fitted.Verdict.Text.empty())
            fitted.Verdict.Text = "No model has a likelihood: the coordinates are too far apart for numbers to hold.";
        return fitted;
    }
    fitted.Variogram = variogram_of(fitted.Track.Fixes);
    fitted.Verdict =
        verdict_of(fitted.Track, *fitted.Chosen, still_rises(fitted.Variogram, fitted.Track.Fixes.Duration()));
    fitted.Notes = notes_on(fitted.Track, *fitted.Chosen, settings.Given ? fitted.Chosen->Used : settings.Method);
    return fitted;
}

void report_without_id(const TimedAnimals& animals, const std::string& idField, IListener& listener) {
    const std::int64_t count = animals.WithoutId;
    if (count > 0)
        listener.Problem("Warning: " + analysis::without_id_text(count, idField) +
                         (count == 1 ? " and is left out." : " and are left out."));
}

void report_animal(const AnimalModels& fitted, bool verdicts, IListener& listener) {
    const std::string name = platform::ValueText(fitted.Animal->Id) + ": ";
    const std::string without = analysis::fixes_text(static_cast<std::int64_t>(fitted.Animal->WithoutTime));
    if (fitted.Animal->WithoutTime > 0 && fitted.Animal->FirstUnreadable.empty())
        listener.Problem(name + without + " without a time left out");
    else if (fitted.Animal->WithoutTime > 0)
        listener.Problem(name + without + " whose time cannot be read left out (the first: \"" +
                         fitted.Animal->FirstUnreadable + "\")");
    for (const std::string& note : fitted.Notes) listener.Note(name + note);
    if (!verdicts) return;
    if (!fitted.Chosen) listener.Problem(name + fitted.Verdict.Text);
    for (const std::string& warning : fitted.Verdict.Warnings) listener.Problem(name + warning);
}

}  // namespace wxl::akde
