#pragma once
// What wxl models and wxl akde have in common: an animal's fixes, its models, its verdict.

#include "apps/cli/timed_fixes.h"
#include "movement_models/fit.h"
#include "movement_models/variogram.h"
#include "movement_models/verdict.h"

#include <optional>
#include <string>
#include <vector>

namespace wxl::cli {

/// A model as the user gives it.
struct GivenModel {
    movement_models::Autocorrelation Model;
    movement_models::RangeShape Shape = movement_models::RangeShape::kAnisotropic;
};

/// "OU:10800", "OUF:isotropic:86400,3600", "IID:isotropic"; WrongCall that names the option for anything else. The
/// letters of OUf and OUF differ in size only, so that these count.
GivenModel given_model(const std::string& text);

/// How models are chosen.
struct FitOptions {
    std::string Method = "pHREML";  ///< "ML", "REML", "pHREML"
    std::string At;                 ///< a given model; empty: the best of all
};

/// Gives `command` --method and --at.
void add_fit_options(CLI::App& command, FitOptions& options);

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

/// Fits the models of an animal, or takes the given one.
AnimalModels fit_animal(const TimedAnimal& animal, const FitOptions& options, Console& console);

/// Tells on standard error what was left out and what asks for care.
void report_animal(const AnimalModels& fitted, bool verdicts, Console& console);

}  // namespace wxl::cli
