"""The page of a matrix, in a browser: what it shows is what `explain` says. Run by
scripts/check-manual, which keeps the pictures."""

import json
import os
import re
import subprocess
from pathlib import Path

import pytest
from harness import CTL, SOURCE
from pages import WINDOWS, choose, printed, shown, take_pictures, texts

PICTURES = Path(os.environ["MORVANE_PICTURES"])
VARIANTS = ["field-eu", "field-us", "studio-eu", "studio-us"]
CELLS = [("studio-us", "room", "matrixGain"), ("field-eu", "meters", "inputLevel"),
         ("studio-us", "input1", "inputFormat"), ("field-us", "tone", "outputEqGain"),
         ("studio-eu", "snapshot", "fanSpeed")]


def ctl(folder, *arguments):
    return subprocess.run([*CTL, "-p", "parameters.def", "-d", "presets.def", *arguments],
                          cwd=folder, capture_output=True, text=True, check=False)


def page_of(folder, path, *options):
    outcome = ctl(folder, "matrix", *options, "--html", str(path))
    assert (outcome.returncode, outcome.stdout, outcome.stderr) == (0, "", "")
    return path.as_uri()


@pytest.fixture(scope="module")
def page(tmp_path_factory):
    return page_of(SOURCE / "examples", tmp_path_factory.mktemp("page") / "m.html",
                   "--all-variants")


def open_cell(browser, variant, preset, parameter):
    number = VARIANTS.index(variant)
    for name, value in (("search", parameter), ("preset", ""), ("variant", str(number))):
        choose(browser, name, value)
    column = texts(browser, "#names th").index(preset)
    row = shown(browser).index(parameter)
    browser.evaluate(f"document.querySelectorAll('#rows tr:not(.space)')[{row}]"
                     f".children[{column}].click()")


def test_fits_into_the_window(browser, page):
    def open_a_cell():
        open_cell(browser, "studio-us", "room", "matrixGain")
        choose(browser, "search", "")  # the whole table behind it
    take_pictures(browser, page, PICTURES, "matrix",
                  {"table": lambda: None, "cell": open_a_cell})


@pytest.mark.parametrize("variant, preset, parameter", CELLS)
def test_says_of_every_key_what_explain_says(browser, page, variant, preset, parameter):
    browser.open(page, *WINDOWS["desk"])
    open_cell(browser, variant, preset, parameter)
    sections = browser.evaluate("""[...document.querySelectorAll('#detail section')].map(
        section => [section.dataset.standing,
                    [...section.querySelectorAll('code')].map(key => key.textContent),
                    [...section.querySelectorAll('li')].map(line => line.textContent)])""")
    keys = [key for _, of_section, _ in sections for key in of_section]
    listed = ctl(SOURCE / "examples", "keys", "snapshot" if parameter != "matrixGain" else
                 "everything", "--variant", variant).stdout.split()
    assert set(keys) >= {key for key in listed if key.split("[")[0] == parameter} != set()
    for standing, of_section, reasons in sections:
        for key in of_section:
            explained = json.loads(ctl(SOURCE / "examples", "explain", preset, key, "--variant",
                                       variant, "--json").stdout)
            assert (standing == "in", reasons) == (
                explained["covered"], explained["reasons"][-len(reasons):]), key
    assert browser.complaints() == []


