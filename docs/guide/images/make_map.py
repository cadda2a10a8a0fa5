#!/usr/bin/env python3
"""Draws a density raster with its isopleths and a scale bar, by QGIS without a window.

QT_QPA_PLATFORM=offscreen make_map.py DENSITY ISOPLETH_POLYGONS FIXES ID_CONDITION OUT.png
"""
import sys

from qgis.core import (QgsApplication, QgsColorRampShader, QgsFillSymbol, QgsMapRendererParallelJob, QgsMapSettings,
                       QgsMarkerSymbol, QgsRasterLayer, QgsRasterShader, QgsRectangle, QgsRuleBasedRenderer,
                       QgsSingleBandPseudoColorRenderer, QgsSingleSymbolRenderer, QgsVectorLayer)
from qgis.PyQt.QtCore import QPointF, QRectF, QSize, Qt
from qgis.PyQt.QtGui import QColor, QFont, QPainter, QPen

WIDTH, HEIGHT = 1000, 480
MARGIN = 1.06  # of the outermost isopleth's extent
DENSITY = [(0.0, "#ffffff"), (0.02, "#e5f0f6"), (0.1, "#9ecae1"), (0.3, "#4292c6"), (0.6, "#08519c"), (1.0, "#08306b")]
ISOPLETHS = {95: "#e6550d", 50: "#fdd835"}
FIX = QColor(30, 30, 30, 70)
SCALE_BARS = [10, 20, 50, 100, 200, 500, 1000, 2000, 5000, 10000, 20000]  # metres


def density_layer(path):
    layer = QgsRasterLayer(path, "density")
    largest = layer.dataProvider().bandStatistics(1).maximumValue
    ramp = QgsColorRampShader(0.0, largest)
    ramp.setColorRampType(QgsColorRampShader.Interpolated)
    ramp.setColorRampItemList([QgsColorRampShader.ColorRampItem(share * largest, QColor(colour))
                               for share, colour in DENSITY])
    shader = QgsRasterShader()
    shader.setRasterShaderFunction(ramp)
    layer.setRenderer(QgsSingleBandPseudoColorRenderer(layer.dataProvider(), 1, shader))
    return layer


def isopleth_layer(path):
    layer = QgsVectorLayer(path, "isopleths")
    root = QgsRuleBasedRenderer.Rule(None)
    for percent, colour in ISOPLETHS.items():
        symbol = QgsFillSymbol.createSimple({"style": "no", "outline_color": colour, "outline_width": "0.7"})
        rule = QgsRuleBasedRenderer.Rule(symbol)
        rule.setFilterExpression(f'round("PERCENT") = {percent}')
        root.appendChild(rule)
    layer.setRenderer(QgsRuleBasedRenderer(root))
    return layer


def fix_layer(path, condition):
    layer = QgsVectorLayer(path, "fixes")
    layer.setSubsetString(condition)
    symbol = QgsMarkerSymbol.createSimple({"name": "circle", "size": "0.6", "outline_style": "no"})
    symbol.setColor(FIX)
    layer.setRenderer(QgsSingleSymbolRenderer(symbol))
    return layer


def view(extent):
    """The extent with a margin, in the shape of the picture."""
    width, height = extent.width() * MARGIN, extent.height() * MARGIN
    width, height = max(width, height * WIDTH / HEIGHT), max(height, width * HEIGHT / WIDTH)
    centre = extent.center()
    return QgsRectangle(centre.x() - width / 2, centre.y() - height / 2, centre.x() + width / 2, centre.y() + height / 2)


def draw_scale_bar(painter, metres_per_pixel):
    length = max(m for m in SCALE_BARS if m / metres_per_pixel <= WIDTH / 4)
    pixels = length / metres_per_pixel
    left, base = 30, HEIGHT - 30
    painter.fillRect(QRectF(left - 14, base - 38, pixels + 28, 54), QColor(255, 255, 255, 220))
    painter.setPen(QPen(Qt.black, 2))
    painter.drawLine(QPointF(left, base), QPointF(left + pixels, base))
    for x in (left, left + pixels):
        painter.drawLine(QPointF(x, base - 7), QPointF(x, base))
    text = f"{length} m" if length < 1000 else f"{length // 1000} km"
    painter.drawText(QRectF(left, base - 34, pixels, 24), Qt.AlignCenter, text)


def draw_legend(painter):
    left, top, row = WIDTH - 190, 20, 28
    painter.fillRect(QRectF(left - 14, top - 6, 184, row * (len(ISOPLETHS) + 1) + 12), QColor(255, 255, 255, 220))
    for percent, colour in ISOPLETHS.items():
        painter.setPen(QPen(QColor(colour), 4))
        painter.drawLine(QPointF(left, top + row / 2), QPointF(left + 34, top + row / 2))
        painter.setPen(Qt.black)
        painter.drawText(QRectF(left + 46, top, 130, row), Qt.AlignVCenter, f"{percent} % isopleth")
        top += row
    painter.setBrush(QColor(30, 30, 30))
    painter.setPen(Qt.NoPen)
    painter.drawEllipse(QPointF(left + 17, top + row / 2), 3, 3)
    painter.setPen(Qt.black)
    painter.drawText(QRectF(left + 46, top, 130, row), Qt.AlignVCenter, "fix")


def main():
    density, isopleths, fixes, condition, out = sys.argv[1:6]
    application = QgsApplication([], False)
    application.initQgis()
    layers = [isopleth_layer(isopleths), fix_layer(fixes, condition), density_layer(density)]
    settings = QgsMapSettings()
    settings.setLayers(layers)
    settings.setDestinationCrs(layers[0].crs())
    settings.setOutputSize(QSize(WIDTH, HEIGHT))
    settings.setBackgroundColor(Qt.white)
    settings.setExtent(view(layers[0].extent()))
    job = QgsMapRendererParallelJob(settings)
    job.start()
    job.waitForFinished()
    picture = job.renderedImage()
    painter = QPainter(picture)
    painter.setRenderHint(QPainter.Antialiasing)
    font = QFont("DejaVu Sans")
    font.setPixelSize(16)
    painter.setFont(font)
    draw_scale_bar(painter, settings.mapUnitsPerPixel())
    draw_legend(painter)
    painter.end()
    picture.save(out)
    del layers, job
    application.exitQgis()


main()
