#!/usr/bin/env python3
"""Simulates GPS tracks of four wolves as a tracking CSV: wolves.csv beside this script, or the file named.

Each animal drifts around its own den (a discrete Ornstein-Uhlenbeck process), so that its fixes are correlated in time
and its range has a size of its own. A few rows are what real files hold too: invisible, marked as outliers, without a
position. The same output on every machine.
"""
import csv
import datetime
import math
import pathlib
import random
import sys

METRES_PER_DEGREE = 111_320.0
CENTRE = (55.6, 12.5)  # latitude, longitude
START = datetime.datetime(2024, 4, 1, 0, 0, 0)
HOURS_BETWEEN_FIXES = 4
HEADER = ["event-id", "visible", "timestamp", "location-long", "location-lat", "import-marked-outlier",
          "manually-marked-outlier", "sensor-type", "individual-taxon-canonical-name", "tag-local-identifier",
          "individual-local-identifier", "study-name"]
# Name, tag, fixes, den in metres east and north of the centre, spread of the range in metres east and north, and how
# much of its distance from the den an animal keeps from one fix to the next.
ANIMALS = [
    ("Freja", "T101", 310, (-9_000, 4_000), (3_200, 2_400), 0.80),
    ("Loke", "T102", 270, (6_000, 9_000), (1_500, 1_900), 0.60),
    ("Sif", "T103", 240, (8_000, -8_000), (2_300, 2_300), 0.70),
    ("Tyr", "T104", 190, (-4_000, -10_000), (5_200, 3_400), 0.85),
]


def normal(rng):
    """A standard normal number (Box and Muller 1958) from two uniform ones, whose sequence Python guarantees."""
    radius = math.sqrt(-2.0 * math.log(1.0 - rng.random()))
    return radius * math.cos(2.0 * math.pi * rng.random())


def track(rng, count, den, spread, kept):
    """Positions in metres around the centre."""
    fresh = math.sqrt(1.0 - kept * kept)
    offset = [spread[axis] * normal(rng) for axis in range(2)]
    for _ in range(count):
        offset = [kept * offset[axis] + fresh * spread[axis] * normal(rng) for axis in range(2)]
        yield den[0] + offset[0], den[1] + offset[1]


def rows():
    rng = random.Random(20240401)
    event = 1000
    for name, tag, count, den, spread, kept in ANIMALS:
        for number, (east, north) in enumerate(track(rng, count, den, spread, kept)):
            event += 1
            when = START + datetime.timedelta(hours=HOURS_BETWEEN_FIXES * number, seconds=rng.randrange(120))
            latitude = CENTRE[0] + north / METRES_PER_DEGREE
            longitude = CENTRE[1] + east / (METRES_PER_DEGREE * math.cos(math.radians(CENTRE[0])))
            position = [f"{longitude:.6f}", f"{latitude:.6f}"]
            visible, at_import, by_hand = "true", "false", "false"
            chance = rng.random()
            if chance < 0.006:
                position = ["", ""]
            elif chance < 0.010:
                position, visible, at_import = [f"{longitude + 3.0:.6f}", f"{latitude:.6f}"], "false", "true"
            elif chance < 0.014:
                position, by_hand = [f"{longitude:.6f}", f"{latitude - 1.0:.6f}"], "true"
            yield [event, visible, when.strftime("%Y-%m-%d %H:%M:%S.000"), *position, at_import, by_hand, "gps",
                   "Canis lupus", tag, name, "Simulated wolves, four animals (no real data)"]


def main():
    target = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else pathlib.Path(__file__).with_name("wolves.csv")
    with target.open("w", newline="", encoding="utf-8") as file:
        writer = csv.writer(file, lineterminator="\n")
        writer.writerow(HEADER)
        writer.writerows(rows())


if __name__ == "__main__":
    main()
