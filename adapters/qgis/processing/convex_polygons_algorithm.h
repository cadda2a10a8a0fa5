#pragma once
#include "adapters/qgis/processing/wxl_algorithm.h"

namespace wxl::qgis {

/// The minimum convex polygons of wxl mcp as a layer.
class ConvexPolygonsAlgorithm final : public WxlAlgorithm {
public:
    QString name() const override { return QStringLiteral("minimumconvexpolygons"); }
    QString displayName() const override { return QStringLiteral("Minimum convex polygons"); }
    QString shortDescription() const override;
    QString shortHelpString() const override;
    QStringList tags() const override;
    QString helpUrl() const override;
    void initAlgorithm(const QVariantMap& configuration = {}) override;
    bool checkParameterValues(const QVariantMap& parameters, QgsProcessingContext& context,
                              QString* message = nullptr) const override;

protected:
    QgsProcessingAlgorithm* createInstance() const override { return new ConvexPolygonsAlgorithm; }
    QVariantMap processAlgorithm(const QVariantMap& parameters, QgsProcessingContext& context,
                                 QgsProcessingFeedback* feedback) override;
};

}  // namespace wxl::qgis
