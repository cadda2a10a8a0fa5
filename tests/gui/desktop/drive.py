"""Runs inside the real QGIS: drives the plugin's dialogs as a user would, by their widgets."""
from desktop_support import SETUP, action, check, child, drive, iface, shoot, when_dialog, when_file_dialog
from qgis.core import QgsProject
from qgis.PyQt.QtWidgets import (QApplication, QCheckBox, QComboBox, QDialogButtonBox, QLineEdit, QPushButton,
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
        tabs.setCurrentIndex(2)
        find(QRadioButton, "optBE_HREF").click()
        shoot(dialog, "desktop-kde-bandwidth")
        tabs.setCurrentIndex(3)
        find(QLineEdit, "txtR").setText("W")
        find(QLineEdit, "txtCellSize").setText("100")
        find(QRadioButton, "optSmall").click()
        find(QCheckBox, "chkBnds").click()
        find(QLineEdit, "txtBnds").setText("95,50")
        find(QCheckBox, "chkPolys").click()
        shoot(dialog, "desktop-kde-output")
        find(QPushButton, "btnFolder").click()
        check(find(QLineEdit, "txtOutFolder").text() == SETUP["output"], "the chosen folder is shown")
        find(QPushButton, "btnOK").click()
        find(QPushButton, "btnExit").click()

    when_file_dialog(SETUP["output"], QDialogButtonBox.Open)
    when_dialog("frmKDE", fill)
    action("OVI_KDE").trigger()


def about():
    def close(dialog):
        shoot(dialog, "desktop-about")
        child(dialog, QPushButton, "btnExit").click()

    when_dialog("frmAbout", close)
    action("OVI_About").trigger()


def main():
    iface.setActiveLayer(QgsProject.instance().mapLayersByName("fixes")[0])
    about()
    kernel_density()
    QApplication.processEvents()
    shoot(iface.mainWindow(), "desktop-window")


drive(main)
