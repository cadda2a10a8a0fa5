#!/usr/bin/env python3
"""Holds the house against its plan: who may include what.

Toolkit and GIS headers stay in adapters/ and apps/ (and their tests); arrows between rooms run one way.
"""
import pathlib
import re
import sys

FOREIGN = re.compile(r'^\s*#\s*include\s*[<"](Q[A-Za-z]|qgs|gdal|ogr|geos|cpl_|unicode/|proj\.h|fmt/|CLI/|nlohmann/|nettle/)')
OWN = re.compile(r'^\s*#\s*include\s*"([a-z_]+)/')

# Plans and results of a batch are JSON, and keep the digests of the input.
FOREIGN_ALLOWED = {"batch": ("nlohmann/", "nettle/")}

# Files, folders and time are asked for through ports: of std::filesystem the core has paths, and what they throw.
MACHINE = re.compile(
    r"#\s*include\s*<(fstream|thread|fcntl\.h|sys/\w+\.h)>|\b(ifstream|ofstream|fopen|sleep_for|sleep_until)\b"
    r"|std::filesystem::(?!path\b|filesystem_error\b)|\bfs::|namespace \w+ = std::filesystem"
)

# Which rooms each room may include, itself aside.
MAY_INCLUDE = {
    "platform": set(),
    "engine": {"platform"},
    "movement_models": {"platform", "engine"},
    "pictures": {"platform", "engine"},
    "utilities": {"platform"},
    "tracking_times": {"platform"},
    "isopleths": {"platform", "utilities"},
    "comparison": {"platform", "engine", "isopleths"},
    "analysis": {"platform", "engine", "isopleths", "comparison", "tracking_times", "utilities"},
    "akde": {"platform", "engine", "pictures", "isopleths", "tracking_times", "utilities", "analysis", "movement_models"},
    "kde_tool": {"platform", "engine", "pictures", "analysis", "utilities"},
    "batch": {"platform", "engine", "comparison", "analysis", "akde", "movement_models"},
    "results_page": {"platform", "engine", "pictures", "comparison", "akde", "movement_models", "analysis"},
    "movement": {"platform", "utilities"},
    "host": {"platform", "engine", "isopleths", "utilities", "kde_tool", "results_page", "movement"},
}
# What a room must not include although its room may: numbers go in and out of the engine, no host.
REFUSED = {
    "engine": {"platform/controls.h", "platform/map.h", "platform/services.h", "platform/workspaces.h"},
    # A run takes values; the form shows them.
    "analysis": {"platform/controls.h"},
    "akde": {"platform/controls.h"},
    "batch": {"platform/controls.h"},
    "results_page": {"platform/controls.h"},
}
# Adapters draw the forms and know the ports, never the other way round.
ADAPTERS = {
    "adapters/memory": {"platform"},
    "adapters/disk": {"platform"},
    "adapters/geos": {"platform"},
    "adapters/gdal": {"platform", "adapters/disk"},
    "adapters/raster": {"platform", "adapters/disk", "adapters/gdal"},
    "adapters/shapefile": {"platform", "adapters/disk"},
    "adapters/ogr": {"platform", "adapters/disk", "adapters/gdal", "adapters/raster", "adapters/geos", "adapters/shapefile"},
    "adapters/tracking": {"platform", "tracking_times", "adapters/disk", "adapters/gdal", "adapters/shapefile"},
    "adapters/qgis": {"platform", "pictures", "comparison", "akde", "analysis", "movement_models", "kde_tool", "movement", "host", "results_page", "utilities", "adapters/disk", "adapters/gdal", "adapters/raster", "adapters/shapefile", "adapters/ogr", "adapters/tracking"},
}
SOURCES = {".h", ".cpp"}


def included_room(line):
    match = OWN.match(line)
    if not match:
        return None
    path = re.search(r'"([^"]+)"', line).group(1)
    return "/".join(path.split("/")[:2]) if path.startswith("adapters/") else match.group(1)


def problems(root):
    for room, allowed in {**MAY_INCLUDE, **ADAPTERS}.items():
        core = room in MAY_INCLUDE
        for file in sorted((root / room).rglob("*")):
            if file.suffix not in SOURCES:
                continue
            for number, line in enumerate(file.read_text(encoding="utf-8").splitlines(), 1):
                where = f"{file.relative_to(root)}:{number}"
                if core and FOREIGN.match(line) and not any(name in line for name in FOREIGN_ALLOWED.get(room, ())):
                    yield f"{where}: the core includes a toolkit or GIS header: {line.strip()}"
                if core and MACHINE.search(line):
                    yield f"{where}: the core asks the machine without a port: {line.strip()}"
                for refused in REFUSED.get(room, ()):
                    if f'"{refused}"' in line:
                        yield f"{where}: {room} must not include {refused}"
                target = included_room(line)
                if target and target != room and target not in allowed:
                    yield f"{where}: {room} must not include {target}"


def main():
    root = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parents[2]
    found = list(problems(root))
    print("\n".join(found) if found else "architecture: every include runs the right way")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
