#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Opens the pages that trelvane-inspect --html makes of the example data, and compares what they
tell with the files. Needs Debian's chromium, chromium-driver and python3-selenium.

    tests/page/page_test.py <folder with the programs>
"""

import math
import shutil
import struct
import subprocess
import sys
import tempfile
from pathlib import Path

from browser import Browser, By, Keys

EXAMPLES = Path(__file__).resolve().parents[2] / "examples"
PROGRAMS = Path(sys.argv[1]).resolve()
WEBGL = ("--use-angle=swiftshader", "--enable-unsafe-swiftshader")

failures = []


def check(name, actual, expected=True):
    good = actual == expected
    print(f"{'ok    ' if good else 'FAILED'} {name}", flush=True)
    if not good:
        print(f"       {actual!r}, not {expected!r}")
        failures.append(name)


class SurFile:
    """A .sur or .pro file of 16-bit samples."""

    def __init__(self, path):
        data = path.read_bytes()
        self.low, _, self.width, self.length = struct.unpack_from("<4i", data, 100)
        self.step = struct.unpack_from("<3f", data, 120)
        self.offset = struct.unpack_from("<3f", data, 466)
        self.samples = struct.unpack_from(f"<{self.width * self.length}h", data, 512)

    def z(self, column, row):
        """In mm; None where nothing was measured."""
        raw = self.samples[row * self.width + column]
        return None if raw < self.low else raw * self.step[2] + self.offset[2]

    def x(self, column):
        return column * self.step[0] + self.offset[0]

    def y(self, row):
        return row * self.step[1] + self.offset[1]


def tells(text, value):
    """Whether a text such as "1.230 mm" is the value, as near as its decimals can tell."""
    if value is None or text == "not measured":
        return value is None and text == "not measured"
    number, unit = text.split(" ", 1)
    decimals = len(number.partition(".")[2])
    return unit == "mm" and decimals >= 3 and abs(float(number) - value) <= 0.51 * 10**-decimals


def readout_is(browser, file, column, row, selector="#map-readout"):
    pairs = browser.pairs(selector)
    return ((pairs["column"], pairs["row"]) == (str(column), str(row)) and
            tells(pairs["x"], file.x(column)) and tells(pairs["y"], file.y(row)) and
            tells(pairs["z"], file.z(column, row)))


def readout_near(browser, file, column, row, selector="#map-readout"):
    """A pixel on the border of two cells may be either's."""
    pairs = browser.pairs(selector)
    cell = int(pairs["column"]), int(pairs["row"])
    return (abs(cell[0] - column) <= 1 and abs(cell[1] - row) <= 1 and
            readout_is(browser, file, *cell, selector))


def make_page(folder, path, name, *options):
    page = folder / f"{name}.html"
    subprocess.run([PROGRAMS / "trelvane-inspect", *options, "--html", page, path], check=True,
                   stdout=subprocess.DEVNULL)
    return page


def check_any_page(browser, page, name):
    """What holds for each page; it is open afterwards."""
    browser.requests()
    browser.open(page, 400, "dark")
    dark = browser.run("getComputedStyle(document.body).backgroundColor")
    check(f"{name}: fits 400 pixels", browser.run(
        "document.documentElement.scrollWidth <= document.documentElement.clientWidth"))
    browser.emulate(1200, "light")
    browser.settle()
    light = browser.run("getComputedStyle(document.body).backgroundColor")
    check(f"{name}: is dark or light as wished", sum(map(int, dark[4:-1].split(","))) < 200 <
          sum(map(int, light[4:-1].split(","))))
    stops = browser.tab_stops()
    check(f"{name}: each stop of the tab key has a name", [id for id, text in stops if not text], [])
    return [id for id, _ in stops]


def check_quiet(browser, page, name):
    """After everything else was done with the page."""
    check(f"{name}: nothing on the console", browser.complaints(), [])
    foreign = [url for url in browser.requests() if not url.startswith(("data:", "blob:"))]
    check(f"{name}: asks for nothing but itself", set(foreign), {page.as_uri()})


