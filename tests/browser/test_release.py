"""The page of a release, in a browser: what it shows is what `release` says. Run by
scripts/check-manual, which keeps the pictures."""

import os
import re
from pathlib import Path

import pytest
from harness import SOURCE, run_ctl
from pages import WINDOWS, choose, printed, shown, take_pictures, texts

PICTURES = Path(os.environ["MORVANE_PICTURES"])
OLD = """\
input index { rangeValid { 1..(inputs) } }
gain rw { index { input } rangeValid { 0..20 } default { 0 } }
mute rw { rangeValid { "on", "off" } }
tone rw { }
lamp rw { rangeValid { 0..9 } }
"""
NEW = """\
input index { rangeValid { 1..(inputs) } }
level rw { index { input } rangeValid { 0..20 } default { 0 } }
mute rw { rangeValid { 0..1 } }
lamp rw { rangeValid { 0..5 } }
fresh rw { default { 1 } }
"""
PRESETS = "all preset { }\nsound preset { exclude rw { lamp } }\n"
TRANSLATE = "translate { removed { tone } mute { from { mute { on = 1, off = 0 } } } }\n"
OLDER = "tone rw { }\n__proto__ rw { }\n"
CHANGED = [  # from old to new, of the variants small and large: parameter, its fate, the key
    ["gain[1]", "not defined any more, and not in a removed list", "–", "1", "–", "everywhere"],
    ["gain[2]", "not defined any more, and not in a removed list", "–", "1", "–",
     "on 1 of 2: large"],
    ["lamp", "with values that no range has: a load of one fails", "lamp", "1", "6..9", "in all"],
    ["tone", "in a removed list", "–", "1", "–", "everywhere"],
    ["mute", "with values that are mapped", "mute", "1", '"off" -> 0, "on" -> 1', "everywhere"],
    ["fresh", "reset by a load with defaults", "fresh", "1", "–", "everywhere"],
    ["level[1]", "reset by a load with defaults", "level[1]", "1", "–", "everywhere"],
    ["level[2]", "reset by a load with defaults", "level[2]", "1", "–", "on 1 of 2: large"]]


def write(folder, parameters, presets, variants):
    folder.mkdir()
    for name, text in (("parameters.def", parameters), ("presets.def", presets),
                       ("variants", variants)):
        (folder / name).write_text(text)


@pytest.fixture(name="releases", scope="module")
def folder_with_releases(tmp_path_factory):
    folder = tmp_path_factory.mktemp("releases")
    both = "small: inputs=1\nlarge: inputs=2\n"
    write(folder / "older", OLDER, "all preset { }\ngone preset { exclude rw { tone } }\n",
          "small: inputs=1\nwide: inputs=2\n")
    write(folder / "old", OLD, PRESETS, both)
    write(folder / "new", NEW, TRANSLATE + PRESETS, both)
    (folder / "files").mkdir()
    (folder / "files/a").write_text("gain[1]=<b>1</b>\n")
    run_ctl("release", "older", "old", "new", "--files", "files", "--html", "page.html",
            cwd=folder)
    return folder


@pytest.fixture(name="page", scope="module")
def page_of_releases(releases):
    return (releases / "page.html").as_uri()


def rows(browser):
    """The texts of all cells that the filters have left."""
    return browser.evaluate(
        "rows.map((_, place) => cellsOf(place).map(cell => cell.textContent))")


def summary(browser):
    return texts(browser, "#summary li")


def open_page(browser, page, window="desk"):
    browser.open(page, *WINDOWS[window])
    choose(browser, "release", "1")


def said(releases, *options):
    """The head and the rows of the report about old and new."""
    lines = run_ctl("release", "old", "new", *options, cwd=releases)[1].splitlines()[1:]
    head = lines[:lines.index("")]
    reported = [line.strip() for line in lines[len(head):] if line.startswith("    ")]
    return [line.strip() for line in head], reported


def test_fits_into_the_window(browser, page, tmp_path):
    take_pictures(browser, page, PICTURES, "release", {
        "table": lambda: choose(browser, "release", "1"),
        "row": lambda: browser.evaluate("open({row: 1})")})
    example = tmp_path / "page.html"
    assert run_ctl("release", "examples", "examples/next", "--html", example, cwd=SOURCE) == (
        0, "", "")
    take_pictures(browser, example.as_uri(), PICTURES, "release", {"example": lambda: None})


