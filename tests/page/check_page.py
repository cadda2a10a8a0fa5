#!/usr/bin/env python3
"""Looks at a page of the results as a browser shows it: check_page.py WXL TOOLS_FOLDER

Makes a run of animals with hostile names, of which one search fails and one animal cannot be computed, and loads its page
in Chromium: layout at 360 to 1600 pixels, console, links, network, sorting by mouse and keyboard, and the rules of
axe-core in light and dark. TOOLS_FOLDER keeps axe-core, which is fetched once.
"""
import base64
import hashlib
import io
import pathlib
import random
import re
import shutil
import subprocess
import sys
import tarfile
import tempfile
import urllib.request

SKIP = 77
HOSTILE = ['<script>document.title="taken"</script>', 'O\'Malley & "Sons", <b>Ltd</b>', "\u202egnihtemos\u202c \u05d3\u05d5\u05d1"]
ALONE = "one fix"
TWINS = "twins"


def points_csv(file):
    """Animals: three with hostile names and ordinary fixes, one with every fix twice, one with a single fix."""
    dice = random.Random(5)
    lines = ["animal,x,y"]

    def add(name, x, y):
        lines.append('"%s",%.1f,%.1f' % (name.replace('"', '""'), x, y))

    for k, name in enumerate(HOSTILE):
        for i in range(80):
            add(name, 500000 + 9000 * k + 2500 * (i % 2) + dice.gauss(0, 300), 6000000 + dice.gauss(0, 300))
    for _ in range(40):
        x, y = 500000 + dice.gauss(0, 500), 6010000 + dice.gauss(0, 500)
        add(TWINS, x, y)
        add(TWINS, x, y)
    add(ALONE, 500000, 6005000)
    file.write_text("\n".join(lines) + "\n", encoding="utf-8")


