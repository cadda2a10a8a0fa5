"""What all drivers share: finding the plugin's commands and widgets in the real QGIS, and ending it with a result."""
import json
import os
import pathlib
import sys
import time
import traceback

from qgis.PyQt.QtCore import QTimer
from qgis.PyQt.QtWidgets import QApplication, QDialogButtonBox, QFileDialog, QLineEdit, QMessageBox, QToolBar
from qgis.utils import iface

SETUP = json.loads(os.environ["WXL_DESKTOP_TEST"])
SHOTS = pathlib.Path(SETUP["screenshots"])
boxes = []


def check(condition, what):
    if not condition:
        raise AssertionError(what)


def shoot(widget, name):
    """Keeps a picture of the widget, laid out and drawn for what it shows now, among the screenshots."""
    for _ in range(3):
        QApplication.processEvents()
        iface.mapCanvas().waitWhileRendering()
    widget.grab().save(str(SHOTS / f"{name}.png"))


def shoot_screen(name):
    # What was covered by a window that is gone now is painted first.
    for _ in range(5):
        QApplication.processEvents()
        time.sleep(0.02)
    iface.mainWindow().screen().grabWindow(0).save(str(SHOTS / f"{name}.png"))


def action(name):
    toolbar = iface.mainWindow().findChild(QToolBar, "OVITools")
    check(toolbar is not None, "the toolbar is there")
    for menu in toolbar.findChildren(type(iface.pluginMenu())):
        for entry in menu.actions():
            if entry.objectName() == name:
                return entry
    raise AssertionError("no command " + name)


def child(parent, kind, name):
    widget = parent.findChild(kind, name)
    check(widget is not None, name)
    return widget


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


def when_file_dialog(path, button):
    """Types the path into the next file dialog and presses its button (of QDialogButtonBox)."""

    def look():
        dialog = QApplication.activeModalWidget()
        if not isinstance(dialog, QFileDialog):
            QTimer.singleShot(50, look)
            return
        dialog.findChild(QLineEdit, "fileNameEdit").setText(path)
        dialog.findChild(QDialogButtonBox).button(button).click()

    QTimer.singleShot(50, look)


def answer_boxes():
    """Presses Yes or OK in every message box, and keeps its text."""
    box = QApplication.activeModalWidget()
    if isinstance(box, QMessageBox):
        boxes.append((box.windowTitle(), box.text()))
        shoot(box, f"{SETUP['name']}-message-{len(boxes)}")
        (box.button(QMessageBox.Yes) or box.button(QMessageBox.Ok)).click()


def give_up():
    shoot_screen(f"{SETUP['name']}-stuck")
    print("the desktop did not come to an end", file=sys.stderr)
    finish(1)


def finish(code):
    if code:
        traceback.print_exc()
    pathlib.Path(SETUP["boxes"]).write_text(json.dumps(boxes), encoding="utf-8")
    sys.stdout.flush()
    sys.stderr.flush()
    os._exit(code)


def drive(main, answer=answer_boxes):
    """Runs main() once the desktop is up, with all message boxes answered, and ends the desktop with its result."""

    def run():
        try:
            answering = QTimer(iface.mainWindow())
            answering.timeout.connect(answer)
            answering.start(100)
            QTimer.singleShot(120000, give_up)
            # The same window in every version, without what QGIS says of itself over the map.
            iface.mainWindow().resize(1030, 720)
            iface.messageBar().clearWidgets()
            main()
            finish(0)
        except Exception:
            finish(1)

    QTimer.singleShot(0, run)