def test_shows_definitions_and_what_became_of_their_conditions(browser, page):
    browser.open(page, *WINDOWS["desk"])
    choose(browser, "variant", str(VARIANTS.index("studio-us")))
    choose(browser, "search", "streamEnable")
    browser.evaluate("document.querySelector('#rows tr:not(.space) th').click()")
    assert texts(browser, "#detail-title") == ["streamEnable (rw, stream)"]
    definition, of_index = texts(browser, "#detail pre")
    assert definition.startswith("streamEnable rw {\n    index { stream }\n")
    assert definition.endswith("    default { 0 }\n}")
    assert of_index.startswith("stream index {\n") and of_index.endswith("\n}")
    assert texts(browser, "#detail h3") == ["Index stream"]
    on = texts(browser, "#detail .on")
    outcomes = browser.evaluate("""[...document.querySelectorAll('#detail .on')].map(
        on => [...on.nextElementSibling.children].map(line => line.textContent))""")
    assert [line.split(": ")[0] for line in on] == 2 * VARIANTS
    for number, name in enumerate(VARIANTS):
        keys = [key for key in ctl(SOURCE / "examples", "keys", "everything", "--variant",
                                   name).stdout.split() if key.startswith("streamEnable[")]
        values = [key[len("streamEnable["):-1] for key in keys]
        assert on[number] == f"{name}: " + (f"{len(keys)} keys" if keys else "it does not exist")
        if keys:
            assert on[4 + number] == f"{name}: values {', '.join(values)}"
        explained = json.loads(ctl(SOURCE / "examples", "explain", "everything",
                                   "streamEnable[1]", "--variant", name, "--json").stdout)
        assert outcomes[number] and outcomes[4 + number]
        assert {line for line in explained["reasons"] if "Valid (" in line} <= {
            *outcomes[number], *outcomes[4 + number]}
    assert browser.complaints() == []


def test_filters_the_rows(browser, page):
    browser.open(page, *WINDOWS["desk"])
    table = ctl(SOURCE / "examples", "matrix", "--variant", "field-eu").stdout.splitlines()
    names = [line.split("\t")[0] for line in table[1:]]
    assert browser.evaluate("rows.map(number => data.parameters[number].name)") == names
    choose(browser, "search", "OUTPUT")
    assert shown(browser) == [name for name in names if "output" in name.lower()]
    choose(browser, "access", "ro")
    assert shown(browser) == ["outputLevel"]
    choose(browser, "search", "")
    choose(browser, "access", "")
    choose(browser, "preset", str(browser.evaluate(
        "data.presets.findIndex(preset => preset.name === 'room')")))
    choose(browser, "extent", "some")
    column = table[0].split("\t").index("room")
    assert shown(browser) == [line.split("\t")[0] for line in table
                              if line.split("\t")[column].startswith("~")]
    choose(browser, "extent", "")
    choose(browser, "preset", "")
    choose(browser, "differing", True)
    differing = ctl(SOURCE / "examples", "matrix", "--all-variants", "--only-differences").stdout
    assert browser.evaluate("rows.map(number => data.parameters[number].name)") == list(
        dict.fromkeys(line.split("\t")[0] for line in differing.splitlines()[1:]))


def test_shows_the_numbers_of_the_table(browser, page):
    browser.open(page, *WINDOWS["desk"])
    for variant in VARIANTS:
        choose(browser, "variant", str(VARIANTS.index(variant)))
        header, *lines = [line.split("\t") for line in ctl(
            SOURCE / "examples", "matrix", "--variant", variant).stdout.splitlines()]
        browser.evaluate("drawPaper()")  # all of the rows
        cells = browser.evaluate("""[...document.querySelectorAll('#paper tbody tr')].map(
            row => [...row.children].map(cell => cell.textContent.replace(' *', '')))""")
        assert texts(browser, "#names th") == header
        assert cells == [[*line[:3], *(cell.replace("-", "–").lstrip("+~") for cell in line[3:])]
                         for line in lines]


