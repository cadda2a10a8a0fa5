#!/usr/bin/env python3
"""Draws a density raster with its isopleths and a scale bar, by QGIS without a window.

QT_QPA_PLATFORM=offscreen make_map.py DENSITY ISOPLETH_POLYGONS FIXES ID_CONDITION OUT.png
"""
import sys

from map_parts import VEIL, draw_scale_bar, drawn, fix_layer, painter_on, ruled_layer
from qgis.core import (QgsApplication, QgsColorRampShader, QgsRasterLayer, QgsRasterShader, QgsRectangle,
                       QgsSingleBandPseudoColorRenderer)
from qgis.PyQt.QtCore import QPointF, QRectF, QSize, Qt
from qgis.PyQt.QtGui import QColor, QPen

WIDTH, HEIGHT = 1000, 480
MARGIN = 1.06  # of the outermost isopleth's extent
DENSITY = [(0.0, "#ffffff"), (0.02, "#e5f0f6"), (0.1, "#9ecae1"), (0.3, "#4292c6"), (0.6, "#08519c"), (1.0, "#08306b")]
ISOPLETHS = {95: "#e6550d", 50: "#fdd835"}
FIX_OPACITY = 70


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
    return ruled_layer(path, "isopleths",
                       [(f'round("PERCENT") = {percent}', {"style": "no", "outline_color": colour, "outline_width": "0.7"})
                        for percent, colour in ISOPLETHS.items()])


def view(extent):
    """The extent with a margin, in the shape of the picture."""
    width, height = extent.width() * MARGIN, extent.height() * MARGIN
    width, height = max(width, height * WIDTH / HEIGHT), max(height, width * HEIGHT / WIDTH)
    centre = extent.center()
    return QgsRectangle(centre.x() - width / 2, centre.y() - height / 2, centre.x() + width / 2, centre.y() + height / 2)


def draw_legend(painter):
    left, top, row = WIDTH - 190, 20, 28
    painter.fillRect(QRectF(left - 14, top - 6, 184, row * (len(ISOPLETHS) + 1) + 12), VEIL)
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
    layers = [isopleth_layer(isopleths), fix_layer(fixes, condition, FIX_OPACITY), density_layer(density)]
    picture, metres_per_pixel = drawn(layers, QSize(WIDTH, HEIGHT), view(layers[0].extent()))
    painter = painter_on(picture)
    draw_scale_bar(painter, 30, HEIGHT - 30, WIDTH / 4, metres_per_pixel)
    draw_legend(painter)
    painter.end()
    picture.save(out)
    del layers
    application.exitQgis()


main()
