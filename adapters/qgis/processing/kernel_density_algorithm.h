#pragma once
#include "adapters/qgis/processing/wxl_algorithm.h"
#include "analysis/settings_text.h"

#include <string>

namespace wxl::qgis {

/// The batch kernel density analysis: fills the analysis form, presses its OK and returns what the run wrote.
class KernelDensityAlgorithm final : public WxlAlgorithm {
public:
    QString name() const override { return QStringLiteral("kerneldensity"); }
    QString displayName() const override { return QStringLiteral("Kernel density home ranges"); }
    QString shortDescription() const override;
    QString shortHelpString() const override;
    QStringList tags() const override;
    void initAlgorithm(const QVariantMap& configuration = {}) override;
    bool checkParameterValues(const QVariantMap& parameters, QgsProcessingContext& context,
                              QString* message = nullptr) const override;

protected:
    QgsProcessingAlgorithm* createInstance() const override { return new KernelDensityAlgorithm; }
    QVariantMap processAlgorithm(const QVariantMap& parameters, QgsProcessingContext& context,
                                 QgsProcessingFeedback* feedback) override;

private:
    void AddBandwidthParameters();
    void AddRasterParameters();
    void AddIsoplethParameters();
    void AddRunParameters();
    analysis::ExtentChoice Extent(const QVariantMap& parameters, QgsProcessingContext& context,
                                  ProcessingSession& session) const;
    void TakeKernel(const QVariantMap& parameters, QgsProcessingContext& context, analysis::Settings& settings) const;
    void TakeOutput(const QVariantMap& parameters, QgsProcessingContext& context, analysis::Settings& settings) const;
    bool WantsIsopleths(const QVariantMap& parameters, QgsProcessingContext& context) const;
    void TakeIsopleths(const QVariantMap& parameters, QgsProcessingContext& context,
                       analysis::Settings& settings) const;
};

}  // namespace wxl::qgis
