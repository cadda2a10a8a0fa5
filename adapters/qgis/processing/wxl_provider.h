#pragma once
#include <qgsprocessingprovider.h>

namespace wxl::qgis {

/// The Processing provider "WXL Tools".
class WxlProvider final : public QgsProcessingProvider {
public:
    QString id() const override { return QStringLiteral("wxltools"); }
    QString name() const override { return QStringLiteral("WXL Tools"); }
    QIcon icon() const override;
    void loadAlgorithms() override;
};

/// Registers the provider; nothing where it is registered already. Unregisters it, and nothing where it is not there.
void AddWxlProvider();
void RemoveWxlProvider();

}  // namespace wxl::qgis
