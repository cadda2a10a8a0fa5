"""Runs inside the real QGIS: drives the plugin as a user would, by its widgets, and ends QGIS with the result."""
import json
import os
import pathlib
import sys
import traceback

from qgis.core import QgsProject
from qgis.PyQt.QtCore import QTimer
from qgis.PyQt.QtWidgets import (QApplication, QCheckBox, QComboBox, QDialogButtonBox, QFileDialog, QLineEdit,
                                 QMessageBox, QPushButton, QRadioButton, QTabWidget, QToolBar)
from qgis.utils import iface

SETUP = json.loads(os.environ["WXL_DESKTOP_TEST"])
SHOTS = pathlib.Path(SETUP["screenshots"])
boxes = []


def check(condition, what):
    if not condition:
        raise AssertionError(what)


def action(name):
    toolbar = iface.mainWindow().findChild(QToolBar, "OVITools")
    check(toolbar is not None, "the toolbar is there")
    for menu in toolbar.findChildren(type(iface.pluginMenu())):
        for entry in menu.actions():
            if entry.objectName() == name:
                return entry
    raise AssertionError("no command " + name)


def when_dialog(name, do):
    """Calls do(dialog) as soon as the modal dialog is on screen; a fault in it ends the test."""

    def look():
        dialog = QApplication.activeModalWidget()
        if dialog is None or dialog.objectName() != name:
            QTimer.singleShot(50, look)
            return
        try:
            do(dialog)
        except Exception:
            finish(1)

    QTimer.singleShot(50, look)


def answer_boxes():
    """Presses Yes or OK in every message box, and keeps its text."""
    box = QApplication.activeModalWidget()
    if isinstance(box, QMessageBox):
        boxes.append((box.windowTitle(), box.text()))
        box.grab().save(str(SHOTS / f"desktop-message-{len(boxes)}.png"))
        (box.button(QMessageBox.Yes) or box.button(QMessageBox.Ok)).click()


def kernel_density():
    def fill(dialog):
        def find(kind, name):
            widget = dialog.findChild(kind, name)
            check(widget is not None, name)
            return widget

        tabs = find(QTabWidget, "SSTab1")
        find(QComboBox, "cmbPntL").setCurrentText("fixes")
        find(QComboBox, "cmbUIDFLD").setCurrentText("animal")
        find(QPushButton, "btnCalcIO").click()
        dialog.grab().save(str(SHOTS / "desktop-kde-input.png"))
        tabs.setCurrentIndex(1)
        tabs.setCurrentIndex(2)
        find(QRadioButton, "optBE_HREF").click()
        dialog.grab().save(str(SHOTS / "desktop-kde-bandwidth.png"))
        tabs.setCurrentIndex(3)
        find(QLineEdit, "txtR").setText("W")
        find(QLineEdit, "txtCellSize").setText("100")
        find(QRadioButton, "optSmall").click()
        find(QCheckBox, "chkBnds").click()
        find(QLineEdit, "txtBnds").setText("95,50")
        find(QCheckBox, "chkPolys").click()
        dialog.grab().save(str(SHOTS / "desktop-kde-output.png"))
        find(QPushButton, "btnFolder").click()
        check(find(QLineEdit, "txtOutFolder").text() == SETUP["output"], "the chosen folder is shown")
        find(QPushButton, "btnOK").click()
        find(QPushButton, "btnExit").click()

    def choose_folder():
        dialog = QApplication.activeModalWidget()
        if not isinstance(dialog, QFileDialog):
            QTimer.singleShot(50, choose_folder)
            return
        dialog.findChild(QLineEdit, "fileNameEdit").setText(SETUP["output"])
        dialog.findChild(QDialogButtonBox).button(QDialogButtonBox.Open).click()

    QTimer.singleShot(50, choose_folder)
    when_dialog("frmKDE", fill)
    action("OVI_KDE").trigger()


def about():
    def close(dialog):
        dialog.grab().save(str(SHOTS / "desktop-about.png"))
        dialog.findChild(QPushButton, "btnExit").click()

    when_dialog("frmAbout", close)
    action("OVI_About").trigger()


def give_up():
    iface.mainWindow().screen().grabWindow(0).save(str(SHOTS / "desktop-stuck.png"))
    print("the desktop did not come to an end", file=sys.stderr)
    finish(1)


def finish(code):
    if code:
        traceback.print_exc()
    pathlib.Path(SETUP["boxes"]).write_text(json.dumps(boxes), encoding="utf-8")
    sys.stdout.flush()
    sys.stderr.flush()
    os._exit(code)


def main():
    try:
        layer = QgsProject.instance().mapLayersByName("fixes")[0]
        iface.setActiveLayer(layer)
        answering = QTimer(iface.mainWindow())
        answering.timeout.connect(answer_boxes)
        answering.start(100)
        QTimer.singleShot(120000, give_up)
        about()
        kernel_density()
        QApplication.processEvents()
        iface.mainWindow().grab().save(str(SHOTS / "desktop-window.png"))
        finish(0)
    except Exception:
        finish(1)


QTimer.singleShot(0, main)
