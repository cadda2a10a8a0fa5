#pragma once
#include <QString>
#include <string>
#include <string_view>

namespace wxl::qgis {

// Texts of Qt as texts of the platform, in UTF-8, and back.

QString ToQString(std::string_view text);
std::string FromQString(const QString& text);

}  // namespace wxl::qgis
