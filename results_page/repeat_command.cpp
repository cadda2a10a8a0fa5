#include "results_page/repeat_command.h"

#include "analysis/settings_text.h"

#include <algorithm>

namespace wxl::results_page {
namespace {

std::string without_blanks(std::string text) {
    std::erase(text, ' ');
    return text;
}

bool is_plain(const std::string& word) {
    static const std::string kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_./:,=+%@";
    return !word.empty() && word.find_first_not_of(kPlain) == std::string::npos;
}

}  // namespace

std::vector<std::string> repeat_words(const PageRun& run) {
    const analysis::Settings& settings = run.Wanted;
    std::vector<std::string> words = {"wxl", "kde"};
    const auto add = [&](const std::string& option, const std::string& value) {
        if (value.empty()) return;
        words.push_back(option);
        words.push_back(value);
    };
    const auto add_flag = [&](bool wanted, const std::string& option) {
        if (wanted) words.push_back(option);
    };
    words.push_back(run.Source.empty() ? settings.LayerName : run.Source);
    words.insert(words.end(), run.SourceOptions.begin(), run.SourceOptions.end());
    add("--id-field", settings.IdField);
    add("--where", settings.Where);
    add("--out", run.Folder.string());
    add("--prefix", settings.Prefix);
    add("--cell-size", settings.Cells.Text);
    if (settings.ScalingFactor.Text != "1000000") add("--scaling", settings.ScalingFactor.Text);
    add("--bandwidth", bandwidth_text(settings));
    add_flag(!settings.FixedKernel, "--adaptive");
    add_flag(settings.Rescale, "--rescale");
    add("--reach", settings.KernelReach.Text);
    add("--extent", extent_text(settings));
    if (settings.Isopleths) add("--isopleths", without_blanks(settings.Percentages.Text));
    add_flag(settings.Isopleths && settings.Lines, "--lines");
    add_flag(settings.Isopleths && settings.Polygons, "--polygons");
    add_flag(settings.Isopleths && settings.Donuts, "--donuts");
    add("--mcp", without_blanks(settings.ConvexPercentages.Text));
    if (run.Wanted.RasterFormat != "GRID") add("--raster-format", run.Wanted.RasterFormat);
    add_flag(run.Reference.IsGeographic, "--degrees");
    add_flag(settings.Verbose, "--verbose-log");
    words.emplace_back("--html");
    add_flag(settings.GeoPackage, "--gpkg");
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
