"""The manual pages in HTML, below the build folder: all of them, and every link leads somewhere."""

from html.parser import HTMLParser

import pytest
from harness import BUILD, SOURCE

PAGES = sorted(path.name for path in (SOURCE / "man").glob("*.[0-9]"))
DEBIAN = "https://manpages.debian.org/"
OTHERS = {DEBIAN + page for page in ("dbus-daemon.1", "gdbus.1")}


class Document(HTMLParser):
    """The targets of a document's links, and the places in it that others can link to."""

    def __init__(self, text):
        super().__init__()
        self.links, self.ids = [], set()
        self.feed(text)
        self.close()

    def handle_starttag(self, tag, attributes):
        attributes = dict(attributes)
        if tag == "a" and "href" in attributes:
            self.links.append(attributes["href"])
        if "id" in attributes:
            self.ids.add(attributes["id"])


def dangling(texts):
    """The links that lead nowhere, as (name of the document, target)."""
    documents = {name: Document(text) for name, text in texts.items()}

    def resolves(name, link):
        target, _, place = link.partition("#")
        document = documents.get(target or name)
        return link in OTHERS or document and (not place or place in document.ids)

    return [(name, link) for name, document in documents.items() for link in document.links
            if not resolves(name, link)]


@pytest.fixture(name="texts")
def html_of_the_build():
    return {path.name: path.read_text() for path in (BUILD / "man/html").iterdir()}


def test_every_page_is_there_and_in_the_index(texts):
    names = [page + ".html" for page in PAGES]
    assert sorted(texts) == sorted([*names, "index.html"])
    assert sorted(Document(texts["index.html"]).links) == names


def test_every_link_leads_somewhere(texts):
    assert dangling(texts) == []
    assert "morvane-preset-data.5.html" in Document(texts["morvane.8.html"]).links


@pytest.mark.parametrize("link, found", [
    ("b.html", False), ("b.html#there", False), ("#here", False), (DEBIAN + "gdbus.1", False),
    ("c.html", True), ("b.html#here", True), ("#there", True), (DEBIAN + "morvane.8", True),
])
def test_a_link_that_leads_nowhere_is_found(link, found):
    texts = {"a.html": f'<p id="here"><a href="{link}">x</a></p>', "b.html": '<p id="there">x</p>'}
    assert dangling(texts) == ([("a.html", link)] if found else [])