def test_shows_what_the_report_says(browser, releases, page):
    open_page(browser, page)
    lines, reported = said(releases)
    assert summary(browser) == lines
    assert rows(browser) == CHANGED
    assert shown(browser) == [row[0] for row in CHANGED]
    assert len(reported) == len(CHANGED)
    for row, line in zip(CHANGED, reported):
        assert line.startswith(row[0])
        assert line.partition(" [")[2] == ("" if row[5] == "everywhere" else f"{row[5]}]")
    assert texts(browser, "#about, #count") == [
        "When new is installed on a device with presets of one of 2 older releases",
        "8 of 10 rows, 8 keys from old"]
    choose(browser, "fate", "")
    assert len(rows(browser)) == 10
    assert browser.complaints() == []


@pytest.mark.parametrize("number, variant", enumerate(("small", "large")))
def test_shows_one_variant(browser, releases, page, number, variant):
    open_page(browser, page)
    choose(browser, "variant", str(number))
    assert summary(browser) == said(releases, "--variant", variant)[0]
    assert texts(browser, "#count")[0].endswith(f" from old on {variant} (inputs={number + 1})")


def test_filters_the_rows(browser, page):
    open_page(browser, page)
    choose(browser, "preset", "1")  # sound
    assert shown(browser) == [row[0] for row in CHANGED if row[0] != "lamp"]
    choose(browser, "preset", "")
    choose(browser, "search", " MU")
    assert rows(browser) == [row for row in CHANGED if row[0] == "mute"]
    assert summary(browser) == [
        "taken over:", "1 key of 1 parameter: with values that are mapped",
        "1 key of 1 parameter: kept"]
    choose(browser, "search", "")
    choose(browser, "fate", "unlisted")
    assert shown(browser) == ["gain[1]", "gain[2]"]
    choose(browser, "search", "no such parameter")
    assert shown(browser) == [] and texts(browser, "#count")[0].startswith("0 of 10 rows, 0 keys")
    browser.press("ArrowDown")
    assert browser.complaints() == []


def test_finds_a_parameter_by_its_new_name(browser, tmp_path):
    write(tmp_path / "1", "gain rw { }\n", "all preset { }\n", "")
    write(tmp_path / "2", "level rw { }\n",
          "translate { level { from { gain } } }\nall preset { }\n", "")
    assert run_ctl("release", "1", "2", "--html", "page.html", cwd=tmp_path) == (0, "", "")
    browser.open((tmp_path / "page.html").as_uri(), *WINDOWS["desk"])
    choose(browser, "search", "level")
    assert rows(browser) == [["gain", "renamed", "level", "1", "–", "everywhere"]]
    browser.evaluate("document.querySelector('#rows th').click()")
    assert texts(browser, "#detail-body > *") == [
        "From 1 to 2: taken over.", "1 key", "gain → level", "Presets", "this device: all",
        "Definitions", "1/parameters.def:1", "gain rw { }", "2/parameters.def:1", "level rw { }"]
    assert browser.evaluate("[...document.querySelectorAll('.several, #suggestion, #files')].map("
                            "only => only.getBoundingClientRect().width)") == [0, 0, 0]
    assert browser.complaints() == []


def test_a_click_on_the_summary_shows_only_that(browser, page):
    open_page(browser, page)
    click = "document.querySelector('[data-fate=removed]').click()"
    browser.evaluate(click)
    assert shown(browser) == ["tone"]
    assert browser.evaluate("document.getElementById('fate').value") == "removed"
    pressed = "[...document.querySelectorAll('[aria-pressed=true]')].map(e => e.dataset.fate)"
    assert browser.evaluate(pressed) == ["removed"]
    browser.evaluate(click)
    assert shown(browser) == [row[0] for row in CHANGED] and browser.evaluate(pressed) == []


