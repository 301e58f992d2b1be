"""One browser for all tests of a file."""

import pytest
from browser import Browser


@pytest.fixture(scope="module")
def browser(tmp_path_factory):
    browser = Browser(tmp_path_factory.mktemp("chromium"))
    yield browser
    browser.close()
