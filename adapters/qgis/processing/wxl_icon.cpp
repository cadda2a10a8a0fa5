#include "adapters/qgis/processing/wxl_icon.h"

#include <QByteArray>
#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

namespace wxl::qgis {
namespace {

constexpr const char* kDrawing =
    R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 24 24">
<path fill="#cfe6f5" stroke="#1b6ca8" d="M3 13c-1-6 4-11 10-10.500s9 5 8.500 10-5 9.500-10.500 9S3.700 18 3 13z"/>
<path fill="#8cc3e6" stroke="#1b6ca8" d="M6.500 13c-.6-4 3-7 7-6.500s5.500 3.500 5 7-3.500 5.500-6.500 5-5-2-5.500-5.500z"/>
<path fill="#3f93cc" stroke="#1b6ca8" d="M10 13c-.3-2 1.500-3.500 3.500-3.200s2.500 1.800 2.300 3.400-1.800 2.600-3.300 2.400-2.300-1-2.500-2.600z"/>
<g fill="#1f2933"><circle cx="12.500" cy="12.500" r="1"/><circle cx="14.500" cy="11" r=".8"/><circle cx="9" cy="15.500" r=".8"/><circle cx="16.500" cy="16" r=".8"/><circle cx="6" cy="9.500" r=".8"/></g>
</svg>)";

}  // namespace

QIcon WxlIcon() {
    QSvgRenderer drawing{QByteArray(kDrawing)};
    QIcon icon;
    for (const int side : {16, 24, 32, 48, 64}) {
        QPixmap pixmap(side, side);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        drawing.render(&painter);
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

}  // namespace wxl::qgis
