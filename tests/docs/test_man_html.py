"""The manual in HTML, below the build folder: manual pages and guides, all of them, with a contents
list, a way back and links to each other, and every link leads somewhere. How it looks in a browser
is for scripts/check-manual."""

import re
from html.parser import HTMLParser

import pytest
from harness import BUILD, EMULATOR, SOURCE

PAGES = sorted([path.name for path in (SOURCE / "man").glob("*.[0-9]")]
               + [path.stem for path in (SOURCE / "docs").glob("*.md")])
# Made by the tool, which a cross build cannot run.
EXAMPLES = [] if EMULATOR else ["example-coverage.html", "example-release.html"]
DEBIAN = "https://manpages.debian.org/"
OTHERS = {DEBIAN + page for page in ("dbus-daemon.1", "gdbus.1")}


class Document(HTMLParser):
    """The targets of a document's links, and the places in it that others can link to."""

    def __init__(self, text):
        super().__init__()
        self.links, self.ids, self.style_sheets = [], set(), []
        self.feed(text)
        self.close()

    def handle_starttag(self, tag, attributes):
        attributes = dict(attributes)
        if tag == "a" and "href" in attributes:
            self.links.append(attributes["href"])
        if tag == "link" and attributes["rel"] == "stylesheet":
            self.style_sheets.append(attributes["href"])
        if "id" in attributes:
            self.ids.add(attributes["id"])


def dangling(texts):
    """The links that lead nowhere, as (name of the document, target)."""
    documents = {name: Document(text) for name, text in texts.items()}

    def resolves(name, link):
        target, _, place = link.partition("#")
        document = documents.get(target or name)
        return link in OTHERS or document and (not place or place in document.ids)

    return [(name, link) for name, document in documents.items()
            for link in document.links + document.style_sheets if not resolves(name, link)]


@pytest.fixture(name="texts")
def html_of_the_build():
    return {path.name: path.read_text() for path in (BUILD / "man/html").iterdir()}


def test_every_page_is_there_and_in_the_index(texts):
    names = [*(page + ".html" for page in PAGES), *EXAMPLES]
    assert sorted(texts) == sorted([*names, "index.html", "style.css"])
    assert sorted(Document(texts["index.html"]).links) == sorted(names)


def test_every_link_leads_somewhere(texts):
    assert dangling(texts) == []


@pytest.mark.parametrize("name, links", [
    ("morvane.8", ["morvane-preset-data.5", "parameter-handler-sim.1"]),
    ("tutorial", ["morvane-preset-data.5", "morvane.8", "morvanectl.1"]),
    ("performance", ["reliability"]),
])
def test_pages_link_to_each_other(texts, name, links):
    found = Document(texts[f"{name}.html"]).links
    assert [link for link in links if f"{link}.html" not in found] == []


@pytest.mark.parametrize("name", PAGES)
def test_every_page_has_a_style_a_way_back_and_its_contents(texts, name):
    text = texts[f"{name}.html"]
    assert Document(text).style_sheets == ["style.css"]
    navigation, body = text.split("</nav>")
    sections = re.findall(r'<h[23][^>]* id="([^"]*)"', body)
    assert Document(navigation).links == ["index.html", *("#" + section for section in sections)]
    assert len(sections) > 3


@pytest.mark.parametrize("link, found", [
    ("b.html", False), ("b.html#there", False), ("#here", False), (DEBIAN + "gdbus.1", False),
    ("c.html", True), ("b.html#here", True), ("#there", True), (DEBIAN + "morvane.8", True),
])
def test_a_link_that_leads_nowhere_is_found(link, found):
    texts = {"a.html": f'<p id="here"><a href="{link}">x</a></p>', "b.html": '<p id="there">x</p>'}
    assert dangling(texts) == ([("a.html", link)] if found else [])


def test_examples_hold_no_links(texts):
    for name in PAGES:
        for example in re.findall(r"<pre.*?</pre>", texts[f"{name}.html"], re.DOTALL):
            assert Document(example).links == []
