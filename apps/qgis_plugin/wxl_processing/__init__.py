"""Makes the algorithms of WXL Tools known where QGIS loads plugins in Python alone: in qgis_process.

The algorithms themselves are in the native library libwxltools.so. In the desktop the native plugin registers them; then
this one finds them there and does nothing.
"""
import ctypes
import os
import pathlib

LIBRARY = "libwxltools.so"


def folders():
    """Where the native library may stand, in the order of search."""
    here = pathlib.Path(__file__).resolve().parent
    data = pathlib.Path(os.environ.get("XDG_DATA_HOME") or pathlib.Path.home() / ".local/share")
    yield here
    yield data / "wxl/qgis-plugins"
    yield from sorted(pathlib.Path("/usr/local/lib").glob("**/qgis/plugins"))
    yield pathlib.Path("/usr/lib/qgis/plugins")
    yield from sorted(pathlib.Path("/usr/lib").glob("*/qgis/plugins"))


def find_library():
    tried = []
    for folder in folders():
        if (folder / LIBRARY).is_file():
            return folder / LIBRARY
        tried.append(str(folder))
    raise RuntimeError(f"{LIBRARY} was not found in: {', '.join(tried)}. Is the plugin WXL Tools installed?")


class ProcessingPlugin:
    def __init__(self):
        self.library = None

    def initProcessing(self):
        if self.library is None:
            self.library = ctypes.CDLL(str(find_library()))
            self.library.wxlAddProcessingProvider()

    def initGui(self):
        self.initProcessing()

    def unload(self):
        """The desktop's native plugin takes its algorithms away itself; elsewhere the process ends."""


def classFactory(_iface):
    return ProcessingPlugin()
