"""The manual in HTML, in a browser at the widths of a desk and a telephone. Run by
scripts/check-manual, which keeps the pictures."""

import os
from pathlib import Path

import pytest
from harness import BUILD

PAGES = sorted((BUILD / "man/html").glob("*.html"))
PICTURES = Path(os.environ["MORVANE_PICTURES"])
WINDOWS = {"desk": (1280, 900), "telephone": (360, 740)}  # in CSS pixels
# What is wider than the page although it does not scroll by itself.
TOO_WIDE = """(() => {
    const scrolls = element => element && (
        ["auto", "scroll"].includes(getComputedStyle(element).overflowX)
        || scrolls(element.parentElement));
    return [...document.body.querySelectorAll("*")].filter(
        element => element.getBoundingClientRect().right > WIDTH && !scrolls(element)
    ).map(element => element.outerHTML.slice(0, 100));
})()"""


def overflow(browser, width):
    """How many pixels wider than the window the page is, and what is."""
    return (browser.evaluate("document.scrollingElement.scrollWidth") - width,
            browser.evaluate(TOO_WIDE.replace("WIDTH", str(width))))


@pytest.mark.parametrize("window", WINDOWS)
@pytest.mark.parametrize("page", PAGES, ids=[page.stem for page in PAGES])
def test_fits_into_the_window(browser, page, window):
    width, height = WINDOWS[window]
    for dark in (False, True):
        browser.open(page.as_uri(), width, height, dark=dark)
        browser.take_picture(PICTURES / f"{page.stem}-{window}{'-dark' * dark}.png")
        assert browser.evaluate("document.title")
        assert overflow(browser, width) == (0, [])
        assert browser.complaints() == []


@pytest.mark.parametrize("window", WINDOWS)
def test_contents_lead_to_their_sections(browser, window):
    """Each link of a contents list scrolls to a heading that is then in view, below nothing."""
    browser.open((BUILD / "man/html/morvane.8.html").as_uri(), *WINDOWS[window])
    count = browser.evaluate("document.querySelectorAll('nav li a').length")
    assert count > 10
    for number in range(count):
        link = f"document.querySelectorAll('nav li a')[{number}]"
        browser.evaluate(f"{link}.click()")
        heading, top, bottom, height = browser.evaluate(
            "(() => { const there = document.querySelector(':target');"
            "const box = there.getBoundingClientRect();"
            "return [there.textContent, Math.round(box.top), box.bottom, innerHeight]; })()")
        assert heading.split() == browser.evaluate(f"{link}.textContent").split()
        assert 0 <= top and bottom <= height


@pytest.mark.parametrize("body, overflows", [
    ("<p>short</p>", False),
    ("<p style='overflow-x: auto'><b style='display: block; width: 9999px'>x</b></p>", False),
    (f"<p>{'x' * 999}</p>", True),
    ("<p style='width: 9999px'>x</p>", True),
    ("<p style='overflow: hidden'><b style='display: block; width: 9999px'>x</b></p>", True),
])
def test_what_overflows_is_found(browser, tmp_path, body, overflows):
    page = tmp_path / "page.html"
    page.write_text("<!DOCTYPE html><meta name='viewport' content='width=device-width'>" + body)
    for width, height in WINDOWS.values():
        browser.open(page.as_uri(), width, height)
        assert (overflow(browser, width) != (0, [])) == overflows


@pytest.mark.parametrize("body", [
    "<script>console.error('no')</script>", "<script>nothing.there()</script>",
    "<img src='missing.png'>", "<link rel='stylesheet' href='missing.css'>"])
def test_what_the_browser_reports_is_found(browser, tmp_path, body):
    page = tmp_path / "page.html"
    page.write_text("<!DOCTYPE html>" + body)
    browser.open(page.as_uri(), *WINDOWS["desk"])
    assert browser.complaints() != []