def make_page(wxl, folder):
    points_csv(folder / "points.csv")
    subprocess.run([wxl, "-q", "import", folder / "points.csv", folder / "points.shp", "--id", "animal", "--x", "x", "--y", "y",
                    "--from-crs", "EPSG:32633", "--to-crs", "EPSG:32633"], check=True, stdout=subprocess.DEVNULL)
    subprocess.run([wxl, "-q", "kde", folder / "points.shp", "--id-field", "animal", "--out", folder / "out", "--prefix", "P",
                    "--cell-size", "50", "--bandwidth", "lscv", "--extent", "min", "--isopleths", "95,50", "--polygons",
                    "--answer", "overlap=yes", "--html"], check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    return folder / "out" / "WXL_KDE_ANALYSIS.html"


AXE_PACKAGE = "https://registry.npmjs.org/axe-core/-/axe-core-4.10.2.tgz"
AXE_DIGEST = "RE3mdQ7P3FRSe7eqCWoeQ/Z9QXrtniSjp1wUjt5nRC3WIpz5rSCve6o3fsZ2aCpJtrZjSZgjwXAoTO5k4tEI0w=="


def fetch_axe(script):
    """Puts axe-core at `script`; nothing happens without a network. A package of other content is an error."""
    try:
        with urllib.request.urlopen(AXE_PACKAGE, timeout=60) as answer:
            package = answer.read()
    except OSError:
        return
    if base64.b64encode(hashlib.sha512(package).digest()).decode() != AXE_DIGEST:
        raise SystemExit(f"{AXE_PACKAGE} is not the package that is expected")
    with tarfile.open(fileobj=io.BytesIO(package)) as files:
        text = files.extractfile("package/axe.min.js").read()
    script.parent.mkdir(parents=True, exist_ok=True)
    script.write_bytes(text)


def axe_source(tools):
    """The text of axe-core, fetched once; None where it cannot be had."""
    script = tools / "axe-core-4.10.2.min.js"
    if not script.exists():
        fetch_axe(script)
    return script.read_text(encoding="utf-8") if script.exists() else None


class Browser:
    """Chromium with one page loaded."""

    def __init__(self, chromium, chromedriver):
        from selenium import webdriver
        from selenium.webdriver.chrome.options import Options
        from selenium.webdriver.chrome.service import Service
        options = Options()
        options.binary_location = chromium
        for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage"):
            options.add_argument(argument)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
        self.driver = self.started(lambda: webdriver.Chrome(service=Service(chromedriver), options=options))

    @staticmethod
    def started(start):
        """Its driver waits half a minute for it, which a machine with much to do may need more than once."""
        from selenium.common.exceptions import WebDriverException
        for _ in range(2):
            try:
                return start()
            except WebDriverException as fault:
                print(f"the browser did not start: {fault}", file=sys.stderr)
        return start()

    def show(self, page, width, scheme):
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                                    {"width": width, "height": 900, "deviceScaleFactor": 1, "mobile": width < 500})
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia",
                                    {"features": [{"name": "prefers-color-scheme", "value": scheme}]})
        self.driver.get(page.as_uri())

    def run(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def close(self):
        self.driver.quit()


def check_layout(browser):
    yield "the page is wider than the window", browser.run(
        "return document.documentElement.scrollWidth > innerWidth ? document.documentElement.scrollWidth : null")
    yield "elements stand out at the right", browser.run("""
        const inside = e => e.closest('.scroll, svg, .skip, .hidden');
        return Array.from(document.querySelectorAll('main *')).filter(e => !inside(e) &&
            e.getBoundingClientRect().right > innerWidth + 1).map(e => e.tagName + '.' + e.className)""")


def check_content(browser):
    yield "the title was taken over", browser.driver.title.startswith("taken")
    names = browser.run("return Array.from(document.querySelectorAll('#results-table tbody th')).map(e => e.textContent)")
    yield "names do not come whole", [n for n in HOSTILE[:2] if n not in names]
    yield "there are scripts of others", browser.run("return document.scripts.length") != 1
    yield "elements came from names", browser.run("return document.querySelectorAll('b, script[src], link, iframe').length")
    yield "ids stand twice", browser.run("""
        const ids = Array.from(document.querySelectorAll('[id]')).map(e => e.id);
        return ids.filter((id, i) => ids.indexOf(id) !== i)""")
    yield "links lead nowhere", browser.run("""
        return Array.from(document.querySelectorAll('[href]')).map(e => e.getAttribute('href')).filter(to =>
            !(to.startsWith('#') && document.getElementById(to.slice(1))) && !to.startsWith('data:image/png;base64,'))""")
    yield "pictures are broken", browser.run("return document.querySelectorAll('svg.map').length") != 4
    text = browser.run("return document.body.innerText")
    for words in ("80 of 80 fixes share their place with another fix", "1 fix is too few for a bandwidth", "not minimised",
                  "Schoener Index: value < 1.6 or > 2.4 indicates significant autocorrelation.", "wxl kde "):
        yield "the page does not say: " + words, words not in text


def column(browser, index):
    return browser.run("""
        return Array.from(document.getElementById('results-table').tBodies[0].rows).map(r => r.cells[arguments[0]].textContent)""",
                       index)


def numbers(browser, index):
    return browser.run("""
        return Array.from(document.getElementById('results-table').tBodies[0].rows, r => r.cells[arguments[0]].dataset.value)
            .filter(v => v !== undefined).map(Number)""", index)


def check_sorting(browser):
    from selenium.webdriver.common.by import By
    from selenium.webdriver.common.keys import Keys
    buttons = browser.driver.find_elements(By.CSS_SELECTOR, "#results-table thead button")

    def states():
        return browser.run("return Array.from(document.querySelectorAll('#results-table thead th')).map(e => e.ariaSort)")

    fixes = [button.text for button in buttons].index("Fixes")
    before = sorted(int(n) for n in column(browser, fixes))
    buttons[fixes].click()
    yield "a click does not sort upward", [int(n) for n in column(browser, fixes)] != before
    yield "aria-sort does not follow", [place for place, state in enumerate(states()) if state != "none"] != [fixes]
    yield "aria-sort does not tell upward", states()[fixes] != "ascending"
    buttons[fixes].send_keys(Keys.ENTER)
    yield "Enter does not sort downward", [int(n) for n in column(browser, fixes)] != before[::-1]
    yield "aria-sort does not turn", states()[fixes] != "descending"
    yield "the status is not told", browser.run("return document.getElementById('sorted').textContent") != (
        "Sorted by Fixes, descending")
    largest = [button.text.startswith("95 % area") for button in buttons].index(True)
    buttons[largest].send_keys(Keys.SPACE)
    areas = [text.split(" ")[0] for text in column(browser, largest)]
    yield "an empty cell is not last", areas[-1] != "–"
    values = numbers(browser, largest)
    yield "areas are not sorted as numbers", len(values) != len(areas) - 1 or values != sorted(values)


def check_keyboard(browser):
    from selenium.webdriver.common.by import By
    from selenium.webdriver.common.keys import Keys
    browser.driver.find_element(By.TAG_NAME, "body").send_keys(Keys.TAB)
    yield "the first stop is not the skip link", browser.run("return document.activeElement.className") != "skip"
    yield "the skip link does not show", browser.run("return document.activeElement.getBoundingClientRect().left") < 0
    yield "the focus cannot be seen", browser.run("return getComputedStyle(document.activeElement).outlineStyle") == "none"


def check_axe(browser, source):
    browser.run(source)
    found = browser.driver.execute_async_script("axe.run().then(arguments[0], e => arguments[0]({violations: [String(e)]}))")
    yield "axe-core finds violations", [
        v if isinstance(v, str) else "%s: %s" % (v["id"], [n["target"] for n in v["nodes"]][:3]) for v in found["violations"]]


def check_policy(page):
    """The policy names the page's one script by its digest, worked out anew here, and allows no other."""
    text = page.read_text(encoding="utf-8")
    policy = re.search('Content-Security-Policy" content="([^"]*)"', text).group(1)
    digest = base64.b64encode(hashlib.sha256(re.search("<script>(.*?)</script>", text, re.S).group(1).encode()).digest()).decode()
    yield "the policy allows other scripts", policy.split("script-src ")[1] != "'sha256-%s'" % digest


def check_planted_script(browser, page):
    planted = page.with_name("planted.html")
    planted.write_text(page.read_text(encoding="utf-8").replace("<main", "<script>document.title='planted'</script><main", 1),
                       encoding="utf-8")
    browser.show(planted, 1600, "light")
    yield "a script that was planted runs", browser.driver.title == "planted"
    browser.driver.get_log("browser")  # it was told there


def check_console(browser):
    yield "the console is not empty", [entry["message"] for entry in browser.driver.get_log("browser")]
    yield "the page asks the network", [entry["message"][:200] for entry in browser.driver.get_log("performance")
                                        if "Network.requestWillBeSent\"" in entry["message"] and
                                        '"url":"http' in entry["message"]]


def main():
    wxl, tools = sys.argv[1], pathlib.Path(sys.argv[2])
    chromium, chromedriver = shutil.which("chromium"), shutil.which("chromedriver")
    try:
        import selenium  # noqa: F401
    except ImportError:
        selenium = None
    if not (chromium and chromedriver and selenium):
        print("skipped: chromium, chromium-driver and python3-selenium are needed (scripts/setup tests)")
        return SKIP
    axe = axe_source(tools)
    failures = []

    def judge(where, checks):
        failures.extend("%s: %s: %s" % (where, what, wrong) for what, wrong in checks if wrong)

    with tempfile.TemporaryDirectory() as folder:
        page = make_page(wxl, pathlib.Path(folder))
        judge("policy", check_policy(page))
        browser = Browser(chromium, chromedriver)
        try:
            for width in (360, 700, 1280, 1600):
                for scheme in ("light", "dark"):
                    browser.show(page, width, scheme)
                    where = "%d %s" % (width, scheme)
                    judge(where, check_layout(browser))
                    if axe:
                        judge(where, check_axe(browser, axe))
                browser.show(page, width, "light")
                judge(str(width), check_keyboard(browser))
                judge(str(width), check_content(browser))
                judge(str(width), check_sorting(browser))
            judge("all", check_console(browser))
            judge("planted", check_planted_script(browser, page))
        finally:
            browser.close()
    print("\n".join(failures) if failures else "the page is good" + ("" if axe else "; axe-core could not be had"))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
