#pragma once
#include "adapters/qgis/processing/wxl_algorithm.h"
#include "akde/range_run.h"

namespace wxl::qgis {

/// Home ranges of autocorrelated tracks with limits, as wxl akde.
class AutocorrelatedRangesAlgorithm final : public WxlAlgorithm {
public:
    QString name() const override { return QStringLiteral("autocorrelatedranges"); }
    QString displayName() const override { return QStringLiteral("Home ranges for autocorrelated tracks (AKDE)"); }
    QString shortDescription() const override;
    QString shortHelpString() const override;
    QStringList tags() const override;
    QString helpUrl() const override;
    void initAlgorithm(const QVariantMap& configuration = {}) override;
    bool checkParameterValues(const QVariantMap& parameters, QgsProcessingContext& context,
                              QString* message = nullptr) const override;

protected:
    QgsProcessingAlgorithm* createInstance() const override { return new AutocorrelatedRangesAlgorithm; }
    QVariantMap processAlgorithm(const QVariantMap& parameters, QgsProcessingContext& context,
                                 QgsProcessingFeedback* feedback) override;

private:
    void AddModelParameters();
    void AddRasterParameters();
    void AddRunParameters();
    akde::RangeSettings SettingsOf(const QVariantMap& parameters, QgsProcessingContext& context) const;
    void TakeExtent(const QVariantMap& parameters, QgsProcessingContext& context, akde::RangeSettings& settings) const;
};

}  // namespace wxl::qgis
