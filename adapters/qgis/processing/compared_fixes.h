#pragma once
#include "adapters/qgis/processing/wxl_algorithm.h"
#include "comparison/compare_fixes.h"

#include <QString>
#include <string>
#include <vector>

namespace wxl::qgis {

/// The animals of a layer, ascending by ID, in the layer's order of fixes; what is left out goes to the log.
/// QgsProcessingException where the layer has no such field, or no animal.
std::vector<comparison::NamedFixes> animals_of(const platform::Layer& layer, const std::string& idField,
                                               bool selectedOnly, QgsProcessingFeedback& feedback);

/// Percentages above 0 and up to 100 that a user typed, each once; they were checked before.
std::vector<double> percentages_of(const QString& text);

/// Draws a layer by a style of QGIS's own format once it is in the project.
class StyledOnLoad final : public QgsProcessingLayerPostProcessorInterface {
public:
    explicit StyledOnLoad(std::string style) : m_style(std::move(style)) {}
    void postProcessLayer(QgsMapLayer* layer, QgsProcessingContext& context, QgsProcessingFeedback* feedback) override;

private:
    std::string m_style;
};

}  // namespace wxl::qgis
