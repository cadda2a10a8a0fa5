"""Runs inside the real QGIS: the movement commands and the track player, driven by their widgets."""
import time

from desktop_support import (SETUP, action, boxes, check, child, drive, iface, shoot, shoot_screen, when_dialog,
                             when_file_dialog)
from qgis.core import QgsCoordinateReferenceSystem, QgsCoordinateTransform, QgsProject, QgsVectorLayer
from qgis.PyQt.QtCore import QPoint, QRect, Qt, QTimer
from qgis.PyQt.QtGui import QColor, QImage
from qgis.PyQt.QtWidgets import (QAbstractButton, QApplication, QCheckBox, QDialogButtonBox, QLabel, QLineEdit,
                                 QProgressBar, QPushButton, QSlider)

GREY = QColor(223, 223, 223).rgb()
RED = QColor(255, 0, 0).rgb()


def wait_for_map():
    canvas = iface.mapCanvas()
    canvas.refresh()
    canvas.waitWhileRendering()
    for _ in range(5):
        QApplication.processEvents()
        time.sleep(0.02)


def picture():
    QApplication.processEvents()
    return iface.mapCanvas().viewport().grab().toImage().convertToFormat(QImage.Format_RGB32)


def shows(image, place, colour, reach=1):
    """Whether the pixel of the place, or one beside it, has exactly this colour."""
    pixel = iface.mapCanvas().getCoordinateTransform().transform(place)
    x, y = int(pixel.x()), int(pixel.y())
    return any(image.pixel(x + dx, y + dy) == colour
               for dx in range(-reach, reach + 1) for dy in range(-reach, reach + 1))


def count_of(image, colour):
    return sum(image.pixel(x, y) == colour for x in range(image.width()) for y in range(image.height()))


def check_legs(image, fixes, legs):
    """The legs, given as positions of their ends, are on the picture: grey along the line, red near its end."""
    for begin, end in legs:
        a, b = fixes[begin], fixes[end]
        along = [a + (b - a) * (k / 10) for k in range(2, 8)]
        check(sum(shows(image, place, GREY) for place in along) >= 3, f"the leg {begin}-{end} is grey")
        check(shows(image, b, RED, 9), f"the leg {begin}-{end} ends in red")


def rows_of(source):
    """Places and cells; the layer is read anew from its file."""
    layer = QgsVectorLayer(source, "read", "ogr")
    check(layer.isValid(), source)
    return [(f.geometry().asWkt(9), [None if v is None or str(v) == "NULL" else v for v in f.attributes()])
            for f in layer.getFeatures()]


def check_equals_the_command_line(layer, stage):
    expected, actual = rows_of(SETUP["expected"][stage]), rows_of(layer.source())
    check(len(expected) == len(actual), f"{stage}: {len(actual)} rows, not {len(expected)}")
    for number, (left, right) in enumerate(zip(expected, actual)):
        check(left == right, f"{stage}: row {number} is {right}, not {left}")
    print(f"{stage}: {len(actual)} rows equal those of the command line")


def keep_picture_of_please_wait():
    """Keeps a picture of the Please Wait window in the middle of a command; returns a list that has one entry then."""
    kept = []

    def look():
        for window in QApplication.topLevelWidgets():
            if kept or window.objectName() != "FrmPW" or not window.isVisible():
                continue
            bar = child(window, QProgressBar, "PBar")
            if bar.value() > (bar.minimum() + bar.maximum()) / 3:
                shoot(window, "desktop-please-wait")
                kept.append(bar.value())
                timer.stop()

    timer = QTimer(iface.mainWindow())
    timer.timeout.connect(look)
    timer.start(0)
    return kept


