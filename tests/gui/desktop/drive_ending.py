"""Runs inside the real QGIS, and ends it in the middle of a run: by a signal, or by closing it."""
import os
import pathlib
import signal

from desktop_support import SETUP, action, child, drive, iface, when_dialog, when_file_dialog
from qgis.core import QgsProject
from qgis.PyQt.QtCore import QTimer
from qgis.PyQt.QtWidgets import QComboBox, QDialogButtonBox, QLineEdit, QPushButton, QTabWidget

LOCK = pathlib.Path(SETUP["output"]) / ".wxl_run.lock"


def end_when_running():
    """Ends the desktop as soon as the run holds its folder, and keeps that it did."""

    def look():
        if not LOCK.exists() or any(pathlib.Path(SETUP["marker"]).parent.glob("marker")):
            return
        pathlib.Path(SETUP["marker"]).write_text("the run held its folder", encoding="utf-8")
        QgsProject.instance().setDirty(False)  # no question about saving it
        if SETUP["how"] == "signal":
            os.kill(os.getpid(), signal.SIGTERM)
        else:
            iface.actionExit().trigger()

    timer = QTimer(iface.mainWindow())
    timer.timeout.connect(look)
    timer.start(5)


def main():
    def fill(dialog):
        child(dialog, QComboBox, "cmbUIDFLD").setCurrentText("animal")
        child(dialog, QTabWidget, "SSTab1").setCurrentIndex(3)
        child(dialog, QLineEdit, "txtCellSize").setText("50")
        child(dialog, QPushButton, "btnFolder").click()
        end_when_running()
        child(dialog, QPushButton, "btnOK").click()

    when_file_dialog(SETUP["output"], QDialogButtonBox.Open)
    when_dialog("frmKDE", fill)
    action("OVI_KDE").trigger()


drive(main)
