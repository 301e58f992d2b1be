"""Installs the packages under test and the example with a bus of its own."""

from own_bus import set_up
from report import equal, output, sh


def run():
    # Those of others were only unpacked, so dpkg does not know that they are there.
    status, printed = sh("dpkg --force-depends --install /srv/packages/*.deb")
    equal("the packages install", status and printed, 0)
    set_up()
    output("sync")
