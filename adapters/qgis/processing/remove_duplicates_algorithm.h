#pragma once
#include "adapters/qgis/processing/wxl_algorithm.h"

namespace wxl::qgis {

/// The commands that remove duplicates by time or by place, on a copy of the layer.
class RemoveDuplicatesAlgorithm final : public WxlAlgorithm {
public:
    QString name() const override { return QStringLiteral("removeduplicates"); }
    QString displayName() const override { return QStringLiteral("Remove duplicate fixes"); }
    QString shortDescription() const override;
    QString shortHelpString() const override;
    QString group() const override { return QStringLiteral("Movement"); }
    QString groupId() const override { return QStringLiteral("movement"); }
    QStringList tags() const override;
    void initAlgorithm(const QVariantMap& configuration = {}) override;

protected:
    QgsProcessingAlgorithm* createInstance() const override { return new RemoveDuplicatesAlgorithm; }
    QVariantMap processAlgorithm(const QVariantMap& parameters, QgsProcessingContext& context,
                                 QgsProcessingFeedback* feedback) override;
};

}  // namespace wxl::qgis
