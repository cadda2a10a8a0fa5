#include "results_page/repeat_command.h"

#include <algorithm>

namespace wxl::results_page {
namespace {

using kde_tool::BandwidthMethod;
using kde_tool::ExtentMode;

std::string without_blanks(std::string text) {
    std::erase(text, ' ');
    return text;
}

std::string bandwidth_word(const kde_tool::RunInputs& inputs) {
    switch (inputs.Method) {
        case BandwidthMethod::kLscv:
            return "lscv";
        case BandwidthMethod::kBcv:
            return "bcv";
        case BandwidthMethod::kManual:
            return without_blanks(inputs.BandwidthText);
        case BandwidthMethod::kProportion:
            return "prop:" + without_blanks(inputs.ProportionText);
        case BandwidthMethod::kHref:
            break;
    }
    return "href";
}

std::string extent_word(const kde_tool::RunInputs& inputs) {
    switch (inputs.Mode) {
        case ExtentMode::kMinimum:
            return "min";
        case ExtentMode::kReference:
            return "ref:" + inputs.ReferenceName;
        case ExtentMode::kFull:
            break;
    }
    return "full:" + inputs.BufferText;
}

bool is_plain(const std::string& word) {
    static const std::string kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_./:,=+%@";
    return !word.empty() && word.find_first_not_of(kPlain) == std::string::npos;
}

}  // namespace

std::vector<std::string> repeat_words(const PageRun& run) {
    const kde_tool::RunInputs& inputs = run.Inputs;
    std::vector<std::string> words = {"wxl", "kde"};
    const auto add = [&](const std::string& option, const std::string& value) {
        if (value.empty()) return;
        words.push_back(option);
        words.push_back(value);
    };
    const auto add_flag = [&](bool wanted, const std::string& option) {
        if (wanted) words.push_back(option);
    };
    words.push_back(inputs.Source.empty() ? inputs.LayerName : inputs.Source);
    add("--id-field", inputs.IdField);
    add("--where", inputs.Where);
    add("--out", run.Folder.string());
    add("--prefix", inputs.Prefix);
    add("--cell-size", inputs.CellSizeText);
    if (inputs.ScalingText != "1000000") add("--scaling", inputs.ScalingText);
    add("--bandwidth", bandwidth_word(inputs));
    add_flag(!inputs.FixedKernel, "--adaptive");
    add_flag(inputs.Rescale, "--rescale");
    add("--reach", inputs.ReachText);
    add("--extent", extent_word(inputs));
    if (inputs.Isopleths) add("--isopleths", without_blanks(inputs.IsoplethText));
    add_flag(inputs.Isopleths && inputs.Lines, "--lines");
    add_flag(inputs.Isopleths && inputs.Polygons, "--polygons");
    add_flag(inputs.Isopleths && inputs.Donuts, "--donuts");
    if (run.RasterFormat != "GRID") add("--raster-format", run.RasterFormat);
    add_flag(run.Reference.IsGeographic, "--degrees");
    add_flag(inputs.Verbose, "--verbose-log");
    words.emplace_back("--html");
    return words;
}

std::string shell_text(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        if (!text.empty()) text += ' ';
        if (is_plain(word)) {
            text += word;
            continue;
        }
        text += '\'';
        for (const char c : word) text += c == '\'' ? "'\\''" : std::string(1, c);
        text += '\'';
    }
    return text;
}

}  // namespace wxl::results_page