class MapPlaces:
    """Where cells are on the map while all of it is shown: y points up."""

    def __init__(self, browser, file):
        width, height = browser.run("[map.clientWidth, map.clientHeight]")
        self.cell = min(width / file.width, height / file.length)
        self.left = (width - self.cell * file.width) / 2
        self.top = (height - self.cell * file.length) / 2
        self.rows = file.length

    def __call__(self, column, row):
        return (self.left + (column + 0.5) * self.cell,
                self.top + (self.rows - row - 0.5) * self.cell)


def is_grey(colour):
    return max(colour) - min(colour) < 20


def check_surface(browser, folder):
    file = SurFile(EXAMPLES / "part.sur")
    page = make_page(folder, EXAMPLES / "part.sur", "surface")
    stops = check_any_page(browser, page, "surface")
    wanted = ["map", "line-a", "line-b", "map-in", "solid", "solid-stretch"]
    check("surface: the tab key reaches all tools", [id for id in wanted if id not in stops], [])
    check("surface: the map is drawn", browser.colours("#map") > 50)
    check("surface: the colour bar is drawn", browser.colours("#bar-colours") > 200)

    place = MapPlaces(browser, file)
    for column, row in ((40, 200), (220, 190), (300, 5), (5, 120)):
        browser.place("#map", *place(column, row)).perform()
        check(f"surface: readout near {column}, {row}", readout_near(browser, file, column, row))
        check(f"surface: column {column}, row {row} is grey if not measured",
              is_grey(browser.colour_at("#map", *place(column, row))), file.z(column, row) is None)
    browser.keys("#map", Keys.HOME, Keys.PAGE_UP, *[Keys.ARROW_RIGHT] * 60, *[Keys.ARROW_DOWN] * 40)
    check("surface: arrow keys move the readout",
          readout_is(browser, file, 60, file.length - 1 - 40))
    browser.keys("#map", Keys.ARROW_UP, Keys.ARROW_LEFT, shift=True)
    check("surface: Shift moves it by 10", readout_is(browser, file, 50, file.length - 1 - 30))
    check("surface: its height is told to screen readers",
          browser.pairs("#map-readout")["z"] in browser.find("#spoken").get_property("textContent"))

    check_section(browser, file, place)
    whole = browser.picture("#map")
    browser.keys("#map", "+", "+")
    check("surface: + zooms", browser.picture("#map") != whole)
    browser.place("#map", 300, 200).perform()
    pairs = browser.pairs("#map-readout")
    check("surface: readout of the zoomed map",
          readout_is(browser, file, int(pairs["column"]), int(pairs["row"])))
    check_solid(browser)
    check("surface: the facts tell its width",
          "320" in browser.find("#facts").text and "sur" in browser.find("#facts").text)
    check_quiet(browser, page, "surface")

    refused = browser.driver.execute_async_script(
        "document.addEventListener('securitypolicyviolation', (e) => arguments[0](e.blockedURI));"
        "fetch('https://example.org/').catch(() => {});")
    check("surface: the page may not reach a network", refused, "https://example.org/")
    browser.complaints()


def section_is(browser, file, a, b):
    pairs = browser.pairs("#section-facts")
    length = math.hypot((b[0] - a[0]) * file.step[0], (b[1] - a[1]) * file.step[1])
    return (tells(pairs["length"], length) and
            tells(pairs["height difference B − A"], file.z(*b) - file.z(*a)))


def section_end(browser, key):
    browser.keys("#section-plot canvas", key)
    pairs = browser.pairs("#section-readout")
    return int(pairs["column"]), int(pairs["row"])


