#include "apps/cli/fix_import.h"

#include "adapters/gdal/gdal_support.h"
#include "adapters/gdal/source_rules.h"
#include "adapters/tracking/cell_text.h"
#include "adapters/tracking/point_layer.h"
#include "adapters/tracking/text_file.h"
#include "apps/cli/import_remarks.h"
#include "apps/cli/input_layer.h"
#include "platform/runtime_error.h"
#include "platform/text.h"
#include "tracking_times/split_keys.h"
#include "tracking_times/thinning.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fmt/format.h>
#include <map>
#include <optional>
#include <tuple>
#include <utility>

namespace wxl::cli {

namespace {

namespace fs = std::filesystem;
namespace error_number = platform::error_number;
using platform::Raise;
using platform::SpatialReference;
using tracking::FileFacts;
using tracking::NamedSystem;
using tracking::Reason;
using tracking::Tracking;
using tracking::TrackingFix;

/// Refuses pipes, devices, archives and addresses; workbooks are archives that are read as they are.
void check_plain_file(const std::string& input) {
    std::error_code ignored;
    const bool isThere = fs::exists(input, ignored);
    if (isThere && fs::is_regular_file(input, ignored) && files::has_ending_of_workbook(input)) return;
    try {
        if (isThere) files::CheckPlainFile(input);
    } catch (const files::IndirectSource& refused) {
        raise_with_option(refused);
    }
}

void check_input(const std::string& input, bool allowIndirect) {
    std::error_code ignored;
    if (!allowIndirect) check_plain_file(input);
    const bool isLayer = tracking::is_layer_file(input);
    if (!isLayer && !fs::exists(input, ignored)) Raise(error_number::kFileNotFound, input + ": there is no such file");
    if (!isLayer && fs::is_directory(input, ignored))
        Raise(error_number::kFileNotFound, input + " is a folder: name the CSV file in it");
}

/// The files of a call, opened as texts, with what GDAL knows of them.
class Inputs {
public:
    Inputs(const FixOptions& options, Console& console) : m_options(options), m_console(console) {}

    Tracking Read(const tracking::RejectedRows::Listener& rejected) {
        tracking::ReadOptions read = read_options(m_options);
        std::optional<SpatialReference> from;
        if (!m_options.FromCrs.empty()) from = reference_of(m_options.FromCrs, "--from-crs");
        std::vector<tracking::LayerAsText> layers = OpenLayers();
        if (!from) from = SystemOf(layers);
        if (from) {
            System = {*from, m_options.FromCrs};
            read.Unit = from->IsGeographic ? tracking::PositionUnit::kDegrees : tracking::PositionUnit::kLengths;
            read.Columns.InMetres = !from->IsGeographic;
        }
        const tracking::WantedColumns given = read.Columns;
        Tracking data(read);
        data.Rejected.SetListener(rejected);
        for (std::size_t i = 0; i < m_options.Inputs.size(); ++i) Add(data, m_options.Inputs[i], layers[i], given);
        if (!from) TakeSystemOfPositions(data);
        data.Sort();
        return data;
    }

    NamedSystem System{files::ReferenceFromText("EPSG:4326"), "EPSG:4326"};

private:
    std::vector<tracking::LayerAsText> OpenLayers() const {
        std::vector<tracking::LayerAsText> layers(m_options.Inputs.size());
        for (std::size_t i = 0; i < layers.size(); ++i) {
            check_input(m_options.Inputs[i], m_options.AllowIndirect);
            if (tracking::is_layer_file(m_options.Inputs[i]))
                layers[i] = tracking::read_layer(m_options.Inputs[i], layers.size() > 1);
            if (m_options.FromCrs.empty() && !files::has_places(layers[i].Reference))
                Raise(error_number::kInvalidCall,
                      fmt::format("{} is in a coordinate system whose x and y are no places on a map ({}): project it "
                                  "first",
                                  m_options.Inputs[i], layers[i].Reference.Name));
        }
        return layers;
    }

    /// The system that positions like "SRID=32633;POINT(...)" name themselves.
    void TakeSystemOfPositions(const Tracking& data) {
        const auto code_of = [](const FileFacts& facts) { return fmt::format("EPSG:{}", facts.Srid.value_or(4326)); };
        const std::string code = code_of(data.Files.front());
        for (const FileFacts& facts : data.Files)
            if (code_of(facts) != code)
                Raise(error_number::kTypeMismatch,
                      fmt::format("the positions of {} are in {}, those of {} in {}: import each on its own",
                                  data.Files.front().Name, code, facts.Name, code_of(facts)));
        System = {files::ReferenceFromText(code), code};
    }

    /// The system of the layers where they have one.
    static std::optional<SpatialReference> SystemOf(const std::vector<tracking::LayerAsText>& layers) {
        for (const tracking::LayerAsText& layer : layers)
            if (layer.HasPoints && !layer.Reference.Wkt.empty()) return layer.Reference;
        return std::nullopt;
    }

