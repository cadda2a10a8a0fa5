#pragma once
#include <QIcon>

namespace wxl::qgis {

/// The icon of the provider and its algorithms: three nested isopleths around fixes.
QIcon WxlIcon();

}  // namespace wxl::qgis
