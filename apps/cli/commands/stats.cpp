#include "apps/cli/commands/stats.h"

#include "analysis/fix_times.h"
#include "apps/cli/json_values.h"
#include "apps/cli/text_output.h"
#include "apps/cli/tool_session.h"
#include "kde_tool/frmKDE.h"
#include "platform/runtime_error.h"
#include "platform/text.h"

#include <CLI/CLI.hpp>
#include <optional>
#include <vector>

namespace wxl::cli {

namespace {

/// One animal's row of the three tables of the form.
struct StatsRow {
    analysis::IndependenceRow Independence;
    analysis::VarianceRow Variance;
    analysis::HrefRow Href;
};

std::vector<StatsRow> rows_of(const kde_tool::frmKDE& form) {
    std::vector<StatsRow> rows;
    for (std::size_t i = 0; i < form.IndependenceNumbers().size(); ++i)
        rows.push_back({form.IndependenceNumbers().at(i), form.VarianceNumbers().at(i), form.HrefNumbers().at(i)});
    return rows;
}

/// Chooses layer and field, turns to the page that fills the tables, and calculates.
std::vector<StatsRow> press_form(const StatsOptions& options, Console& console) {
    const auto layer = open_measured_point_layer(options.Points, console);
    if (!options.Csv.empty()) files_read(*layer).Refuse(options.Csv);
    const std::string idField = find_id_field(layer->FeatureClass()->Table(), options.IdField, options.Points.Input);
    ToolSession session(console, {});
    session.AddInput(layer);
    kde_tool::frmKDE form(session.Services(), session.Geodata());
    form.Form_Load();
    form.cmbUIDFLD.Select(idField);
    form.cmbUIDFLD_Click();
    form.SSTab1.Current = 1;
    form.SSTab1_Click(0);
    form.btnCalcIO_Click();
    if (session.Messages().Faults() > 0)
        platform::Raise(platform::error_number::kInvalidCall,
                        options.Points.Input + ": the statistics are not complete");
    return rows_of(form);
}

void report_order(const std::vector<StatsRow>& rows, Console& console) {
    for (const StatsRow& row : rows)
        if (const std::string remark = analysis::order_remark(row.Independence.StepsBack); !remark.empty())
            console.Problem(platform::ValueText(row.Independence.Id) + ": " + remark);
}

std::string text_of(const std::optional<double>& value) {
    return value ? platform::NumberText(*value) : "";
}

TextTable table_of(const std::vector<StatsRow>& rows) {
    TextTable table{{"id", "count", "schoener", "swihart_slade", "sd_x", "sd_y", "ratio", "href", "href_scaled"}, {}};
    for (const StatsRow& row : rows)
        table.Rows.push_back({platform::ValueText(row.Independence.Id), std::to_string(row.Independence.Count),
                              text_of(row.Independence.Schoener), text_of(row.Independence.SwihartSlade),
                              text_of(row.Variance.SdX), text_of(row.Variance.SdY), text_of(row.Variance.Ratio),
                              text_of(row.Href.Href), text_of(row.Href.HrefScaled)});
    return table;
}

Json json_of(const std::vector<StatsRow>& rows) {
    Json json = Json::array();
    for (const StatsRow& row : rows)
        json.push_back({{"id", json_value(row.Independence.Id)},
                        {"count", row.Independence.Count},
                        {"schoener", json_number(row.Independence.Schoener)},
                        {"swihart_slade", json_number(row.Independence.SwihartSlade)},
                        {"sd_x", json_number(row.Variance.SdX)},
                        {"sd_y", json_number(row.Variance.SdY)},
                        {"ratio", json_number(row.Variance.Ratio)},
                        {"href", json_number(row.Href.Href)},
                        {"href_scaled", json_number(row.Href.HrefScaled)}});
    return json;
}

}  // namespace

void register_stats(CLI::App& command, StatsOptions& options) {
    add_measured_input_options(command, options.Points);
    command.add_option("--id-field", options.IdField, "Field that names the animal")->type_name("FIELD")->required();
    command.add_option("--csv", options.Csv, "Write the table as CSV")->type_name("OUT.csv");
    command.add_flag("--overwrite", options.Overwrite, "Replace a file of that name");
    command.add_flag("--json", options.Json, "Print one JSON array");
    command.footer(
        "Per animal, in the order of the layer's fixes: Schoener's ratio (below 1.6 or\n"
        "above 2.4: successive fixes are correlated), the index of Swihart and Slade\n"
        "(above 0.6: correlated), the standard deviations of x and y and their ratio, and\n"
        "the reference bandwidth of the fixes as they are and rescaled to unit variance.\n"
        "N/A, an empty CSV cell and null in JSON stand where an index is not defined.\n"
        "\n"
        "Example:\n"
        "\n"
        "  wxl stats wolves.shp --id-field animal --csv stats.csv");
}

int run_stats(const StatsOptions& options, Console& console) {
    std::optional<TextOutput> csv;
    if (!options.Csv.empty()) csv.emplace(options.Csv, options.Overwrite);
    const std::vector<StatsRow> rows = press_form(options, console);
    report_order(rows, console);
    const TextTable table = table_of(rows);
    if (csv) csv->Write(csv_text(table));
    if (options.Json) {
        console.Text(json_text(json_of(rows)));
    } else {
        print_table(table, console);
    }
    return exit_code::kDone;
}

}  // namespace wxl::cli