def test_is_usable_with_the_keyboard(browser, page):
    browser.open(page, *WINDOWS["desk"])
    browser.press("Tab")
    assert browser.evaluate("document.activeElement.id") == "variant"
    for _ in range(5):
        browser.press("Tab")
    assert browser.evaluate("document.activeElement.id") == "differing"
    focused = "[document.activeElement.dataset.row, document.activeElement.dataset.column]"
    browser.evaluate("document.querySelector('#rows [tabindex=\"0\"]').focus()")
    assert browser.evaluate(focused) == ["0", "0"]
    for key in ("ArrowDown", "ArrowDown", "ArrowRight", "ArrowUp", "End", "ArrowLeft"):
        browser.press(key)
    assert browser.evaluate(focused) == ["1", "7"]
    browser.press("Enter")
    assert browser.evaluate("document.getElementById('detail').open")
    assert texts(browser, "#detail-title") == ["batteryLevel in snapshot on field-eu"]
    browser.press("Escape")
    assert not browser.evaluate("document.getElementById('detail').open")
    assert browser.evaluate(focused) == ["1", "7"]
    for _ in range(20):
        browser.press("PageDown")
    last = browser.evaluate("String(rows.length - 1)")
    assert browser.evaluate(focused) == [last, "7"]
    box = browser.evaluate("""(() => { const {top, bottom} =
        document.activeElement.getBoundingClientRect(); return [top, innerHeight - bottom]; })()""")
    assert min(box) > -1  # the frame ends between two pixels
    browser.press("/")
    assert browser.evaluate("document.activeElement.id") == "search"
    assert browser.complaints() == []


def scroll_to(browser, top):
    """@return where that has led to, when the next frames have been drawn."""
    browser.evaluate(f"document.getElementById('frame').scrollTop = {top}")
    for _ in range(2):
        browser.evaluate("new Promise(done => requestAnimationFrame(() => setTimeout(done)))")
    return browser.evaluate("document.getElementById('frame').scrollTop")


def test_draws_only_the_rows_in_view(browser, tmp_path):
    count = 3000
    (tmp_path / "parameters.def").write_text("input index { rangeValid { 1..4 } }\n" + "".join(
        f"p{number:04} rw {{ index {{ input }} }}\n" for number in range(count)))
    (tmp_path / "presets.def").write_text("".join(
        f"s{number:02} preset {{ exclude rw {{ p{number:04} }} }}\n" for number in range(40)))
    browser.open(page_of(tmp_path, tmp_path / "m.html"), *WINDOWS["desk"])
    for top in (5 * 28, 15 * 28, 18 * 28, 1400 * 28, 1385 * 28):
        assert scroll_to(browser, top) == top
        assert browser.evaluate("[180, innerHeight - 1].map("
                                "y => document.elementFromPoint(20, y).closest('tr').className)"
                                ) == ["", ""]
    scroll_to(browser, 1e9)
    names = shown(browser)
    assert names[-1] == f"p{count - 1:04}" and len(names) < 100
    bottom, end = browser.evaluate(
        "[[...document.querySelectorAll('#rows tr:not(.space)')].at(-1).getBoundingClientRect()"
        ".bottom, document.getElementById('frame').getBoundingClientRect().bottom]")
    assert -1 < end - bottom < 28  # it is scrolled by whole pixels, to before the next row


@pytest.mark.parametrize("dark", [False, True])
def test_prints_all_that_the_filters_have_left(browser, page, tmp_path, dark):
    browser.open(page, *WINDOWS["telephone"], dark=dark)
    choose(browser, "search", "output")
    choose(browser, "variant", str(VARIANTS.index("studio-us")))
    words = [line.replace("*", "").split() for line in printed(browser, tmp_path).splitlines()]
    table = [line.split("\t") for line in ctl(
        SOURCE / "examples", "matrix", "--variant", "studio-us").stdout.splitlines()]
    expected = [[cell.replace("-", "–").lstrip("+~") for cell in line] for line in table[1:]
                if "output" in line[0].lower()]
    assert [line for line in words if len(line) == len(table[0]) and line != table[0]] == expected
    assert table[0] in words
    about = f"{len(expected)} of 87 parameters, 9 presets on studio-us ("
    assert any(" ".join(line).startswith(about) for line in words)
    assert any("; Parameter output" in " ".join(line) for line in words)
    assert texts(browser, "#paper *") == []
    assert browser.complaints() == []


