#include "adapters/qgis/qt_text.h"

namespace wxl::qgis {

QString ToQString(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}

std::string FromQString(const QString& text) {
    const QByteArray bytes = text.toUtf8();
    return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}

}  // namespace wxl::qgis
