#pragma once
#include "adapters/qgis/processing/wxl_algorithm.h"

namespace wxl::qgis {

/// The command "Calculate Travel Times and Distances" on a copy of the layer.
class ObservationFieldsAlgorithm final : public WxlAlgorithm {
public:
    QString name() const override { return QStringLiteral("observationfields"); }
    QString displayName() const override { return QStringLiteral("Travel times and distances"); }
    QString shortDescription() const override;
    QString shortHelpString() const override;
    QString group() const override { return QStringLiteral("Movement"); }
    QString groupId() const override { return QStringLiteral("movement"); }
    QStringList tags() const override;
    void initAlgorithm(const QVariantMap& configuration = {}) override;

protected:
    QgsProcessingAlgorithm* createInstance() const override { return new ObservationFieldsAlgorithm; }
    QVariantMap processAlgorithm(const QVariantMap& parameters, QgsProcessingContext& context,
                                 QgsProcessingFeedback* feedback) override;
};

}  // namespace wxl::qgis
