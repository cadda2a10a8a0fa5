#pragma once
#include "adapters/qgis/processing/wxl_algorithm.h"

namespace wxl::qgis {

/// The numbers of the analysis form's three tables, one row for each animal.
class StatisticsAlgorithm final : public WxlAlgorithm {
public:
    QString name() const override { return QStringLiteral("statistics"); }
    QString displayName() const override { return QStringLiteral("Independence, spread and reference bandwidth"); }
    QString shortDescription() const override;
    QString shortHelpString() const override;
    QStringList tags() const override;
    void initAlgorithm(const QVariantMap& configuration = {}) override;

protected:
    QgsProcessingAlgorithm* createInstance() const override { return new StatisticsAlgorithm; }
    QVariantMap processAlgorithm(const QVariantMap& parameters, QgsProcessingContext& context,
                                 QgsProcessingFeedback* feedback) override;
};

}  // namespace wxl::qgis