@pytest.mark.parametrize("cell", range(6))
def test_opens_a_row(browser, page, cell):
    open_page(browser, page)
    place = [row[0] for row in CHANGED].index("lamp")
    browser.evaluate(f"document.querySelectorAll('#rows tr:not(.space)')[{place}]"
                     f".children[{cell}].click()")
    assert texts(browser, "#detail-title") == [
        "lamp: with values that no range has: a load of one fails"]
    assert texts(browser, "#detail-body > *") == [
        "From old to new: lost, which no translate section says.", "1 key", "lamp", "Values",
        "6..9", "Presets", "small: alllarge: all", "Definitions",
        "old/parameters.def:5", "lamp rw { rangeValid { 0..9 } }",
        "new/parameters.def:4", "lamp rw { rangeValid { 0..5 } }"]
    assert browser.complaints() == []


def test_shows_what_is_gone_of_another_release(browser, releases, page):
    browser.open(page, *WINDOWS["desk"])
    assert texts(browser, "#release option") == [
        "older (with losses)", "old (with losses)"]
    head = run_ctl("release", "older", "new", cwd=releases)[1].splitlines()
    gone = [line for line in head if line.startswith("gone: ")]
    assert gone == ["gone: variant wide", "gone: preset gone"]
    assert summary(browser)[:2] == gone
    choose(browser, "variant", "0")
    choose(browser, "preset", "0")
    choose(browser, "release", "1")
    assert browser.evaluate("['variant', 'preset'].map("
                            "id => document.getElementById(id).selectedOptions[0].text)") == [
                                "small", "all"]
    choose(browser, "release", "0")
    place = shown(browser).index("__proto__")
    browser.evaluate(f"document.querySelectorAll('#rows th')[{place}].click()")
    assert texts(browser, "#detail-body pre") == ["__proto__ rw { }"]
    assert browser.complaints() == []


def test_shows_files_and_missing_lines(browser, releases, page):
    browser.open(page, *WINDOWS["desk"])
    assert texts(browser, "#suggestion, #files") == [
        "Missing translate lines", "0 of 1 file without a warning"]
    shown_texts = []
    for button in "suggestion", "files":
        browser.evaluate(f"document.getElementById('{button}').click()")
        shown_texts += texts(browser, "#detail-body pre")
    text = run_ctl("release", "older", "new", "--files", "files", cwd=releases)[1]
    assert shown_texts == [
        run_ctl("release", "older", "old", "new", "--suggest", cwd=releases)[1],
        text[text.index("files -> new"):]]
    assert "<b>1</b>" in shown_texts[1] and browser.complaints() == []


def test_is_usable_with_the_keyboard(browser, page):
    open_page(browser, page)
    for field in "release", "variant", "preset", "search", "fate", "suggestion", "files":
        browser.press("Tab")
        assert browser.evaluate("document.activeElement.id") == field
    browser.press("Tab")
    focused = "document.activeElement.dataset.fate"
    assert browser.evaluate(focused) == "unlisted"
    browser.press("Enter")
    assert (shown(browser), browser.evaluate(focused)) == (["gain[1]", "gain[2]"], "unlisted")
    browser.press("Enter")
    browser.evaluate("document.querySelector('#rows [tabindex=\"0\"]').focus()")
    for key in ("ArrowDown", "ArrowDown", "ArrowRight", "ArrowUp", "Enter"):
        browser.press(key)
    focused = "[document.activeElement.dataset.row, document.activeElement.dataset.column]"
    assert texts(browser, "#detail-title") == ["gain: not defined any more, and not in a removed "
                                               "list"]
    assert "gain[2]" in texts(browser, "#detail-body li")
    browser.press("Escape")
    assert browser.evaluate(focused) == ["1", "1"]
    browser.press("End")
    assert browser.evaluate(focused) == ["1", "5"]
    browser.press("/")
    assert browser.evaluate("document.activeElement.id") == "search"
    assert browser.complaints() == []


@pytest.mark.parametrize("dark", [False, True])
def test_prints_all_that_the_filters_have_left(browser, page, tmp_path, dark):
    browser.open(page, *WINDOWS["telephone"], dark=dark)
    choose(browser, "release", "1")
    choose(browser, "search", "gain")
    paper = " ".join(printed(browser, tmp_path).split())
    assert "2 of 10 rows, 2 keys from old; Parameter gain; What becomes of it all but "\
        "kept" in paper
    head = ["key", "what becomes of it", "new key", "keys", "values", "where"]
    assert " ".join(" ".join(line) for line in [head, *CHANGED[:2]]) in paper
    assert "lamp" not in paper and "2 keys of 1 parameter: not defined" in paper
    assert browser.complaints() == []


