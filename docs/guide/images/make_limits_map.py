#!/usr/bin/env python3
"""Draws the ranges of several animals side by side: those of wxl akde with their limits, and those of wxl kde.

QT_QPA_PLATFORM=offscreen make_limits_map.py FIXES ID_FIELD OUT.png ID AKDE_POLYGONS KDE_POLYGONS [ID ...]
"""
import sys

from map_parts import draw_scale_bar, drawn, fix_layer, painter_on, ruled_layer
from qgis.core import QgsApplication, QgsRectangle
from qgis.PyQt.QtCore import QPointF, QRectF, QSize, Qt
from qgis.PyQt.QtGui import QColor, QImage, QPen

PANEL, HEAD, FOOT, GAP = 460, 40, 54, 16
MARGIN = 1.1
AKDE, HREF, FIX_OPACITY = "#0072b2", "#d55e00", 60
BOUNDS = {"high": ("dash", "no"), "est": ("solid", "solid"), "low": ("dot", "no")}


def akde_layer(path):
    return ruled_layer(path, "akde",
                       [(f'round("PERCENT") = 95 and "BOUND" = \'{bound}\'',
                         {"style": fill, "color": "0,114,178,45", "outline_color": AKDE, "outline_style": line,
                          "outline_width": "0.6" if bound == "est" else "0.35"}) for bound, (line, fill) in BOUNDS.items()])


def href_layer(path):
    return ruled_layer(path, "href",
                       [('round("PERCENT") = 95', {"style": "no", "outline_color": HREF, "outline_width": "0.7"})])


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
    square = QgsRectangle(centre.x() - side / 2, centre.y() - side / 2, centre.x() + side / 2, centre.y() + side / 2)
    panel, metres_per_pixel = drawn(layers, QSize(PANEL, PANEL), square)
    painter.drawImage(left, HEAD, panel)
    painter.setPen(QPen(QColor(120, 120, 120), 1))
    painter.drawRect(left, HEAD, PANEL - 1, PANEL - 1)
    painter.setPen(Qt.black)
    painter.drawText(QRectF(left, 0, PANEL, HEAD), Qt.AlignCenter, animal)
    draw_scale_bar(painter, left + 18, HEAD + PANEL - 20, PANEL / 3, metres_per_pixel)


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
    painter = painter_on(picture)
    for place, (animal, akde, href) in enumerate(animals):
        layers = [href_layer(href), akde_layer(akde), fix_layer(fixes, f"\"{field}\" = '{animal}'", FIX_OPACITY)]
        draw_panel(painter, place * (PANEL + GAP), animal, layers)
    draw_legend(painter, HEAD + PANEL + FOOT / 2)
    painter.end()
    picture.save(out)
    del layers
    application.exitQgis()


main()
