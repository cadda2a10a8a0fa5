#!/usr/bin/env python3
"""Draws the ranges of several animals side by side: those of wxl akde with their limits, and those of wxl kde.

QT_QPA_PLATFORM=offscreen make_limits_map.py FIXES ID_FIELD OUT.png ID AKDE_POLYGONS KDE_POLYGONS [ID ...]
"""
import sys

from qgis.core import (QgsApplication, QgsFillSymbol, QgsMapRendererParallelJob, QgsMapSettings, QgsMarkerSymbol,
                       QgsRectangle, QgsRuleBasedRenderer, QgsSingleSymbolRenderer, QgsVectorLayer)
from qgis.PyQt.QtCore import QPointF, QRectF, QSize, Qt
from qgis.PyQt.QtGui import QColor, QFont, QImage, QPainter, QPen

PANEL, HEAD, FOOT, GAP = 460, 40, 54, 16
MARGIN = 1.1
AKDE, HREF, FIX = "#0072b2", "#d55e00", QColor(30, 30, 30, 60)
SCALE_BARS = [10, 20, 50, 100, 200, 500, 1000, 2000, 5000, 10000, 20000, 50000]  # metres
BOUNDS = {"high": ("dash", "no"), "est": ("solid", "solid"), "low": ("dot", "no")}


def rules(layer, symbols):
    root = QgsRuleBasedRenderer.Rule(None)
    for expression, symbol in symbols:
        rule = QgsRuleBasedRenderer.Rule(QgsFillSymbol.createSimple(symbol))
        rule.setFilterExpression(expression)
        root.appendChild(rule)
    layer.setRenderer(QgsRuleBasedRenderer(root))
    return layer


def akde_layer(path):
    return rules(QgsVectorLayer(path, "akde"),
                 [(f'round("PERCENT") = 95 and "BOUND" = \'{bound}\'',
                   {"style": fill, "color": "0,114,178,45", "outline_color": AKDE, "outline_style": line,
                    "outline_width": "0.6" if bound == "est" else "0.35"}) for bound, (line, fill) in BOUNDS.items()])


def href_layer(path):
    return rules(QgsVectorLayer(path, "href"),
                 [('round("PERCENT") = 95', {"style": "no", "outline_color": HREF, "outline_width": "0.7"})])


def fix_layer(path, condition):
    layer = QgsVectorLayer(path, "fixes")
    layer.setSubsetString(condition)
    symbol = QgsMarkerSymbol.createSimple({"name": "circle", "size": "0.6", "outline_style": "no"})
    symbol.setColor(FIX)
    layer.setRenderer(QgsSingleSymbolRenderer(symbol))
    return layer


def ninety_five(layer):
    extent = QgsRectangle()
    for feature in layer.getFeatures('round("PERCENT") = 95'):
        extent.combineExtentWith(feature.geometry().boundingBox())
    return extent


def draw_panel(painter, left, animal, layers):
    extent = ninety_five(layers[0])
    extent.combineExtentWith(ninety_five(layers[1]))
    side = max(extent.width(), extent.height()) * MARGIN
    centre = extent.center()
    settings = QgsMapSettings()
    settings.setLayers(layers)
    settings.setDestinationCrs(layers[0].crs())
    settings.setOutputSize(QSize(PANEL, PANEL))
    settings.setBackgroundColor(Qt.white)
    settings.setExtent(QgsRectangle(centre.x() - side / 2, centre.y() - side / 2, centre.x() + side / 2, centre.y() + side / 2))
    job = QgsMapRendererParallelJob(settings)
    job.start()
    job.waitForFinished()
    painter.drawImage(left, HEAD, job.renderedImage())
    painter.setPen(QPen(QColor(120, 120, 120), 1))
    painter.drawRect(left, HEAD, PANEL - 1, PANEL - 1)
    painter.setPen(Qt.black)
    painter.drawText(QRectF(left, 0, PANEL, HEAD), Qt.AlignCenter, animal)
    draw_scale_bar(painter, left, side / PANEL)


def draw_scale_bar(painter, left, metres_per_pixel):
    length = max(m for m in SCALE_BARS if m / metres_per_pixel <= PANEL / 3)
    pixels = length / metres_per_pixel
    left, base = left + 18, HEAD + PANEL - 16
    painter.fillRect(QRectF(left - 8, base - 28, pixels + 16, 36), QColor(255, 255, 255, 220))
    painter.setPen(QPen(Qt.black, 2))
    painter.drawLine(QPointF(left, base), QPointF(left + pixels, base))
    for x in (left, left + pixels):
        painter.drawLine(QPointF(x, base - 6), QPointF(x, base))
    painter.drawText(QRectF(left, base - 28, pixels, 22), Qt.AlignCenter,
                     f"{length} m" if length < 1000 else f"{length // 1000} km")


def draw_legend(painter, top):
    left = 4
    for text, colour, style, width in (("AKDE 95 %", AKDE, Qt.SolidLine, 150), ("its lower limit", AKDE, Qt.DotLine, 180),
                                       ("its upper limit", AKDE, Qt.DashLine, 180), ("HREF 95 %", HREF, Qt.SolidLine, 150)):
        painter.setPen(QPen(QColor(colour), 3, style))
        painter.drawLine(QPointF(left, top), QPointF(left + 38, top))
        painter.setPen(Qt.black)
        painter.drawText(QRectF(left + 48, top - 14, width, 28), Qt.AlignVCenter, text)
        left += width + 30


def main():
    fixes, field, out = sys.argv[1:4]
    animals = [sys.argv[i:i + 3] for i in range(4, len(sys.argv), 3)]
    application = QgsApplication([], False)
    application.initQgis()
    picture = QImage(len(animals) * (PANEL + GAP) - GAP, HEAD + PANEL + FOOT, QImage.Format_RGB32)
    picture.fill(Qt.white)
    painter = QPainter(picture)
    painter.setRenderHint(QPainter.Antialiasing)
    font = QFont("DejaVu Sans")
    font.setPixelSize(16)
    painter.setFont(font)
    for place, (animal, akde, href) in enumerate(animals):
        layers = [href_layer(href), akde_layer(akde), fix_layer(fixes, f"\"{field}\" = '{animal}'")]
        draw_panel(painter, place * (PANEL + GAP), animal, layers)
    draw_legend(painter, HEAD + PANEL + FOOT / 2)
    painter.end()
    picture.save(out)
    application.exitQgis()


main()
