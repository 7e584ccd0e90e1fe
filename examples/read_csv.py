#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Reads the scan in a CSV export. Needs Debian's python3-pandas."""
import sys

import pandas

# The lines before the data section are always the same number.
TITLE, FACTS, DATA = 24, 25, 28


def read_line(name, line):
    """One line of the file as a list of cells."""
    with open(name, encoding="utf-8") as file:
        return next(text for i, text in enumerate(file) if i == line).rstrip("\n").split(",")


def read_surface(name):
    """The heights: a row for each y, a column for each x, NaN where nothing was seen."""
    z = pandas.read_csv(name, skiprows=DATA, nrows=row_count(name), header=None, index_col=0)
    z.index.name = "y"
    z.columns = pandas.Index([float(x) for x in read_line(name, DATA - 1)[1:]], name="x")
    return z


def read_point_cloud(name):
    """One row x, y, z for each point that was seen."""
    rows = pandas.read_csv(name, skiprows=DATA, nrows=row_count(name), header=None)
    return pandas.DataFrame(rows.to_numpy().reshape(-1, 3), columns=["x", "y", "z"]).dropna()


def read_profiles(name):
    """The lines of all frames; the axis tells what each of them holds."""
    return pandas.read_csv(name, skiprows=DATA - 1, skipfooter=3, engine="python",
                           index_col=["Frame", "Axis"]).iloc[:, 7:]


def row_count(name):
    facts = dict(zip(read_line(name, FACTS), read_line(name, FACTS + 1)))
    return int(facts["Row Count"])


def main():
    readers = {"Part": read_surface, "SurfacePointCloud": read_point_cloud,
               "Profile": read_profiles, "RawProfile": read_profiles}
    for name in sys.argv[1:]:
        title = read_line(name, TITLE)[0]
        print(f"{title}:", readers[title](name).to_string(max_rows=6, max_cols=6), sep="\n")


if __name__ == "__main__":
    main()
