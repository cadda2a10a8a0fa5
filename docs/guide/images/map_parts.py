"""What the drawn maps of this guide share: outlines by rule, fixes, the finished picture of some layers, a scale bar."""
from qgis.core import (QgsFillSymbol, QgsMapRendererParallelJob, QgsMapSettings, QgsMarkerSymbol, QgsRuleBasedRenderer,
                       QgsSingleSymbolRenderer, QgsVectorLayer)
from qgis.PyQt.QtCore import QPointF, QRectF, Qt
from qgis.PyQt.QtGui import QColor, QFont, QPainter, QPen

SCALE_BARS = [10, 20, 50, 100, 200, 500, 1000, 2000, 5000, 10000, 20000, 50000]  # metres
VEIL = QColor(255, 255, 255, 220)


def ruled_layer(path, name, symbols):
    """A layer of polygons of which each symbol (of createSimple) draws those that fulfil its expression."""
    layer = QgsVectorLayer(path, name)
    root = QgsRuleBasedRenderer.Rule(None)
    for expression, symbol in symbols:
        rule = QgsRuleBasedRenderer.Rule(QgsFillSymbol.createSimple(symbol))
        rule.setFilterExpression(expression)
        root.appendChild(rule)
    layer.setRenderer(QgsRuleBasedRenderer(root))
    return layer


def fix_layer(path, condition, opacity):
    layer = QgsVectorLayer(path, "fixes")
    layer.setSubsetString(condition)
    symbol = QgsMarkerSymbol.createSimple({"name": "circle", "size": "0.6", "outline_style": "no"})
    symbol.setColor(QColor(30, 30, 30, opacity))
    layer.setRenderer(QgsSingleSymbolRenderer(symbol))
    return layer


def drawn(layers, size, extent):
    """The picture of the layers, and the map units that one pixel of it takes."""
    settings = QgsMapSettings()
    settings.setLayers(layers)
    settings.setDestinationCrs(layers[0].crs())
    settings.setOutputSize(size)
    settings.setBackgroundColor(Qt.white)
    settings.setExtent(extent)
    job = QgsMapRendererParallelJob(settings)
    job.start()
    job.waitForFinished()
    return job.renderedImage(), settings.mapUnitsPerPixel()


def painter_on(picture):
    painter = QPainter(picture)
    painter.setRenderHint(QPainter.Antialiasing)
    font = QFont("DejaVu Sans")
    font.setPixelSize(16)
    painter.setFont(font)
    return painter


def draw_scale_bar(painter, left, base, widest, metres_per_pixel):
    length = max(m for m in SCALE_BARS if m / metres_per_pixel <= widest)
    pixels = length / metres_per_pixel
    painter.fillRect(QRectF(left - 14, base - 38, pixels + 28, 52), VEIL)
    painter.setPen(QPen(Qt.black, 2))
    painter.drawLine(QPointF(left, base), QPointF(left + pixels, base))
    for x in (left, left + pixels):
        painter.drawLine(QPointF(x, base - 7), QPointF(x, base))
    text = f"{length} m" if length < 1000 else f"{length // 1000} km"
    painter.drawText(QRectF(left, base - 34, pixels, 24), Qt.AlignCenter, text)
