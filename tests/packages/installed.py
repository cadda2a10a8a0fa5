"""What must be true where the packages are installed: in a scratch folder, or in the root of a whole system."""
import os
import pathlib
import re
import shutil
import subprocess

DEMO = "usr/share/doc/wxl/examples/wxl-demo"
GUIDE = "usr/share/doc/wxl/guide"
PLUGIN = "usr/lib/qgis/plugins/libwxltools.so"
DRIVER = pathlib.Path(__file__).resolve().parent / "find_toolbar.py"


def require(condition, what):
    if not condition:
        raise AssertionError(what)


class Scratch:
    """Packages unpacked into a folder; their programs run on this system."""

    def __init__(self, root):
        self.root = pathlib.Path(root)

    def path(self, inside):
        return self.root / inside

    def spoken(self, inside):
        return str(self.root / inside)

    def run(self, command, **more):
        environment = dict(os.environ, PATH=f"{self.root}/usr/bin:{os.environ['PATH']}")
        return subprocess.run(command, env=environment, text=True, capture_output=True, timeout=300, **more)

    def enable_plugin(self, ini):
        folder = self.path(PLUGIN).parent
        ini.write_text(f"[Plugins]\nlibwxltools=true\n[plugins]\nsearchPathsForPlugins={folder}\n", encoding="utf-8")


class System(Scratch):
    """A whole system of its own, entered by chroot."""

    def spoken(self, inside):
        return f"/{inside}"

    def run(self, command, **more):
        return subprocess.run(["chroot", str(self.root), "env", "-i", "PATH=/usr/sbin:/usr/bin:/sbin:/bin", "HOME=/root",
                               "DEBIAN_FRONTEND=noninteractive", *command], text=True, capture_output=True,
                              timeout=1800, **more)

    def enable_plugin(self, ini):
        shutil.copy(self.path("usr/share/doc/qgis-plugin-wxl/examples/enable-plugin.ini"), ini)


def result(ran):
    require(ran.returncode == 0, f"{ran.args} ended with {ran.returncode}\n{ran.stdout}{ran.stderr}")
    return ran.stdout


def check_documents(place, package):
    folder = place.path(f"usr/share/doc/{package}")
    require("GPL-2+" in (folder / "copyright").read_text(encoding="utf-8"), f"{package} has its copyright file")
    require((folder / "changelog.gz").stat().st_size > 0, f"{package} has its changelog")


def check_manual(place, scratch):
    pages = "wxl-pages"
    place.path("tmp" if isinstance(place, System) else scratch).joinpath(pages).mkdir(parents=True)
    written = f"/tmp/{pages}" if isinstance(place, System) else f"{scratch}/{pages}"
    result(place.run(["wxl", "man", "--all", written]))
    expected = {name + ".gz" for name in result(place.run(["ls", written])).split()}
    installed = {page.name for page in place.path("usr/share/man/man1").glob("wxl*.1.gz")}
    require(expected == installed and "wxl-kde.1.gz" in installed, f"a man page for every command: {expected ^ installed}")
    for page in installed:
        text = result(place.run(["gzip", "-dc", place.spoken(f"usr/share/man/man1/{page}")]))
        require(text.startswith(".TH WXL"), f"{page} is a man page")


def check_completion(place):
    script = place.spoken("usr/share/bash-completion/completions/wxl")
    words = result(place.run(["bash", "-c", f"source {script}; COMP_WORDS=(wxl ''); COMP_CWORD=1; _wxl; "
                                            "echo ${COMPREPLY[@]}"])).split()
    require({"import", "kde", "--version"} <= set(words), f"bash completes commands: {words}")


def check_guide(place):
    guide = place.path(GUIDE)
    pages = sorted(guide.glob("*.md"))
    require((guide / "index.md") in pages, "the guide has its first page")
    for page in pages:
        for target in re.findall(r"\]\(([^)#]+)[^)]*\)", page.read_text(encoding="utf-8")):
            if "://" not in target:
                require((guide / target).exists(), f"{page.name} links to {target}")


def check_demo(place, folder):
    spoken = result(place.run([place.spoken(DEMO), folder]))
    out = place.root / folder.lstrip("/") if isinstance(place, System) else pathlib.Path(folder)
    require(f"{folder}/ranges" in spoken, "the demo says where its results are")
    for number in range(1, 5):
        require((out / f"ranges/W{number}/w001001.adf").stat().st_size > 0, f"raster W{number}")
        require((out / f"ranges/W{number}_iso_poly.shp").stat().st_size > 100, f"isopleths of W{number}")
    report = (out / "ranges/WXL_KDE_ANALYSIS.txt").read_text(encoding="cp1252")
    require(report.count("Kernel calculated successfully.") == 4, "the report tells of four animals")
    require("Processing complete" in report, "the report is finished")


def check_tool(place, scratch, version):
    require(result(place.run(["wxl", "--version"])) == f"wxl {version}\n", f"wxl {version}")
    check_documents(place, "wxl")
    check_manual(place, scratch)
    check_completion(place)
    check_guide(place)
    demo = "/tmp/wxl-demo" if isinstance(place, System) else f"{scratch}/wxl-demo"
    check_demo(place, demo)


def check_plugin(place, scratch):
    """QGIS starts with the plugin enabled and shows its toolbar. Text of why not, or empty."""
    check_documents(place, "qgis-plugin-wxl")
    require(place.path(PLUGIN).stat().st_size > 0, "the plugin is where QGIS looks")
    inside = place.path("tmp") if isinstance(place, System) else pathlib.Path(scratch)
    spoken = "/tmp" if isinstance(place, System) else str(scratch)
    shutil.copy(DRIVER, inside)
    place.enable_plugin(inside / "enable.ini")
    (inside / "runtime").mkdir(mode=0o700)
    ran = place.run(["env", "PATH=/usr/bin:/bin", f"XDG_RUNTIME_DIR={spoken}/runtime", "PYTHONDONTWRITEBYTECODE=1",
                     f"HOME={spoken}", "xvfb-run", "-a", "-s", "-screen 0 1280x900x24", "qgis.bin", "--nologo",
                     "--noversioncheck", "--hide-browser", "--profiles-path", f"{spoken}/profiles",
                     "--globalsettingsfile", f"{spoken}/enable.ini", "--code", f"{spoken}/{DRIVER.name}"])
    require(ran.returncode == 0, f"QGIS with the plugin ended with {ran.returncode}\n{ran.stdout}{ran.stderr}")
