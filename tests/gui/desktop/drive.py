"""Runs inside the real QGIS: drives the plugin's dialogs as a user would, by their widgets."""
from desktop_support import SETUP, action, check, child, drive, iface, shoot, shoot_screen, when_dialog, when_file_dialog
from qgis.core import QgsLayerTree, QgsPointXY, QgsProject
from qgis.PyQt.QtGui import QColor
from qgis.PyQt.QtWidgets import (QApplication, QCheckBox, QComboBox, QDialogButtonBox, QLabel, QLineEdit, QPushButton,
                                 QRadioButton, QTabWidget)


def kernel_density():
    def fill(dialog):
        def find(kind, name):
            return child(dialog, kind, name)

        tabs = find(QTabWidget, "SSTab1")
        find(QComboBox, "cmbPntL").setCurrentText("fixes")
        find(QComboBox, "cmbUIDFLD").setCurrentText("animal")
        find(QPushButton, "btnCalcIO").click()
        shoot(dialog, "desktop-kde-input")
        tabs.setCurrentIndex(1)
        shoot(dialog, "desktop-kde-kernel")
        tabs.setCurrentIndex(2)
        find(QRadioButton, "optBE_LSCV").click()
        shoot(dialog, "desktop-kde-bandwidth")
        find(QRadioButton, "optBE_HREF").click()
        tabs.setCurrentIndex(3)
        find(QLineEdit, "txtR").setText("W")
        find(QLineEdit, "txtCellSize").setText("100")
        find(QRadioButton, "optSmall").click()
        find(QCheckBox, "chkBnds").click()
        find(QLineEdit, "txtBnds").setText("95,50")
        find(QCheckBox, "chkPolys").click()
        find(QCheckBox, "chkHtml").click()
        shoot(dialog, "desktop-kde-output")
        find(QPushButton, "btnFolder").click()
        check(find(QLineEdit, "txtOutFolder").text() == SETUP["output"], "the chosen folder is shown")
        check(find(QCheckBox, "chkAddToMap").isChecked(), "results are added to the map by default")
        check(not find(QPushButton, "btnLastSettings").isEnabled(), "the project ran nothing before")
        find(QPushButton, "btnOK").click()
        check(find(QLabel, "lblHeadline").text() == "4 of 4 animals done", find(QLabel, "lblHeadline").text())
        check(find(QPushButton, "btnOpenPage").isEnabled(), "the page can be opened")
        shoot(dialog, "desktop-kde-panel")
        before = iface.mapCanvas().extent()
        find(QPushButton, "btnZoom").click()
        check(iface.mapCanvas().extent() != before, "zoomed to the results")
        find(QPushButton, "btnExit").click()

    when_file_dialog(SETUP["output"], QDialogButtonBox.Open)
    when_dialog("frmKDE", fill)
    action("OVI_KDE").trigger()


def suggestions():
    """What the project ran comes back, and what is suggested for the highlighted layer."""

    def fill(dialog):
        check(child(dialog, QComboBox, "cmbUIDFLD").currentIndex() == -1, "nothing is chosen by itself")
        shoot(dialog, "desktop-kde-hints")
        child(dialog, QPushButton, "btnLastSettings").click()
        check(child(dialog, QComboBox, "cmbUIDFLD").currentText() == "animal", "the field of the last run")
        check(child(dialog, QLineEdit, "txtCellSize").text() == "100", "its cells")
        check(child(dialog, QLineEdit, "txtOutFolder").text() == SETUP["output"], "its folder")
        child(dialog, QPushButton, "btnSuggest").click()
        check(child(dialog, QLineEdit, "txtCellSize").text() == "50", "a tenth of the smallest bandwidth of 604 m")
        child(dialog, QPushButton, "btnExit").click()

    when_dialog("frmKDE", fill)
    action("OVI_KDE").trigger()


def menu_under_plugins():
    """The commands of the toolbar stand in the menu Plugins too."""
    menus = [entry.menu() for entry in iface.pluginMenu().actions()
             if entry.menu() and entry.text().replace("&", "") == "WXL Tools"]
    check(len(menus) == 1, "one menu under Plugins")
    names = [entry.objectName() for entry in menus[0].actions() if not entry.isSeparator()]
    check(sorted(names) == sorted(["OVI_KDE", "CalcOBS", "RemoveDupsByTime2", "RemoveDupsByxy", "MOLE", "OVI_About"]),
          str(names))