def test_prints_columns_that_do_not_fit_below_each_other(browser, tmp_path):
    (tmp_path / "parameters.def").write_text("gain rw { }\nmode rw { }\n")
    presets = [f"presetWithALongName{number:02}" for number in range(40)]
    (tmp_path / "presets.def").write_text("".join(
        f"{name} preset {{ exclude rw {{ mode }} }}\n" for name in presets))
    browser.open(page_of(tmp_path, tmp_path / "m.html"), *WINDOWS["desk"])
    heads = [line.split() for line in printed(browser, tmp_path).splitlines()
             if line.split()[:1] == ["parameter"]]
    assert len(heads) > 1 and all(head[:3] == ["parameter", "access", "keys"] for head in heads)
    assert [name for head in heads for name in head[3:]] == presets


@pytest.fixture(name="odd", scope="module")
def page_of_an_odd_device(tmp_path_factory):
    """What the example device does not have: unknown index values, no keys, no preset."""
    folder = tmp_path_factory.mktemp("odd")
    (folder / "parameters.def").write_text(
        "input index { rangeValid (n == 1) { 1..3 } rangeValid (n == 2) { 1..4 } }\n"
        "never index { ctrlValid (n > 2) rangeValid { 1 } }\n"
        "level ro { index { input } }\nlost rw { index { never } }\n"
        "mode rw { ctrlValid (n == 2) }\n" f"{'long' * 60} rw {{ }}\n")
    (folder / "presets.def").write_text(
        "sound preset { include ro { level { index { input { 2, 4 } } } } }\n"
        f"modes preset {{ exclude rw {{ {'long' * 60} }} }}\n")
    (folder / "variants").write_text("one: n=1\ntwo: n=2\n")
    return page_of(folder, folder / "m.html", "--all-variants")


def detail_of(browser, variant, preset, parameter):
    """@return the texts of what a cell opens, element by element."""
    choose(browser, "variant", variant)
    choose(browser, "preset", preset)
    place = shown(browser).index(parameter)
    browser.evaluate(f"document.querySelectorAll('#rows tr:not(.space)')[{place}]"
                     ".lastChild.click()")
    return texts(browser, "#detail-body > *")


def test_tells_keys_apart_that_do_not_exist(browser, odd):
    browser.open(odd, *WINDOWS["desk"])
    assert detail_of(browser, "0", "1", "level")[1:] == [
        "Not in the preset: level[1] level[3] no include list adds it",
        "In the preset: level[2] presets.def:1: added by the include list: item level, index "
        "clause on line 1",
        "In the preset, with an index value that does not exist: level[4] presets.def:1: added by "
        "the include list: item level, index clause on line 1", "Definition of level"]
    browser.evaluate("document.querySelector('#detail-body > button').click()")
    assert texts(browser, "#detail-title") == ["level (ro, input)"]
    assert browser.evaluate("document.activeElement.textContent") == "Close"
    assert browser.complaints() == []


def test_says_why_there_are_no_keys(browser, odd):
    browser.open(odd, *WINDOWS["desk"])
    assert detail_of(browser, "0", "1", "lost") == [
        "presets.def:1: preset sound", "parameters.def:4", "lost rw { index { never } }",
        "one: 0 keys", "", "Index never", "parameters.def:2",
        "never index { ctrlValid (n > 2) rangeValid { 1 } }", "one: it does not exist",
        "parameters.def:2: ctrlValid (n > 2) does not hold (n is 1)"]
    choose(browser, "differing", True)
    assert detail_of(browser, "0", "0", "mode") == [
        "The lists of preset modes leave no key on this variant.", "parameters.def:5",
        "mode rw { ctrlValid (n == 2) }", "one: it does not exist",
        "parameters.def:5: ctrlValid (n == 2) does not hold (n is 1)"]
    assert browser.complaints() == []


