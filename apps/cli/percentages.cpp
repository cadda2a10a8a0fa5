#include "apps/cli/percentages.h"

#include "apps/cli/console.h"
#include "platform/text.h"

#include <fmt/format.h>

namespace wxl::cli {

std::vector<double> percentages_of(const std::string& option, const std::string& text, Hundred hundred) {
    const bool whole = hundred == Hundred::kAllowed;
    std::vector<double> percentages;
    for (const std::string& piece : platform::Split(text, ',')) {
        const double percent = platform::IsNumeric(piece) ? platform::NumberFromText(piece) : 0.0;
        if (!(percent > 0.0 && (percent < 100.0 || (whole && percent == 100.0))))
            throw WrongCall(fmt::format("{}: \"{}\" is no percentage above 0 and {} 100", option, piece,
                                        whole ? "up to" : "below"));
        percentages.push_back(percent);
    }
    return percentages;
}

}  // namespace wxl::cli
