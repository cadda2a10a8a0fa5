"""Runs inside the real QGIS with the plugin as a user installed it: the toolbar is on screen with its commands."""
from desktop_support import action, check, drive, iface, shoot_screen
from qgis.PyQt.QtWidgets import QToolBar


def main():
    toolbar = iface.mainWindow().findChild(QToolBar, "OVITools")
    check(toolbar is not None and toolbar.isVisible(), "the toolbar is on screen")
    for name in ("OVI_KDE", "OVI_About"):
        check(action(name).isEnabled(), name)
    shoot_screen("desktop-installed")


drive(main)
