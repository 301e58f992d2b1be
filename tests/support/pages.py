"""The pages for a browser that morvanectl writes: what they carry, and how a browser is asked
what it shows of them."""

import json
import subprocess

WINDOWS = {"desk": (1280, 900), "tablet": (800, 1000), "telephone": (360, 740)}  # in CSS pixels


def data_of(page):
    """What stands between the marks of the data, and nothing else of the page."""
    return json.loads(page.partition('<script type="application/json" id="data">')[2]
                      .partition("</script>")[0])


def rows_of(data, older):
    """The rows that a page carries of an older release, as `release --json` writes them."""
    rows = []
    for row in older["rows"]:
        fate = data["fates"][row["fate"]]
        rows.append({
            "fate": fate["code"], "lost": data["groups"][fate["group"]].startswith("lost"),
            "parameter": row["parameter"], "values": row["values"],
            "keys": [{"before": before or None, "after": after or None}
                     for before, after in row["keys"]],
            "places": [{"variant": older["variants"][variant]["name"],
                        "presets": [older["presets"][preset] for preset in older["sets"][number]]}
                       for variant, number in older["places"][row["place"]]["on"]]})
    return rows


def choose(browser, name, value):
    """Gives a filter a value, as somebody who types or selects it."""
    browser.evaluate(f"""(() => {{
        const field = document.getElementById({json.dumps(name)});
        field.type === 'checkbox' ? field.checked = {json.dumps(value)}
                                  : field.value = {json.dumps(value)};
        field.dispatchEvent(new Event('input', {{bubbles: true}}));
    }})()""")


def texts(browser, selector):
    return browser.evaluate(
        f"[...document.querySelectorAll({json.dumps(selector)})].map(e => e.textContent)")


def shown(browser):
    """The first cell of each row that is drawn."""
    return texts(browser, "#rows tr:not(.space) th")


def take_pictures(browser, page, folder, name, parts):
    """Takes a picture of the page in each window, in light and dark colours, for each of the parts,
    by name what shows it; nothing is wider than the window, and there is room for the table."""
    for window, (width, height) in WINDOWS.items():
        for dark in (False, True):
            for part, show in parts.items():
                browser.open(page, width, height, dark=dark)
                show()
                browser.take_picture(folder / f"{name}-{part}-{window}{'-dark' * dark}.png")
                assert browser.evaluate("document.scrollingElement.scrollWidth") == width
                assert browser.evaluate("document.getElementById('frame').clientHeight"
                                        ) > height / 3
                assert browser.evaluate(
                    "document.getElementById('detail').getBoundingClientRect().right") <= width
                assert browser.complaints() == []


def printed(browser, folder):
    """The text of the page on paper, line by line."""
    browser.print_page(folder / "page.pdf")
    return subprocess.run(["pdftotext", "-layout", "page.pdf", "-"], cwd=folder, check=True,
                          capture_output=True, text=True).stdout
