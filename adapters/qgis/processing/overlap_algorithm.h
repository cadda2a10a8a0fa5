#pragma once
#include "adapters/qgis/processing/wxl_algorithm.h"

namespace wxl::qgis {

/// How far the home ranges of all pairs of animals overlap, with the files of wxl overlap.
class OverlapAlgorithm final : public WxlAlgorithm {
public:
    QString name() const override { return QStringLiteral("overlap"); }
    QString displayName() const override { return QStringLiteral("Overlap of home ranges"); }
    QString shortDescription() const override;
    QString shortHelpString() const override;
    QStringList tags() const override;
    QString helpUrl() const override;
    void initAlgorithm(const QVariantMap& configuration = {}) override;
    bool checkParameterValues(const QVariantMap& parameters, QgsProcessingContext& context,
                              QString* message = nullptr) const override;

protected:
    QgsProcessingAlgorithm* createInstance() const override { return new OverlapAlgorithm; }
    QVariantMap processAlgorithm(const QVariantMap& parameters, QgsProcessingContext& context,
                                 QgsProcessingFeedback* feedback) override;
};

}  // namespace wxl::qgis
