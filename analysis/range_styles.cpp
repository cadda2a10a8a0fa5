#include "analysis/range_styles.h"

namespace wxl::analysis {
namespace {

constexpr const char* kHead =
    "<!DOCTYPE qgis PUBLIC 'http://mrcc.com/qgis.dtd' 'SYSTEM'>\n"
    "<qgis version=\"3.22.0\" styleCategories=\"Symbology\">\n";

std::string option(const char* name, const char* value) {
    return std::string("<Option type=\"QString\" name=\"") + name + "\" value=\"" + value + "\"/>";
}

}  // namespace

std::string isopleth_style() {
    return std::string(kHead) +
           "<renderer-v2 type=\"singleSymbol\" symbollevels=\"0\" enableorderby=\"1\" forceraster=\"0\">\n<symbols>"
           "<symbol type=\"fill\" name=\"0\" alpha=\"1\" clip_to_extent=\"1\" force_rhr=\"0\">\n"
           "<layer class=\"SimpleFill\" enabled=\"1\" locked=\"0\" pass=\"0\"><Option type=\"Map\">" +
           option("color", "0,114,178,45") + option("outline_color", "0,114,178,255") +
           option("outline_style", "solid") + option("outline_width", "0.46") + option("outline_width_unit", "MM") +
           option("style", "solid") + "</Option>\n<data_defined_properties><Option type=\"Map\">" + option("name", "") +
           "<Option type=\"Map\" name=\"properties\"><Option type=\"Map\" name=\"outlineColor\">"
           "<Option type=\"bool\" name=\"active\" value=\"true\"/>" +
           option(
               "expression",
               "color_rgb(scale_linear(&quot;percent&quot;, 0, 100, 0, 40), scale_linear(&quot;percent&quot;, 0, 100, "
               "45, 150), scale_linear(&quot;percent&quot;, 0, 100, 80, 215))") +
           "<Option type=\"int\" name=\"type\" value=\"3\"/></Option></Option>" + option("type", "collection") +
           "</Option></data_defined_properties>\n</layer></symbol></symbols>\n"
           "<orderby><orderByClause asc=\"0\" nullsFirst=\"0\">&quot;percent&quot;</orderByClause></orderby>\n"
           "</renderer-v2>\n</qgis>\n";
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
