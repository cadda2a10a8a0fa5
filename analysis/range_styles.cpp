#include "analysis/range_styles.h"

namespace wxl::analysis {
namespace {

constexpr const char* kHead =
    "<!DOCTYPE qgis PUBLIC 'http://mrcc.com/qgis.dtd' 'SYSTEM'>\n"
    "<qgis version=\"3.22.0\" styleCategories=\"Symbology\">\n";

std::string option(const char* name, const char* value) {
    return std::string("<Option type=\"QString\" name=\"") + name + "\" value=\"" + value + "\"/>";
}

/// An outline that is darker the smaller the percentage.
std::string darkening() {
    return "<data_defined_properties><Option type=\"Map\">" + option("name", "") +
           "<Option type=\"Map\" name=\"properties\"><Option type=\"Map\" name=\"outlineColor\">"
           "<Option type=\"bool\" name=\"active\" value=\"true\"/>" +
           option(
               "expression",
               "color_rgb(scale_linear(&quot;percent&quot;, 0, 100, 0, 40), scale_linear(&quot;percent&quot;, 0, 100, "
               "45, 150), scale_linear(&quot;percent&quot;, 0, 100, 80, 215))") +
           "<Option type=\"int\" name=\"type\" value=\"3\"/></Option></Option>" + option("type", "collection") +
           "</Option></data_defined_properties>\n";
}

/// The symbol `name` of ranges.
std::string range_symbol(const std::string& name, const char* fill, const char* line, const char* width) {
    return "<symbol type=\"fill\" name=\"" + name +
           "\" alpha=\"1\" clip_to_extent=\"1\" force_rhr=\"0\">\n"
           "<layer class=\"SimpleFill\" enabled=\"1\" locked=\"0\" pass=\"0\"><Option type=\"Map\">" +
           option("color", "0,114,178,45") + option("outline_color", "0,114,178,255") + option("outline_style", line) +
           option("outline_width", width) + option("outline_width_unit", "MM") + option("style", fill) + "</Option>\n" +
           darkening() + "</layer></symbol>";
}

/// Symbols of one fill and outline.
std::string plain_symbol(const char* fill, const char* outline, const char* width, const char* line) {
    return std::string(
               "<symbol type=\"fill\" name=\"0\" alpha=\"1\" clip_to_extent=\"1\" force_rhr=\"0\">\n"
               "<layer class=\"SimpleFill\" enabled=\"1\" locked=\"0\" pass=\"0\"><Option type=\"Map\">") +
           option("color", fill) + option("outline_color", outline) + option("outline_style", line) +
           option("outline_width", width) + option("outline_width_unit", "MM") + option("style", "solid") +
           "</Option>\n</layer></symbol>";
}

std::string renderer(const char* type, const std::string& rules, const std::string& symbols, const char* order) {
    return std::string("<renderer-v2 type=\"") + type +
           "\" symbollevels=\"0\" enableorderby=\"1\" forceraster=\"0\">\n" + rules + "<symbols>" + symbols +
           "</symbols>\n<orderby><orderByClause asc=\"0\" nullsFirst=\"0\">&quot;" + order +
           "&quot;</orderByClause></orderby>\n</renderer-v2>\n</qgis>\n";
}

}  // namespace

std::string isopleth_style() {
    return kHead + renderer("singleSymbol", "", range_symbol("0", "solid", "solid", "0.46"), "percent");
}

std::string limits_style() {
    const std::string rules =
        "<rules key=\"ranges\"><rule key=\"estimate\" symbol=\"0\" label=\"Range\" filter=\"&quot;bound&quot; = "
        "'est'\"/><rule key=\"limits\" symbol=\"1\" label=\"95 % limits of its area\" filter=\"&quot;bound&quot; "
        "&lt;&gt; 'est'\"/></rules>\n";
    return kHead + renderer("RuleRenderer", rules,
                            range_symbol("0", "solid", "solid", "0.46") + range_symbol("1", "no", "dash", "0.3"),
                            "area_m2");
}

std::string convex_polygon_style() {
    return kHead + renderer("singleSymbol", "", plain_symbol("0,0,0,0", "60,60,60,255", "0.4", "dash"), "percent");
}

std::string overlap_style() {
    return kHead +
           renderer("singleSymbol", "", plain_symbol("213,94,0,70", "150,60,0,255", "0.36", "solid"), "percent");
}

std::string fix_style() {
    return std::string(kHead) +
           "<renderer-v2 type=\"singleSymbol\" symbollevels=\"0\" enableorderby=\"0\" forceraster=\"0\">\n<symbols>"
           "<symbol type=\"marker\" name=\"0\" alpha=\"0.7\" clip_to_extent=\"1\" force_rhr=\"0\">\n"
           "<layer class=\"SimpleMarker\" enabled=\"1\" locked=\"0\" pass=\"0\"><Option type=\"Map\">" +
           option("color", "40,40,40,255") + option("outline_style", "no") + option("name", "circle") +
           option("size", "1.1") + option("size_unit", "MM") +
           "</Option></layer></symbol></symbols>\n</renderer-v2>\n</qgis>\n";
}

}  // namespace wxl::analysis