def test_finds_what_no_preset_has(browser, odd):
    browser.open(odd, *WINDOWS["desk"])
    choose(browser, "variant", "1")
    choose(browser, "extent", "none")
    assert shown(browser) == ["lost"]
    choose(browser, "preset", "0")
    assert shown(browser) == ["level", "long" * 60, "lost"]
    choose(browser, "search", "nothing of that name")
    assert shown(browser) == [] and texts(browser, "#count")[0].startswith("0 of 4 parameters")
    browser.press("Tab")
    browser.press("ArrowDown")
    assert browser.complaints() == []


def test_a_long_name_leaves_room_for_the_others(browser, odd):
    for window in WINDOWS.values():
        browser.open(odd, *window)
        assert browser.evaluate("document.querySelector('#rows th').getBoundingClientRect().width"
                                ) <= 0.4 * window[0] + 1
        assert browser.evaluate("document.querySelectorAll('#rows th')[1].title") == "long" * 60


def test_compares_only_what_there_is_to_compare(browser, tmp_path):
    (tmp_path / "parameters.def").write_text("gain rw { }\n")
    (tmp_path / "presets.def").write_text("sound preset { }\n")
    browser.open(page_of(tmp_path, tmp_path / "m.html", "-s", "n=1", "--only", "g*"),
                 *WINDOWS["desk"])
    assert texts(browser, "#about, #count") == [
        "Of parameters.def and presets.def; only parameters that match g*",
        "1 of 1 parameter, 1 preset on n=1"]
    assert browser.evaluate("[...document.querySelectorAll('.comparing')].map("
                            "only => only.getBoundingClientRect().width)") == [0, 0]
    assert browser.complaints() == []


def test_the_keyboard_goes_on_where_the_eye_is(browser, page):
    browser.open(page, *WINDOWS["desk"])
    for _ in range(5):
        browser.evaluate("moveFocus(focus.row + 1, 3)")
    scroll_to(browser, 40 * 28)
    place, column = browser.evaluate("[focus.row, focus.column]")
    assert place >= 40 and column == 3
    assert browser.evaluate("document.activeElement.dataset.row") == str(place)
    assert len(texts(browser, "#rows [tabindex='0']")) == 1
    # Nothing that has the keyboard is below the first column.
    for _ in range(12):
        browser.press("ArrowRight")
    for _ in range(12):
        browser.press("ArrowLeft")
        left, edge = browser.evaluate("""[document.activeElement.getBoundingClientRect().left,
            document.querySelector('#names th').getBoundingClientRect().right]""")
        assert left > edge - 1 or browser.evaluate("focus.column") == 0
    assert browser.evaluate("""['ArrowLeft', 'Home'].map(key => document.activeElement
        .dispatchEvent(new KeyboardEvent('keydown', {key, ctrlKey: true, bubbles: true,
                                                     cancelable: true})))""") == [True, True]
    assert browser.complaints() == []


def test_shows_the_same_row_on_another_variant(browser, page):
    browser.open(page, *WINDOWS["desk"])
    choose(browser, "variant", str(VARIANTS.index("studio-us")))
    browser.evaluate("""moveFocus(rows.findIndex(
        number => data.parameters[number].name === 'outputGain'), 1)""")
    before = browser.evaluate("""[rows[focus.row], focus.column,
        Math.round(document.activeElement.getBoundingClientRect().top)]""")
    choose(browser, "variant", str(VARIANTS.index("field-eu")))
    after = browser.evaluate("""[rows[focus.row], focus.column,
        Math.round(focused().getBoundingClientRect().top)]""")
    assert before[:2] == after[:2] and abs(before[2] - after[2]) < 2
    choose(browser, "search", "no such parameter")
    choose(browser, "search", "")
    assert browser.evaluate("[focus.row, document.getElementById('frame').scrollTop]") == [0, 0]


def test_prints_no_more_than_a_browser_can(browser, page, tmp_path):
    browser.open(page, *WINDOWS["desk"])
    browser.evaluate("""rows = [].concat(...Array(400).fill(rows))""")
    words = " ".join(printed(browser, tmp_path).split())
    assert re.search(r"These are \d+ cells: choose at most 200000 with the filters before", words)
    assert "alarmState" not in words