def about():
    def close(dialog):
        shoot(dialog, "desktop-about")
        child(dialog, QPushButton, "btnExit").click()

    when_dialog("frmAbout", close)
    action("OVI_About").trigger()


def canvas_picture():
    """What the map shows once it is drawn."""
    canvas = iface.mapCanvas()
    canvas.refresh()
    canvas.waitWhileRendering()
    for _ in range(5):
        QApplication.processEvents()
        canvas.waitWhileRendering()
    return canvas.grab().toImage()


def colour_at(picture, x, y):
    pixel = iface.mapCanvas().getCoordinateTransform().transform(QgsPointXY(x, y))
    ratio = picture.devicePixelRatio()
    return QColor(picture.pixel(int(pixel.x() * ratio), int(pixel.y() * ratio)))


def results_on_the_map():
    """One group right below the fixes: isopleths above rasters, styled, in the layer's coordinate system."""
    fixes = QgsProject.instance().mapLayersByName("fixes")[0]
    root = QgsProject.instance().layerTreeRoot()
    check(root.children()[0].layer() is fixes, "the fixes stay on top")
    group = root.children()[1]
    check(QgsLayerTree.isGroup(group) and group.name() == "Home ranges: fixes, reference bandwidth", group.name())
    layers = [node.layer() for node in group.children()]
    animals = ["Freja", "Loke", "Sif", "Tyr"]
    check([layer.name() for layer in layers] ==
          [f"{a}: isopleth polygons" for a in animals] + [f"{a}: density" for a in animals], "layers of the group")
    check(iface.activeLayer() is fixes, "the point layer is still highlighted")
    for layer in layers:
        check(layer.crs() == fixes.crs(), f"coordinate system of {layer.name()}")
    categories = layers[0].renderer().categories()
    legend = [(c.label(), c.symbol().symbolLayer(0).strokeColor().name()) for c in categories]
    check([label for label, _ in legend] == ["95 %", "50 %"] and legend[0][1] != legend[1][1], str(legend))

    # Freja alone, on a white map, without the fixes
    root.findLayer(fixes).setItemVisibilityChecked(False)
    for node in group.children():
        node.setItemVisibilityChecked(node.name() == "Freja: density")
    density = layers[4]
    iface.mapCanvas().setExtent(density.extent())
    picture = canvas_picture()
    shoot(iface.mainWindow(), "desktop-density")
    provider, box = density.dataProvider(), density.extent()
    peak = (0.0, None)
    for row in range(0, density.height(), 2):
        for column in range(0, density.width(), 2):
            x = box.xMinimum() + (column + 0.5) * density.rasterUnitsPerPixelX()
            y = box.yMaximum() - (row + 0.5) * density.rasterUnitsPerPixelY()
            value = provider.sample(QgsPointXY(x, y), 1)[0]
            if value > peak[0]:
                peak = (value, (x, y))
    corner = (box.xMinimum() + 50, box.yMaximum() - 50)
    check(provider.sample(QgsPointXY(*corner), 1)[0] == 0, "nothing in the corner")
    check(colour_at(picture, *corner) == QColor(255, 255, 255), "zero is transparent")
    top = colour_at(picture, *peak[1])
    check(top.lightness() < 60 and top.blue() > top.red(), f"the peak is dark in the animal's hue: {top.name()}")

    # The isopleths above it
    for node in group.children():
        node.setItemVisibilityChecked(True)
    core = legend[1][1]
    picture = canvas_picture()
    check(colour_at(picture, *peak[1]) != top, "the isopleths lie above the raster")
    outlines = sum(QColor(picture.pixel(x, y)).name() == core
                   for y in range(0, picture.height()) for x in range(0, picture.width()))
    check(outlines > 50, f"{outlines} pixels of the core's outline")
    root.findLayer(fixes).setItemVisibilityChecked(True)
    iface.mapCanvas().setExtent(fixes.extent().buffered(8000))
    canvas_picture()
    shoot_screen("desktop-results")
    check(iface.statusBarIface().currentMessage() == "", "the status bar ends empty")


def main():
    iface.setActiveLayer(QgsProject.instance().mapLayersByName("fixes")[0])
    menu_under_plugins()
    about()
    canvas_picture()
    shoot(iface.mainWindow(), "desktop-window")
    kernel_density()
    suggestions()
    QApplication.processEvents()
    results_on_the_map()


drive(main)