def movement_commands(layer):
    layer.startEditing()
    action("CalcOBS").trigger()
    check(boxes[-1][1] == 'The layer "fixes" is being edited. Please save or discard the edits and try again.', boxes)
    check(not layer.isModified(), "a layer in edit mode is left alone")
    layer.rollBack()
    waiting = keep_picture_of_please_wait()
    action("CalcOBS").trigger()
    check(len(waiting) == 1, "the Please Wait window shows its progress")
    check_equals_the_command_line(layer, "fields")
    for command, stage in (("RemoveDupsByTime2", "time2"), ("RemoveDupsByxy", "xy")):
        layer.selectAll()
        rows = layer.featureCount()
        action(command).trigger()
        check_equals_the_command_line(layer, stage)
        if stage == "time2":
            told = iface.messageBar().currentItem().text()
            check(told == '7 duplicate fixes removed from "fixes". 4 animals (field animal) taken as one.', told)
            shoot_screen("desktop-undo")
            child(iface.messageBar().currentItem(), QPushButton, "wxlUndo").click()
            check_equals_the_command_line(layer, "fields")
            iface.messageBar().clearWidgets()
            layer.selectAll()
            action(command).trigger()
            check_equals_the_command_line(layer, stage)
        changed = layer.featureCount() < rows
        check(layer.selectedFeatureCount() == (0 if changed else rows), "no selection by numbers that changed")


def play_track(layer):
    layer.selectByExpression(f"$id < {SETUP['legs'] + 1}")
    iface.mapCanvas().zoomToSelected(layer)
    iface.mapCanvas().zoomByFactor(1.2)
    wait_for_map()
    fixes = [f.geometry().asPoint() for f in sorted(layer.selectedFeatures(), key=lambda f: f.id())]
    before = picture()
    shoot(iface.mapCanvas(), "desktop-travel-before")
    check(count_of(before, GREY) == 0 and count_of(before, RED) == 0, "no track on the map yet")
    when_dialog("frmOVI", lambda dialog: use_player(dialog, fixes))
    action("MOLE").trigger()
    wait_for_map()
    check(count_of(picture(), RED) == 0, "the track is off the map")


def in_another_system(layer):
    """The project is in Web Mercator, the layer in UTM: the legs are where the fixes are."""
    mercator = QgsCoordinateReferenceSystem("EPSG:3857")
    project = QgsProject.instance()
    project.setCrs(mercator)
    layer.selectByExpression(f"$id < {SETUP['legs'] + 1}")
    iface.mapCanvas().zoomToSelected(layer)
    wait_for_map()
    to_map = QgsCoordinateTransform(layer.crs(), mercator, project)
    fixes = [to_map.transform(f.geometry().asPoint())
             for f in sorted(layer.selectedFeatures(), key=lambda f: f.id())]

    def use(dialog):
        child(dialog, QCheckBox, "CBKeepGraphic").click()
        for _ in range(3):
            child(dialog, QPushButton, "CmbStep").click()
        check_legs(picture(), fixes, [(0, 1), (1, 2), (2, 3)])
        shoot_screen("desktop-travel-mercator")
        child(dialog, QPushButton, "cmdZoomIn").click()
        wait_for_map()
        check_legs(picture(), fixes, [(2, 3)])
        child(dialog, QPushButton, "cmdZoomTrack").click()
        wait_for_map()
        check_legs(picture(), fixes, [(0, 1), (1, 2), (2, 3)])
        # The play of one leg takes three seconds, in which there is nothing to do.
        child(dialog, QLineEdit, "TxtSec").setText("3")
        QTimer.singleShot(3100, child(dialog, QPushButton, "cmdStop").click)
        busy, start = time.process_time(), time.monotonic()
        child(dialog, QPushButton, "CmdTrackMoose").click()
        busy, elapsed = time.process_time() - busy, time.monotonic() - start
        print(f"waiting player: {busy:.2f} s of work in {elapsed:.2f} s")
        dialog.close()

    when_dialog("frmOVI", use)
    action("MOLE").trigger()
    project.setCrs(layer.crs())


def check_looks(dialog):
    """The dialog leaves the map free, and no text in it is cut off."""
    viewport = iface.mapCanvas().viewport()
    map_on_screen = QRect(viewport.mapToGlobal(QPoint(0, 0)), viewport.size())
    check(not dialog.frameGeometry().intersects(map_on_screen), "the dialog is beside the map")
    for widget in dialog.findChildren(QLabel) + dialog.findChildren(QAbstractButton):
        check(widget.width() >= widget.sizeHint().width(), f"{widget.objectName()} shows its whole text")


