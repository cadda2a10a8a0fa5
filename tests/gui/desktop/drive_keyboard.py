"""Runs inside the real QGIS: the guide's first analysis by keys alone, each sent to what has the focus."""
from desktop_support import SETUP, boxes, check, child, drive, iface, shoot, when_dialog
from qgis.core import QgsProject
from qgis.PyQt.QtCore import Qt, QTimer
from qgis.PyQt.QtTest import QTest
from qgis.PyQt.QtWidgets import (QApplication, QCheckBox, QComboBox, QDialogButtonBox, QFileDialog, QLabel, QLineEdit,
                                 QMessageBox, QRadioButton, QTabWidget)

MOST_TABS = 80


def activate(window):
    """What a window manager does with a window that opens."""
    window.activateWindow()
    QApplication.setActiveWindow(window)
    QApplication.processEvents()
    if QApplication.focusWidget() is None:
        window.focusNextChild()


def press(key, modifiers=Qt.NoModifier):
    QTest.keyClick(QApplication.focusWidget(), key, modifiers)
    QApplication.processEvents()


def write(text):
    QTest.keyClicks(QApplication.focusWidget(), text)
    QApplication.processEvents()


def tab_to(reached, name):
    """Presses Tab until reached(widget that has the focus)."""
    passed = []
    for _ in range(MOST_TABS):
        widget = QApplication.focusWidget()
        if reached(widget):
            return
        passed.append(widget.objectName() or type(widget).__name__)
        press(Qt.Key_Tab)
    raise AssertionError(f"Tab does not come to {name}; it passed {passed}")


def to(name):
    tab_to(lambda widget: widget.objectName() == name, name)


def replace(name, text):
    to(name)
    press(Qt.Key_A, Qt.ControlModifier)
    write(text)


def check_on(name):
    to(name)
    press(Qt.Key_Space)


def choose(name):
    """Tab to the options, then down to that one."""
    tab_to(lambda widget: isinstance(widget, QRadioButton), "the options")
    for _ in range(MOST_TABS):
        if QApplication.focusWidget().objectName() == name:
            break
        press(Qt.Key_Down)
    chosen = QApplication.focusWidget()
    check(chosen.objectName() == name and chosen.isChecked(), f"the arrow chooses {name}")


def next_page(tabs):
    index = tabs.currentIndex()
    press(Qt.Key_Tab, Qt.ControlModifier)
    check(tabs.currentIndex() == index + 1, f"Ctrl+Tab leads from page {index} to the next")


def answer_by_keys():
    """Yes or OK in every message box."""
    box = QApplication.activeModalWidget()
    if not isinstance(box, QMessageBox):
        return
    boxes.append((box.windowTitle(), box.text()))
    activate(box)
    wanted = box.button(QMessageBox.Yes) or box.button(QMessageBox.Ok)
    tab_to(lambda widget: widget is wanted, wanted.text())
    press(Qt.Key_Space)


def when_folder_is_asked(path):
    def look():
        dialog = QApplication.activeModalWidget()
        if not isinstance(dialog, QFileDialog):
            QTimer.singleShot(50, look)
            return
        activate(dialog)
        tab_to(lambda widget: widget.objectName() == "fileNameEdit", "the name of the folder")
        press(Qt.Key_A, Qt.ControlModifier)
        write(path)
        choose = dialog.findChild(QDialogButtonBox).button(QDialogButtonBox.Open)
        tab_to(lambda widget: widget is choose, "Choose")
        press(Qt.Key_Space)

    QTimer.singleShot(50, look)


def choose_in_menus():
    """Plugins, WXL Tools, Kernel Density Estimation."""
    window = iface.mainWindow()
    activate(window)
    plugins = next(entry for entry in window.menuBar().actions() if entry.menu() is iface.pluginMenu())
    letter = plugins.text()[plugins.text().index("&") + 1]
    QTest.keyClick(window, letter, Qt.AltModifier)
    menu = QApplication.activePopupWidget()
    check(menu is iface.pluginMenu(), f"Alt+{letter} opens Plugins")
    walk(menu, lambda entry: entry.menu() is not None and entry.text().replace("&", "") == "WXL Tools")
    QTest.keyClick(menu, Qt.Key_Right)
    tools = QApplication.activePopupWidget()
    check(tools is not menu, "the right arrow opens WXL Tools")
    walk(tools, lambda entry: entry.objectName() == "OVI_KDE")
    QTest.keyClick(tools, Qt.Key_Return)


def walk(menu, wanted):
    for _ in range(MOST_TABS):
        entry = menu.activeAction()
        if entry is not None and wanted(entry):
            return
        QTest.keyClick(menu, Qt.Key_Down)
    raise AssertionError("the arrow does not come to the menu's entry")


def first_analysis(dialog):
    activate(dialog)
    tabs = child(dialog, QTabWidget, "SSTab1")
    to("cmbPntL")
    write("fixes")
    to("cmbUIDFLD")
    write("animal")
    check(child(dialog, QComboBox, "cmbUIDFLD").currentText() == "animal", "the field is chosen by its first letters")
    check_on("btnCalcIO")
    shoot(dialog, "keyboard-input")
    next_page(tabs)
    choose("optFixed")
    next_page(tabs)
    choose("optBE_HREF")
    next_page(tabs)
    replace("txtR", "W")
    replace("txtCellSize", "100")
    check_on("chkBnds")
    replace("txtBnds", "95,50")
    check_on("chkPolys")
    choose("optSmall")
    check_on("chkHtml")
    check(child(dialog, QCheckBox, "chkHtml").isChecked(), "the page is wanted")
    check_on("btnFolder")
    activate(dialog)
    check(child(dialog, QLineEdit, "txtOutFolder").text() == SETUP["output"], "the folder that was written is shown")
    shoot(dialog, "keyboard-output")
    check_on("btnOK")
    activate(dialog)
    check(child(dialog, QLabel, "lblHeadline").text() == "4 of 4 animals done", "all animals are done")
    before = iface.mapCanvas().extent()
    check_on("btnZoom")
    check(iface.mapCanvas().extent() != before, "zoomed to the results")
    shoot(dialog, "keyboard-panel")
    check_on("btnExit")


def main():
    iface.setActiveLayer(QgsProject.instance().mapLayersByName("fixes")[0])
    when_folder_is_asked(SETUP["output"])
    when_dialog("frmKDE", first_analysis)
    choose_in_menus()


drive(main, answer_by_keys)