def check_section(browser, file, place):
    a, b = (30, 200), (250, 40)
    (ax, ay), (bx, by) = place(*a), place(*b)
    browser.place("#map", ax, ay).click_and_hold().move_by_offset(40, 0).move_by_offset(
        round(bx - ax) - 40, round(by - ay)).release().perform()
    browser.settle()
    dragged = section_end(browser, Keys.HOME), section_end(browser, Keys.END)
    check("section: is where the mouse was dragged", max(
        abs(dragged[end][axis] - (a, b)[end][axis]) for end in (0, 1) for axis in (0, 1)) <= 1)
    check("section: length and height difference of it", section_is(browser, file, *dragged))
    check("section: is drawn", browser.colours("#section-plot canvas") > 5)
    browser.keys("#line-a", Keys.END, Keys.PAGE_UP)
    browser.keys("#line-b", Keys.HOME, Keys.PAGE_DOWN, *[Keys.ARROW_UP] * 3)
    browser.keys("#line-b", *[Keys.ARROW_RIGHT] * 7, shift=True)
    a, b = (file.width - 1, file.length - 1), (70, 3)
    check("section: of a line made by keys", section_is(browser, file, a, b))
    section_end(browser, Keys.END)
    check("section: readout at its end", readout_is(browser, file, *b, "#section-readout"))
    section_end(browser, Keys.HOME)
    check("section: the map follows its readout", readout_is(browser, file, *a))


def check_solid(browser):
    browser.keys("#solid", "0")
    first = browser.picture("#solid")
    check("3-D: is drawn", browser.screen_colours("#solid") > 100)
    browser.keys("#solid", Keys.ARROW_LEFT, Keys.ARROW_UP)
    turned = browser.picture("#solid")
    check("3-D: arrow keys turn it", turned != first)
    browser.place("#solid", 100, 100).click_and_hold().move_by_offset(40, 20).release().perform()
    browser.settle()
    check("3-D: the mouse turns it", browser.picture("#solid") not in (first, turned))
    browser.keys("#solid", "0")
    check("3-D: 0 turns it back", browser.picture("#solid") == first)


def check_cloud(browser, folder):
    page = make_page(folder, EXAMPLES / "part.pcd", "cloud")
    check_any_page(browser, page, "cloud")
    data = (EXAMPLES / "part.pcd").read_bytes()
    start = data.index(b"DATA binary\n") + len(b"DATA binary\n")
    points = [point for point in struct.iter_unpack("<4f", data[start:]) if point[0] == point[0]]
    browser.keys("#map", Keys.HOME, Keys.PAGE_DOWN)
    first = browser.pairs("#map-readout")
    browser.keys("#map", Keys.ARROW_RIGHT, Keys.ARROW_UP)
    second = browser.pairs("#map-readout")
    step = [abs(float(second[axis].split()[0]) - float(first[axis].split()[0])) for axis in "xy"]
    # Into the pocket's middle, where each point of a cell is as high as the others.
    browser.keys("#map", *[Keys.ARROW_UP] * 13, *[Keys.ARROW_RIGHT] * 12)
    pairs = browser.pairs("#map-readout")
    x, y, z = (float(pairs[axis].split()[0]) for axis in "xyz")
    inside = [point for point in points
              if abs(point[0] - x) < step[0] / 2 and abs(point[1] - y) < step[1] / 2]
    mean = sum(point[2] for point in inside) / max(1, len(inside))
    check("cloud: a cell is the mean of its points", len(inside) > 0 and abs(mean - z) < 0.01)
    brightness = sum(point[3] for point in inside) / max(1, len(inside)) * 255
    check("cloud: with its intensity", abs(brightness - int(pairs["intensity"])) <= 4)
    check("cloud: the map and 3-D are drawn",
          browser.colours("#map") > 20 and browser.screen_colours("#solid") > 50)
    check_quiet(browser, page, "cloud")


