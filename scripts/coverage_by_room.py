"""Lines and branches by room, from gcovr's summary by file; exit code 1 when a room group is below its aim."""

import collections
import json
import sys

CORE = ("platform", "engine", "isopleths", "utilities", "kde_tool", "movement", "host")
AIMS = (("core", CORE, 95.0, 90.0), ("adapters", ("adapters/files", "adapters/memory", "adapters/qgis"), 80.0, 0.0))


def room_of(name):
    parts = name.split("/")
    return "/".join(parts[:2]) if parts[0] in ("adapters", "apps") else parts[0]


def percent(covered, total):
    return 100.0 * covered / total if total else 100.0


def line_of(name, sums):
    lines, branches = percent(sums[0], sums[1]), percent(sums[2], sums[3])
    return (f"{name:18}{lines:7.1f} % of {sums[1]:6} lines {branches:7.1f} % of {sums[3]:6} branches", lines, branches)


def main():
    rooms = collections.defaultdict(lambda: [0, 0, 0, 0])
    with open(sys.argv[1], encoding="utf-8") as summary:
        files = json.load(summary)["files"]
    for entry in files:
        counts = (entry["line_covered"], entry["line_total"], entry["branch_covered"], entry["branch_total"])
        for i, count in enumerate(counts):
            rooms[room_of(entry["filename"])][i] += count
    for name in sorted(rooms):
        print(line_of(name, rooms[name])[0])
    missed = False
    for name, members, lines_aim, branches_aim in AIMS:
        sums = [sum(rooms[room][i] for room in members if room in rooms) for i in range(4)]
        text, lines, branches = line_of(name, sums)
        met = lines >= lines_aim and branches >= branches_aim
        missed = missed or not met
        aim = f"aim {lines_aim:.0f} %" + (f" and {branches_aim:.0f} %" if branches_aim else "")
        print(f"{text}   {aim}: {'met' if met else 'MISSED'}")
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main())
