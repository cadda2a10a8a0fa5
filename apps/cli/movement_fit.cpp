#include "apps/cli/movement_fit.h"

#include "analysis/diagnosis.h"
#include "apps/cli/option_checks.h"
#include "platform/text.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace wxl::cli {

namespace {

using namespace movement_models;

std::vector<std::string> pieces_of(const std::string& text, char separator) {
    std::vector<std::string> pieces{""};
    for (const char c : text) {
        if (c == separator)
            pieces.emplace_back();
        else
            pieces.back() += c;
    }
    return pieces;
}

[[noreturn]] void refuse_model(const std::string& text) {
    throw WrongCall(
        fmt::format("--at: \"{}\" is no model like IID, OU:TAU, OUf:TAU or OUF:TAU1,TAU2 with time scales in seconds "
                    "(TAU2 below TAU1), with \":isotropic\" behind the name for a round range",
                    text));
}

ModelKind kind_of(const std::string& name, const std::string& text) {
    for (const ModelKind kind : kModelKinds)
        if (name == model_name(kind)) return kind;
    refuse_model(text);
}

TimeScales scales_of(ModelKind kind, const std::string& numbers, const std::string& text) {
    const std::vector<std::string> pieces = pieces_of(numbers, ',');
    const auto wanted = static_cast<std::size_t>(scale_count(kind));
    if (pieces.size() != wanted) refuse_model(text);
    std::vector<double> scales;
    for (const std::string& piece : pieces) {
        if (!platform::IsNumeric(piece)) refuse_model(text);
        scales.push_back(platform::NumberFromText(piece));
        if (!(scales.back() > 0.0)) refuse_model(text);
    }
    if (wanted == 2 && !(scales[1] < scales[0])) refuse_model(text);
    return {scales[0], wanted == 2 ? scales[1] : 0.0};
}

Estimation estimation_of(const FitOptions& options) {
    if (options.Method == "ML") return Estimation::kMl;
    return options.Method == "REML" ? Estimation::kReml : Estimation::kPhreml;
}

void choose(AnimalModels& fitted, const FitOptions& options, Console& console) {
    const std::string name = platform::ValueText(fitted.Animal->Id);
    if (options.At.empty()) {
        ModelChoice choice = choose_model(fitted.Track.Fixes, estimation_of(options), fitted.Track.OnALine,
                                          [&](double share) { console.Progress(share, "fitting models to " + name); });
        if (const FittedModel* chosen = choice.Chosen()) fitted.Chosen = *chosen;
        fitted.Models = std::move(choice.Models);
        console.EndProgress();
        return;
    }
    fitted.Given = true;
    const GivenModel given = given_model(options.At);
    const bool flat = fitted.Track.OnALine && given.Shape == RangeShape::kAnisotropic;
    if (flat) {
        fitted.Verdict.Text =
            "All fixes lie on one line, so that the range has no ellipse: give the model with \":isotropic\".";
        return;
    }
    fitted.Models = {model_at(fitted.Track.Fixes, given.Model, given.Shape)};
    if (fitted.Models.front().Status == FitStatus::kFitted) fitted.Chosen = fitted.Models.front();
}

}  // namespace

GivenModel given_model(const std::string& text) {
    std::vector<std::string> pieces = pieces_of(text, ':');
    GivenModel given;
    given.Model.Kind = kind_of(pieces.front(), text);
    pieces.erase(pieces.begin());
    if (!pieces.empty() && platform::EqualNoCase(pieces.front(), "isotropic")) {
        given.Shape = RangeShape::kIsotropic;
        pieces.erase(pieces.begin());
    }
    const bool timeless = given.Model.Kind == ModelKind::kIid;
    if (pieces.size() != (timeless ? 0U : 1U)) refuse_model(text);
    if (!timeless) given.Model.Scales = scales_of(given.Model.Kind, pieces.front(), text);
    return given;
}

void add_fit_options(CLI::App& command, FitOptions& options) {
    CLI::Option* at = command
                          .add_option("--at", options.At,
                                      "Take this model as given, its time scales in seconds, and fit none: OU:86400, "
                                      "OUF:isotropic:86400,3600")
                          ->type_name("MODEL[:isotropic]:TAU1[,TAU2]");
    command
        .add_option("--method", options.Method,
                    "How parameters are estimated: ML, REML, or pHREML, the best for short tracks")
        ->transform(one_of({"ML", "REML", "pHREML"}))
        ->type_name("METHOD")
        ->capture_default_str()
        ->excludes(at);
}

std::string AnimalModels::FirstTime(bool number) const {
    return Track.Order.empty() ? "" : moment_text(Animal->Times[Track.Order.front()], number);
}

std::string AnimalModels::LastTime(bool number) const {
    return Track.Order.empty() ? "" : moment_text(Animal->Times[Track.Order.back()], number);
}

AnimalModels fit_animal(const TimedAnimal& animal, const FitOptions& options, Console& console) {
    AnimalModels fitted;
    fitted.Animal = &animal;
    fitted.Track = prepare_track(animal.Seconds(), animal.Fixes);
    fitted.Verdict.Text = problem_text(fitted.Track);
    if (fitted.Track.Problem != TrackProblem::kNone) return fitted;
    choose(fitted, options, console);
    if (!fitted.Chosen) {
        if (fitted.Verdict.Text.empty())
            fitted.Verdict.Text = "No model has a likelihood: the coordinates are too far apart for numbers to hold.";
        return fitted;
    }
    fitted.Variogram = variogram_of(fitted.Track.Fixes);
    fitted.Verdict =
        verdict_of(fitted.Track, *fitted.Chosen, still_rises(fitted.Variogram, fitted.Track.Fixes.Duration()));
    const Estimation asked = options.At.empty() ? estimation_of(options) : fitted.Chosen->Used;
    fitted.Notes = notes_on(fitted.Track, *fitted.Chosen, asked);
    return fitted;
}

void report_animal(const AnimalModels& fitted, bool verdicts, Console& console) {
    const std::string name = platform::ValueText(fitted.Animal->Id);
    const std::string without = analysis::fixes_text(static_cast<std::int64_t>(fitted.Animal->WithoutTime));
    if (fitted.Animal->WithoutTime > 0 && fitted.Animal->FirstUnreadable.empty())
        console.Problem(fmt::format("{}: {} without a time left out", name, without));
    else if (fitted.Animal->WithoutTime > 0)
        console.Problem(fmt::format("{}: {} whose time cannot be read left out (the first: \"{}\")", name, without,
                                    fitted.Animal->FirstUnreadable));
    for (const std::string& note : fitted.Notes) console.Note(fmt::format("{}: {}", name, note));
    if (!verdicts) return;
    if (!fitted.Chosen) console.Problem(fmt::format("{}: {}", name, fitted.Verdict.Text));
    for (const std::string& warning : fitted.Verdict.Warnings) console.Problem(fmt::format("{}: {}", name, warning));
}

}  // namespace wxl::cli