def check_profile(browser, folder):
    file = SurFile(EXAMPLES / "part.pro")
    page = make_page(folder, EXAMPLES / "part.pro", "profile")
    stops = check_any_page(browser, page, "profile")
    check("profile: the tab key reaches its plot and both ends", stops.count("button") >= 2)
    check("profile: is drawn", browser.colours("#profile-plot canvas") > 5)
    check("profile: shows no map", browser.find("#map").is_displayed(), False)

    def readout(point):
        pairs = browser.pairs("#profile-readout")
        return (pairs["point"] == str(point) and tells(pairs["x"], file.x(point)) and
                tells(pairs["z"], file.z(point, 0)))

    browser.keys("#profile-plot canvas", Keys.HOME, *[Keys.ARROW_RIGHT] * 70)
    check("profile: arrow keys move the readout", readout(70))
    a, b = 75, 600
    browser.keys("#profile-plot canvas", *[Keys.ARROW_RIGHT] * 5, "a")
    browser.keys("#profile-plot .handle:last-of-type", Keys.END,
                 *[Keys.ARROW_LEFT] * (file.width - 1 - b))
    pairs = browser.pairs("#profile-facts")
    dx, dz = file.x(b) - file.x(a), file.z(b, 0) - file.z(a, 0)
    check("profile: distance and height difference of two points",
          tells(pairs["distance"], math.hypot(dx, dz)) and tells(pairs["along x"], dx) and
          tells(pairs["height difference B − A"], dz))
    browser.place("#profile-plot canvas", 400, 100).perform()
    point = int(browser.pairs("#profile-readout")["point"])
    check("profile: the mouse moves the readout", point not in (70, 75) and readout(point))
    check_quiet(browser, page, "profile")


def check_recording(browser, folder):
    recording = folder / "scans.ovrec"
    for part in ("scans", "config"):
        shutil.copytree(EXAMPLES / part, folder / part)
    subprocess.run([PROGRAMS / "Trelvane", "-i", "scans", "-o", recording.name], check=True,
                   stdout=subprocess.DEVNULL, cwd=folder)
    page = make_page(folder, recording, "recording")
    stops = check_any_page(browser, page, "recording")
    check("recording: the tab key reaches source and frame", stops[:2], ["source", "frame"])

    def scan(frame, side):
        return SurFile(EXAMPLES / f"scans/scan-Frame-{frame:04d}_{side}.sur")

    place = MapPlaces(browser, scan(0, "Left"))
    browser.place("#map", *place(20, 50)).perform()
    check("recording: readout of its first frame", readout_is(browser, scan(0, "Left"), 20, 50))
    check("recording: its frames differ there",
          len({scan(frame, "Left").z(20, 50) for frame in range(3)}), 3)
    for frame in (1, 2):
        browser.keys("#frame", Keys.ARROW_RIGHT)
        check(f"recording: the slider shows frame {frame}",
              readout_is(browser, scan(frame, "Left"), 20, 50))
    browser.find("#source").find_elements(By.TAG_NAME, "option")[1].click()
    browser.settle()
    check("recording: another source", readout_is(browser, scan(2, "Right"), 20, 50))
    check_quiet(browser, page, "recording")


def check_others(browser, folder):
    page = make_page(folder, EXAMPLES / "part.sur", "reduced", "--points", "5000")
    browser.requests()
    browser.open(page)
    check("reduced: tells so", "5000" in browser.find("#notice").text and
          "Reduced" in browser.find("#scan-text").text)
    check_quiet(browser, page, "reduced")

    name = "<img src=x onerror=alert(1)><!--\u202e</script>&lt;"
    path = folder / (name.replace("/", "") + ".srf")
    shutil.copy(EXAMPLES / "part.srf", path)
    page = make_page(folder, path, "hostile")
    browser.open(page)
    check("hostile: a name is text", browser.find("h1").text.endswith(
        path.name.replace("\u202e", "\ufffd")))
    check("hostile: and makes no element", browser.run("document.images.length"), 0)
    check_quiet(browser, page, "hostile")


def main():
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        browser = Browser(*WEBGL)
        try:
            for part in (check_surface, check_cloud, check_profile, check_recording, check_others):
                part(browser, folder)
        finally:
            browser.close()
        browser = Browser("--disable-3d-apis")
        try:
            browser.open(folder / "surface.html")
            check("no WebGL: says so", "WebGL" in browser.find("#solid-text").text)
            check("no WebGL: the map is drawn all the same", browser.colours("#map") > 50)
        finally:
            browser.close()
    print(f"{len(failures)} failed" if failures else "all passed")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