    void Add(Tracking& data, const std::string& input, tracking::LayerAsText& layer,
             const tracking::WantedColumns& given) const {
        const std::string animal = fs::path(input).stem().string();
        std::error_code ignored;
        const auto size = fs::file_size(input, ignored);
        const double bytes = ignored ? 0.0 : static_cast<double>(size);
        const auto progress = [&](std::uint64_t position) {
            if (bytes > 0.0) m_console.Progress(static_cast<double>(position) / bytes, "reading " + input);
        };
        tracking::WantedColumns wanted = given;
        if (layer.HasPoints && wanted.X.empty()) {
            wanted.X = tracking::kLayerX;
            wanted.Y = tracking::kLayerY;
        }
        data.SetWanted(wanted);
        if (layer.Text) {
            data.Add(std::move(layer.Text), input, animal, progress, tracking::Dialect{});
        } else {
            data.Add(tracking::open_text(input), input, animal, progress);
        }
        m_console.EndProgress();
    }

    const FixOptions& m_options;
    Console& m_console;
};

/// Removes what is not kept, in all parallel to the fixes.
template <class Keep>
void keep_fixes(Tracking& data, Keep keep) {
    std::size_t next = 0;
    for (std::size_t i = 0; i < data.Fixes.size(); ++i)
        if (keep(i)) data.Fixes[next++] = data.Fixes[i];
    data.Fixes.resize(next);
}

std::string time_column(const FileFacts& facts) {
    return facts.Time.empty() ? "" : facts.Time.front();
}

void thin(const FixOptions& options, Tracking& data) {
    if (options.Every.empty()) return;
    tracking_times::Thinning rule{duration_of(options.Every, "--every"), 0};
    if (!options.EveryTolerance.empty()) rule.Tolerance = duration_of(options.EveryTolerance, "--every-tolerance");
    std::optional<tracking_times::Thinner> thinner;
    std::uint32_t animal = 0;
    keep_fixes(data, [&](std::size_t i) {
        const TrackingFix& fix = data.Fixes[i];
        if (!thinner || fix.Animal != animal) thinner.emplace(rule);
        animal = fix.Animal;
        const bool kept = fix.HasTime() && thinner->Keeps(fix.Seconds);
        if (!kept)
            data.Reject(fix, fix.HasTime() ? Reason::kThinned : Reason::kNoKey, time_column(data.Files[fix.File()]),
                        "");
        return kept;
    });
    if (data.Fixes.empty()) Raise(error_number::kTypeMismatch, "no fix has a time, which --every needs");
}

/// What fixes are split by: a calendar, the sun, or the cells of a column.
class Splitter {
public:
    /// `degrees`: places of the fixes.
    Splitter(const FixOptions& options, Tracking& data, const std::vector<TrackingFix>& degrees)
        : m_data(data), m_degrees(degrees) {
        if (const auto by = tracking_times::split_by_from(options.SplitBy)) {
            m_rule = tracking_times::SplitRule{*by};
            m_rule->South = tracking::median_of(degrees).Y < 0.0;
            return;
        }
        for (std::size_t i = 0; i < data.Others.size(); ++i)
            if (platform::EqualNoCase(data.Others[i].Name, options.SplitBy)) m_column = i;
        if (!m_column)
            throw WrongCall(fmt::format(
                "--split-by: \"{}\" is neither season, month, year, year-month, year-season, day-night nor a column",
                options.SplitBy));
    }

    /// The key of a fix in the order of keys, and its text; nothing when it has none.
    std::optional<std::pair<std::int32_t, std::string>> KeyOf(std::size_t i) {
        const TrackingFix& fix = m_data.Fixes[i];
        if (m_column) {
            const std::string cell = m_data.ReadCell(fix, *m_column);
            if (tracking::is_missing(cell)) return std::nullopt;
            return std::pair{0, cell};
        }
        if (!fix.HasTime()) return std::nullopt;
        const std::int32_t key = tracking_times::split_key(*m_rule, fix.Seconds, m_degrees[i].X, m_degrees[i].Y);
        return std::pair{key, tracking_times::split_key_text(*m_rule, key)};
    }

