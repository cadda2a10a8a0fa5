#include "apps/cli/movement_fit_options.h"

#include "apps/cli/console.h"
#include "apps/cli/option_checks.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace wxl::cli {

namespace {

movement_models::Estimation estimation_of(const std::string& method) {
    if (method == "ML") return movement_models::Estimation::kMl;
    return method == "REML" ? movement_models::Estimation::kReml : movement_models::Estimation::kPhreml;
}

}  // namespace

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

akde::FitSettings fit_settings(const FitOptions& options) {
    akde::FitSettings settings{estimation_of(options.Method), {}};
    if (options.At.empty()) return settings;
    settings.Given = akde::parse_given_model(options.At);
    if (!settings.Given)
        throw WrongCall(fmt::format(
            "--at: \"{}\" is no model like IID, OU:TAU, OUf:TAU or OUF:TAU1,TAU2 with time scales in seconds "
            "(TAU2 below TAU1), with \":isotropic\" behind the name for a round range",
            options.At));
    return settings;
}

}  // namespace wxl::cli