def test_prints_long_texts_and_lists(browser, tmp_path):
    name = "gain" + "x" * 200
    words = [f"value{number}" for number in range(30)]
    variants = [f"studio-model-{number}" for number in range(12)]
    gone = [f"preset{number}" for number in range(100)]
    parameters = (f"{name} rw {{ rangeValid {{ " + ", ".join(f'"{word}"' for word in words)
                  + " } }\nmode rw { ctrlValid (n > 8) }\n")
    presets = "all preset { }\n"
    lists = "".join(f"{variant}: n={number}\n" for number, variant in enumerate(variants))
    write(tmp_path / "1", parameters, presets + "".join(
        f"{preset} preset {{ }}\n" for preset in gone), lists)
    write(tmp_path / "2", f"{name} rw {{ rangeValid {{ 1 }} }}\n", presets, lists)
    assert run_ctl("release", "1", "2", "--html", "page.html", cwd=tmp_path)[0] == 1
    browser.open((tmp_path / "page.html").as_uri(), *WINDOWS["telephone"])
    paper = printed(browser, tmp_path)
    assert [preset for preset in gone if f"gone: preset {preset}" not in paper] == []
    cells = " ".join(text for row in rows(browser) for text in row).replace(name, "")
    assert {*words, "studio-model-9"} <= {word.strip('",') for word in cells.split()}
    assert [word for word in re.split("[ -]", cells) if word not in paper] == []  # it breaks there
    assert paper.count("x") >= 200


def test_shows_how_indices_change(browser, tmp_path):
    for folder, count in ("1", 4), ("2", 2):
        write(tmp_path / folder, f"input index {{ rangeValid {{ 1..{count} }} }}\n"
              "gain rw { index { input } }\n", "all preset { }\n", "")
    assert run_ctl("release", "1", "2", "--html", "page.html", cwd=tmp_path)[0] == 1
    browser.open((tmp_path / "page.html").as_uri(), *WINDOWS["desk"])
    browser.evaluate("document.querySelector('#rows th').click()")
    assert texts(browser, "#detail-title") == ["gain: with an index value that is gone"]
    assert texts(browser, "#detail-body pre") == [
        "gain rw { index { input } }", "input index { rangeValid { 1..4 } }",
        "gain rw { index { input } }", "input index { rangeValid { 1..2 } }"]


def test_begins_with_a_release_of_which_something_is_lost(browser, tmp_path):
    for folder, parameters in ("1", "gain rw { }\n"), ("2", "gain rw { }\nmode rw { }\n"), (
            "3", "gain rw { }\n"):
        write(tmp_path / folder, parameters, "all preset { }\n", "")
    assert run_ctl("release", "1", "2", "3", "--html", "page.html", cwd=tmp_path)[0] == 1
    browser.open((tmp_path / "page.html").as_uri(), *WINDOWS["desk"])
    assert texts(browser, "#release option") == ["1", "2 (with losses)"]
    assert summary(browser)[0] == "lost, which no translate section says:"
    assert shown(browser) == ["mode"]


def test_draws_only_the_rows_in_view(browser, tmp_path):
    count = 3000
    write(tmp_path / "1", "".join(f"p{number:04} rw {{ }}\n" for number in range(count)),
          "all preset { }\n", "")
    assert run_ctl("release", "1", "1", "--html", "page.html", cwd=tmp_path) == (0, "", "")
    browser.open((tmp_path / "page.html").as_uri(), *WINDOWS["desk"])
    choose(browser, "fate", "kept")
    assert texts(browser, "#count") == [f"{count} of {count} rows, {count} keys from 1"]
    browser.evaluate("document.getElementById('frame').scrollTop = 1e9")
    for _ in range(2):
        browser.evaluate("new Promise(done => requestAnimationFrame(() => setTimeout(done)))")
    names = shown(browser)
    assert names[-1] == f"p{count - 1:04}" and len(names) < 100
    assert browser.complaints() == []
