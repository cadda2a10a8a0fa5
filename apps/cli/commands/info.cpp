#include "apps/cli/commands/info.h"

#include "adapters/gdal/distortions.h"
#include "analysis/animal_fixes.h"
#include "apps/cli/animal_tracks.h"
#include "apps/cli/json_values.h"
#include "platform/text.h"
#include "tracking_times/timestamps.h"

#include <algorithm>
#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <optional>
#include <utility>
#include <vector>

namespace wxl::cli {

namespace {

using platform::NumberText;

/// What is told of a layer.
struct LayerFacts {
    std::string Layer;
    std::int64_t Points = 0;
    platform::Extent Bounds;
    platform::SpatialReference Reference;
    std::vector<platform::Field> Fields;
    std::string IdField;  ///< empty: not known
    analysis::GroupedFixes Groups;
    std::vector<tracking_times::TimeFacts> Times;  ///< of the animals; empty: no times are known
    std::optional<platform::Distortion> Wrong;     ///< over the fixes; nothing in degrees and unknown systems
};

/// How far the projection changes sizes where the fixes lie.
std::optional<platform::Distortion> distortion_of(const analysis::GroupedFixes& groups,
                                                  const platform::SpatialReference& reference) {
    std::vector<platform::Point> points;
    for (const analysis::AnimalFixes& animal : groups.Animals)
        points.insert(points.end(), animal.Fixes.begin(), animal.Fixes.end());
    return files::Distortions().Largest(points, reference);
}

LayerFacts facts_of(const InfoOptions& options) {
    const auto layer = open_point_layer(options.Points);
    platform::IFeatureClass& points = *layer->FeatureClass();
    LayerFacts facts{layer->Name(),
                     points.FeatureCount(),
                     points.Bounds(),
                     points.Reference(),
                     points.Table().Fields(),
                     "",
                     {},
                     {},
                     {}};
    facts.IdField = options.IdField.empty() ? guess_id_field(facts.Fields)
                                            : find_id_field(points.Table(), options.IdField, options.Points.Input);
    if (facts.IdField.empty()) return facts;
    facts.Groups = analysis::GroupFixes(*layer, facts.IdField, false);
    facts.Wrong = distortion_of(facts.Groups, facts.Reference);
    const std::string time = options.Time.empty() ? guess_time_field(points.Table()) : options.Time;
    if (!time.empty()) facts.Times = time_facts_of(*layer, facts.IdField, time);
    return facts;
}

std::string type_name(platform::FieldType type) {
    switch (type) {
        case platform::FieldType::kInteger:
            return "whole number";
        case platform::FieldType::kDouble:
            return "number";
        case platform::FieldType::kText:
            return "text";
        case platform::FieldType::kDate:
            return "date";
        case platform::FieldType::kObjectId:
            return "object ID";
        case platform::FieldType::kGeometry:
            return "geometry";
    }
    return "";
}

void report_line(Console& console, std::string_view label, const std::string& text) {
    console.Result(fmt::format("{:<9}{}", label, text));
}

std::string reference_text(const platform::SpatialReference& reference) {
    if (reference.Name.empty()) return "unknown";
    return reference.UnitName.empty() ? reference.Name : fmt::format("{} ({})", reference.Name, reference.UnitName);
}

std::string extent_text(const platform::Extent& extent) {
    if (extent.IsEmpty()) return "none";
    return fmt::format("x {} to {}, y {} to {}", NumberText(extent.XMin), NumberText(extent.XMax),
                       NumberText(extent.YMin), NumberText(extent.YMax));
}

/// "90 s", "12 min", "1.5 h" or "2 days".
std::string span_text(double seconds) {
    if (seconds < 120.0) return fmt::format("{:.3g} s", seconds);
    if (seconds < 7200.0) return fmt::format("{:.3g} min", seconds / 60.0);
    if (seconds < 172800.0) return fmt::format("{:.3g} h", seconds / 3600.0);
    return fmt::format("{:.3g} days", seconds / 86400.0);
}

/// How an animal was followed, after the number of its fixes.
std::string times_text(const tracking_times::TimeFacts& facts) {
    if (!facts.First) return ", no times";
    std::string text = fmt::format(", {} to {}, {:.1f} days, {} with a fix", tracking_times::date_text(*facts.First),
                                   tracking_times::date_text(*facts.Last), facts.Days, facts.DaysWithFix);
    if (facts.Intervals)
        text +=
            fmt::format(", every {} (IQR {})", span_text(facts.Intervals->Median), span_text(facts.Intervals->Range()));
    if (facts.EqualTimes > 0) text += fmt::format(", {} at the time of the fix before", facts.EqualTimes);
    if (facts.WithoutTime > 0) text += fmt::format(", {} without a time", facts.WithoutTime);
    return text;
}

void report_text(const LayerFacts& facts, Console& console) {
    report_line(console, "layer", facts.Layer);
    report_line(console, "points", std::to_string(facts.Points));
    report_line(console, "extent", extent_text(facts.Bounds));
    report_line(console, "crs", reference_text(facts.Reference));
    if (facts.Wrong) report_line(console, "sizes", platform::distortion_text(*facts.Wrong));
    std::vector<std::string> fields;
    for (const platform::Field& field : facts.Fields)
        fields.push_back(fmt::format("{} ({})", field.Name, type_name(field.Type)));
    report_line(console, "fields", fmt::format("{}", fmt::join(fields, ", ")));
    if (facts.IdField.empty()) return;
    report_line(console, "animals", fmt::format("{} by {}", facts.Groups.Animals.size(), facts.IdField));
    for (std::size_t i = 0; i < facts.Groups.Animals.size(); ++i) {
        const analysis::AnimalFixes& animal = facts.Groups.Animals[i];
        console.Result(fmt::format("  {}: {}{}", platform::ValueText(animal.Id), animal.Fixes.size(),
                                   i < facts.Times.size() ? times_text(facts.Times[i]) : ""));
    }
}

Json json_of(const LayerFacts& facts) {
    Json json;
    json["layer"] = facts.Layer;
    json["points"] = facts.Points;
    const platform::Extent& extent = facts.Bounds;
    json["extent"] = extent.IsEmpty() ? Json(nullptr) : Json{extent.XMin, extent.YMin, extent.XMax, extent.YMax};
    const platform::SpatialReference& crs = facts.Reference;
    json["crs"] = crs.Name.empty() ? Json(nullptr)
                                   : Json{{"name", crs.Name}, {"unit", crs.UnitName}, {"degrees", crs.IsGeographic}};
    json["distortion"] = facts.Wrong ? Json{{"area", facts.Wrong->Area}, {"length", facts.Wrong->Length}} : Json();
    json["fields"] = Json::array();
    for (const platform::Field& field : facts.Fields)
        json["fields"].push_back({{"name", field.Name}, {"type", type_name(field.Type)}});
    json["id_field"] = facts.IdField.empty() ? Json(nullptr) : Json(facts.IdField);
    if (facts.IdField.empty()) {
        json["animals"] = nullptr;
        return json;
    }
    json["animals"] = Json::array();
    for (std::size_t i = 0; i < facts.Groups.Animals.size(); ++i) {
        const analysis::AnimalFixes& animal = facts.Groups.Animals[i];
        Json one{{"id", json_value(animal.Id)}, {"n", animal.Fixes.size()}};
        if (i < facts.Times.size()) one.update(cli::json_of(facts.Times[i]));
        json["animals"].push_back(std::move(one));
    }
    json["without_id"] = facts.Groups.WithoutId;
    return json;
}

}  // namespace

void register_info(CLI::App& command, InfoOptions& options) {
    add_input_options(command, options.Points);
    command
        .add_option("--id-field", options.IdField, "Field that names the animal (default: found by its usual names)")
        ->type_name("FIELD");
    command
        .add_option("--time-field", options.Time,
                    "Field of the time: seconds since 1970-01-01 UTC, or text; Time2 and usual names are found")
        ->type_name("FIELD");
    command.add_flag("--json", options.Json, "Print one JSON object");
    command.footer(
        "Tells how many points the layer holds, where they lie, in which coordinate\n"
        "system, its fields, and each animal with the number of its fixes. Points without\n"
        "a location count as points but not as fixes. Where times are known, each animal's\n"
        "period is told, the days of UTC that have a fix, and the median interval between\n"
        "fixes with its interquartile range (type 7). Sizes: how far areas and distances in\n"
        "the layer's projection are from those on the ground, at most over the fixes.\n"
        "\n"
        "Example:\n"
        "\n"
        "  wxl info wolves.shp --id-field animal");
}

int run_info(const InfoOptions& options, Console& console) {
    const LayerFacts facts = facts_of(options);
    if (facts.IdField.empty()) console.Note("the animals are not known: name their field by --id-field FIELD");
    if (facts.Groups.WithoutId > 0)
        console.Note(fmt::format("{} {} no animal in {}", facts.Groups.WithoutId,
                                 facts.Groups.WithoutId == 1 ? "point names" : "points name", facts.IdField));
    if (facts.Groups.NullGeometry) console.Note("some points have no location");
    if (options.Json) {
        console.Text(json_text(json_of(facts)));
    } else {
        report_text(facts, console);
    }
    return exit_code::kDone;
}

}  // namespace wxl::cli