    std::string ColumnName() const { return m_column ? m_data.Others[*m_column].Name : ""; }

private:
    Tracking& m_data;
    const std::vector<TrackingFix>& m_degrees;
    std::optional<tracking_times::SplitRule> m_rule;
    std::optional<std::size_t> m_column;
};

/// Projects the positions of fixes of `data` in place.
void project_fixes(std::vector<TrackingFix>& fixes, const SpatialReference& from, const SpatialReference& to,
                   const Tracking& data) {
    const auto failed = tracking::project_fixes(fixes, from, to);
    if (!failed) return;
    const TrackingFix& fix = fixes[*failed];
    Raise(error_number::kTypeMismatch,
          fmt::format("{}: the position {}, {} cannot be projected to {}; correct it, or choose another projection by "
                      "--to-crs",
                      data.PlaceOf(fix), fix.X, fix.Y, to.Name));
}

/// The fixes with their places in degrees of WGS 84.
std::vector<TrackingFix> degrees_of(const Tracking& data, const NamedSystem& from) {
    std::vector<TrackingFix> degrees = data.Fixes;
    if (!from.Reference.IsGeographic)
        project_fixes(degrees, from.Reference, files::ReferenceFromText("EPSG:4326"), data);
    return degrees;
}

/// Splits the fixes of each animal; those without a key are left out.
void split(const FixOptions& options, const NamedSystem& system, ImportedFixes& fixes) {
    if (options.SplitBy.empty()) return;
    const std::vector<TrackingFix> degrees = degrees_of(fixes.Data, system);
    Tracking& data = fixes.Data;
    Splitter splitter(options, data, degrees);
    std::map<std::tuple<std::uint32_t, std::int32_t, std::string>, std::uint32_t> groups;
    std::vector<const std::tuple<std::uint32_t, std::int32_t, std::string>*> keys(data.Fixes.size(), nullptr);
    for (std::size_t i = 0; i < data.Fixes.size(); ++i) {
        const auto key = splitter.KeyOf(i);
        if (key) keys[i] = &groups.try_emplace({data.Fixes[i].Animal, key->first, key->second}, 0).first->first;
    }
    for (auto& [key, index] : groups) {
        index = static_cast<std::uint32_t>(fixes.Groups.size());
        fixes.Individual.push_back(data.Animals[std::get<0>(key)]);
        fixes.Key.push_back(std::get<2>(key));
        fixes.Groups.push_back(fixes.Individual.back() + " " + fixes.Key.back());
    }
    std::size_t next = 0;
    for (std::size_t i = 0; i < data.Fixes.size(); ++i) {
        if (keys[i] == nullptr) {
            data.Reject(data.Fixes[i], Reason::kNoKey, splitter.ColumnName(), "");
            continue;
        }
        fixes.GroupOf.push_back(groups[*keys[i]]);
        data.Fixes[next++] = data.Fixes[i];
    }
    data.Fixes.resize(next);
}

/// Brings a split layer in the order of its groups.
void sort_by_group(ImportedFixes& fixes) {
    if (fixes.Groups.empty()) return;
    std::vector<std::size_t> order(fixes.Data.Fixes.size());
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return fixes.GroupOf[a] < fixes.GroupOf[b]; });
    const auto rows = fixes.Data.Fixes;
    const auto groups = fixes.GroupOf;
    for (std::size_t i = 0; i < order.size(); ++i) {
        fixes.Data.Fixes[i] = rows[order[i]];
        fixes.GroupOf[i] = groups[order[i]];
    }
}

NamedSystem choose_target(const FixOptions& options, const NamedSystem& from, const Tracking& data) {
    if (options.ToCrs == "equal-area") return tracking::equal_area_of(degrees_of(data, from));
    if (options.ToCrs != "auto") return {reference_of(options.ToCrs, "--to-crs"), options.ToCrs};
    return from.Reference.IsGeographic ? tracking::best_projection(data.Fixes) : from;
}

}  // namespace

bool ImportedFixes::HasTimes() const {
    return std::any_of(Data.Files.begin(), Data.Files.end(),
                       [](const FileFacts& facts) { return !facts.Time.empty(); });
}

ImportedFixes import_fixes(const FixOptions& options, const tracking::RejectedRows::Listener& rejected,
                           Console& console) {
    if (!options.Every.empty()) duration_of(options.Every, "--every");
    if (options.ToCrs != "auto" && options.ToCrs != "equal-area") reference_of(options.ToCrs, "--to-crs");
    Inputs inputs(options, console);
    ImportedFixes fixes{inputs.Read(rejected), {}, {}, {}, {}, {}, {}};
    Tracking& data = fixes.Data;
    report_files(data, options, console);
    report_numbers(data, console);
    if (data.Fixes.empty()) refuse_without_fixes(options, data);
    note_odd_times(data, console);
    thin(options, data);
    split(options, inputs.System, fixes);
    report_left_out(data, console);
    if (data.Fixes.empty()) refuse_without_fixes(options, data);
    note_zero_positions(data, console);
    fixes.System = choose_target(options, inputs.System, data);
    note_far_fixes(options, inputs.System, fixes.System, data, console);
    project_fixes(data.Fixes, inputs.System.Reference, fixes.System.Reference, data);
    fixes.Wrong = tracking::largest_distortion(data.Fixes, fixes.System.Reference);
    report_distortion(fixes, console);
    sort_by_group(fixes);
    return fixes;
}

}  // namespace wxl::cli
