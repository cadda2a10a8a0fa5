#pragma once
// The models of one animal, and what they say of it.

#include "akde/listener.h"
#include "akde/timed_animals.h"
#include "movement_models/fit.h"
#include "movement_models/track.h"
#include "movement_models/variogram.h"
#include "movement_models/verdict.h"

#include <optional>
#include <string>
#include <vector>

namespace wxl::akde {

/// A model as the user gives it.
struct GivenModel {
    movement_models::Autocorrelation Model;
    movement_models::RangeShape Shape = movement_models::RangeShape::kAnisotropic;
    friend bool operator==(const GivenModel&, const GivenModel&) = default;
};

/// "OU:10800", "OUF:isotropic:86400,3600", "IID:isotropic"; nothing for anything else. The letters of OUf and OUF
/// differ in size only, so that these count.
std::optional<GivenModel> parse_given_model(const std::string& text);

/// The time scale of velocities, seconds; in OUf that of positions, 0 in a model that has none.
double velocity_scale(const movement_models::FittedModel& model);

/// "fitted by pHREML", "collapsed to OU", "no likelihood": what became of a model's fit.
std::string status_text(const movement_models::FittedModel& model);

/// How models are chosen.
struct FitSettings {
    movement_models::Estimation Method = movement_models::Estimation::kPhreml;  ///< ML, REML or pHREML
    std::optional<GivenModel> Given;                                            ///< nothing: the best of all
    friend bool operator==(const FitSettings&, const FitSettings&) = default;
};

/// One animal, fitted.
struct AnimalModels {
    const TimedAnimal* Animal = nullptr;
    movement_models::PreparedTrack Track;
    std::vector<movement_models::FittedModel> Models;    ///< best first; the given one alone where there is one
    std::optional<movement_models::FittedModel> Chosen;  ///< nothing where there is none
    std::vector<movement_models::VariogramPoint> Variogram;
    bool Given = false;  ///< the model was given, not chosen
    movement_models::Verdict Verdict;
    std::vector<std::string> Notes;

    std::size_t FixesGiven() const { return Animal->Fixes.size() + Animal->WithoutTime; }
    std::string FirstTime(bool number) const;  ///< "" without fixes
    std::string LastTime(bool number) const;
};

/// An animal before its models; the verdict's text says why it will have none, "" where nothing is known against them.
/// `numberTimes` as TimedAnimals says.
AnimalModels prepared_animal(const TimedAnimal& animal, bool numberTimes);

/// Fits the models of an animal, or takes the given one. `numberTimes` as TimedAnimals says.
AnimalModels fit_animal(const TimedAnimal& animal, bool numberTimes, const FitSettings& settings, IListener& listener);

/// Tells the listener of points that belong to no animal.
void report_without_id(const TimedAnimals& animals, const std::string& idField, IListener& listener);

/// Tells the listener what was left out and what asks for care; with `verdicts` also why there is no model.
void report_animal(const AnimalModels& fitted, bool verdicts, IListener& listener);

}  // namespace wxl::akde
