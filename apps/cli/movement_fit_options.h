#pragma once
#include "akde/animal_models.h"

#include <string>

namespace CLI {
class App;
}

namespace wxl::cli {

/// How models are chosen.
struct FitOptions {
    std::string Method = "pHREML";  ///< "ML", "REML", "pHREML"
    std::string At;                 ///< a given model; empty: the best of all
};

/// Gives `command` --method and --at.
void add_fit_options(CLI::App& command, FitOptions& options);

/// WrongCall that names the option for a model that is none.
akde::FitSettings fit_settings(const FitOptions& options);

}  // namespace wxl::cli