def close_while_playing():
    """A player that is closed in the middle of a play leaves nothing behind."""

    def play(dialog):
        child(dialog, QLineEdit, "TxtSec").setText("60")
        QTimer.singleShot(300, dialog.close)
        child(dialog, QPushButton, "CmdTrackMoose").click()

    told = len(boxes)
    start = time.monotonic()
    when_dialog("frmOVI", play)
    action("MOLE").trigger()
    check(time.monotonic() - start < 60.0, "closing does not wait for the delay")
    check(len(boxes) == told, boxes[told:])
    wait_for_map()
    check(count_of(picture(), RED) == 0, "the track is off the map")


def use_player(dialog, fixes):
    def click(name):
        child(dialog, QPushButton, name).click()

    slider = child(dialog, QSlider, "Slider")
    counter = child(dialog, QLabel, "lblfix")
    rows = SETUP["rows"]
    last = SETUP["legs"]
    shoot_screen("desktop-travel-opened")
    check(counter.text() == f"1/{rows}", counter.text())
    check(child(dialog, QLabel, "lblSelected").text() == f"{last + 1} fixes selected", "the number of selected fixes")
    check(slider.maximum() == last, "a position for every fix")
    check_looks(dialog)

    # Stepping, each leg instead of the one before it
    click("CmbStep")
    first = picture()
    check_legs(first, fixes, [(0, 1)])
    check(counter.text() == f"2/{rows}", counter.text())
    click("CmbStep")
    check(count_of(picture(), RED) < 2 * count_of(first, RED), "without the path only the newest leg shows")
    check_legs(picture(), fixes, [(1, 2)])
    click("cmdStepBack")
    check_legs(picture(), fixes, [(2, 1)])
    check(counter.text() == f"2/{rows}", counter.text())
    click("cmdDeleteGraphic")
    check(count_of(picture(), RED) == 0 and count_of(picture(), GREY) == 0, "the path is deleted")

    # Keeping the path
    child(dialog, QCheckBox, "CBKeepGraphic").click()
    click("CmbStep")
    click("CmbStep")
    check_legs(picture(), fixes, [(1, 2), (2, 3)])
    click("cmdStepBack")
    click("cmdStepBack")
    click("cmdStepBack")
    check(slider.value() == 0, "back at the first fix")

    # Playing, stopped midway, and going on
    child(dialog, QLineEdit, "TxtSec").setText(".05")
    QTimer.singleShot(600, lambda: click("cmdStop"))
    start = time.monotonic()
    click("CmdTrackMoose")
    elapsed = time.monotonic() - start
    stopped = slider.value()
    print(f"play: {stopped} legs in {elapsed:.3f} s, {elapsed / stopped * 1000:.0f} ms each at a delay of 50 ms")
    check(0 < stopped < last, f"stopped midway, at {stopped}")
    check_legs(picture(), fixes, [(i, i + 1) for i in range(stopped)])
    shoot_screen("desktop-travel-stopped")
    click("CmdTrackMoose")
    check(slider.value() == last, "played to the end")
    check(boxes[-1] == ("Display Tracks", "No more steps. Please reset."), boxes[-1])
    check_looks(dialog)
    shoot(dialog, "desktop-travel-player")
    shoot_screen("desktop-travel-end")
    check_legs(picture(), fixes, [(i, i + 1) for i in range(last)])

    # Saving
    when_file_dialog(SETUP["track"], QDialogButtonBox.Save)
    click("CmdSaveTravel")
    saved = QgsProject.instance().mapLayersByName("track")
    check(len(saved) == 1, "the saved track is on the map")
    legs = list(saved[0].getFeatures())
    check([f["Id"] for f in legs] == list(range(1, last + 1)), "running numbers")
    for number, leg in enumerate(legs):
        line = leg.geometry().asMultiPolyline()[0]
        check(line == [fixes[number], fixes[number + 1]], f"leg {number + 1}")
    shoot_screen("desktop-travel-saved")
    dialog.close()


def main():
    layer = QgsProject.instance().mapLayersByName("fixes")[0]
    # Blue and yellow fixes without outlines: nothing of them looks like a track.
    marker = layer.renderer().symbol().symbolLayer(0)
    marker.setColor(QColor(30, 60, 160))
    marker.setStrokeStyle(Qt.NoPen)
    iface.setActiveLayer(layer)
    movement_commands(layer)
    iface.messageBar().clearWidgets()
    play_track(layer)
    in_another_system(layer)
    close_while_playing()


drive(main)
