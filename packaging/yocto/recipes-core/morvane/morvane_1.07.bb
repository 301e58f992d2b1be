# The daemon; its tools, if PACKAGECONFIG has "tools"; and a bus of its own for a device without user
# sessions, in the package morvane-own-bus. scripts/check-recipes runs what this file says.

SUMMARY = "Daemon that stores and loads presets of device parameters"
LICENSE = "MIT"
LIC_FILES_CHKSUM = "file://LICENSE;md5=654e48c6d8328b21728b584a6a7badd5"

# The source is the tree that this layer lies in. A copy of the layer, elsewhere, has instead of these
# two lines SRC_URI and SRCREV of the tree's repository, and S.
inherit externalsrc
EXTERNALSRC = "${THISDIR}/../../../.."

DEPENDS = "dbus dbus-glib dbus-glib-native glib-2.0"
inherit cmake pkgconfig systemd useradd

EXTRA_OECMAKE = " \
    -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_INTERPROCEDURAL_OPTIMIZATION=ON \
    -DBUILD_TESTING=OFF \
    -DDBUS_BINDING_TOOL=${STAGING_BINDIR_NATIVE}/dbus-binding-tool \
"
PACKAGECONFIG ?= ""
PACKAGECONFIG[tools] = "-DMORVANE_TOOLS=ON,-DMORVANE_TOOLS=OFF,cli11 nlohmann-json"

do_install:append() {
    install -d ${D}${sysconfdir}/morvane ${D}${systemd_system_unitdir}
    install -m 0644 ${S}/packaging/own-bus/bus.conf ${S}/packaging/own-bus/policy.conf \
        ${D}${sysconfdir}/morvane
    install -m 0644 ${S}/packaging/own-bus/morvane-bus.service \
        ${B}/packaging/own-bus/morvane.service ${D}${systemd_system_unitdir}
}

PACKAGES =+ "${PN}-own-bus ${PN}-tools ${PN}-simulator"
FILES:${PN} += "${datadir}/dbus-1/services ${systemd_user_unitdir}"
FILES:${PN}-dev += "${datadir}/dbus-1/interfaces"
FILES:${PN}-own-bus = "${sysconfdir}/morvane ${systemd_system_unitdir}"
FILES:${PN}-simulator = "${bindir}/parameter-handler-sim"
FILES:${PN}-tools = " \
    ${bindir}/morvanectl \
    ${datadir}/bash-completion ${datadir}/fish ${datadir}/zsh \
    ${datadir}/nano ${datadir}/vim \
"

RDEPENDS:${PN}-own-bus = "${PN} dbus"
SYSTEMD_PACKAGES = "${PN}-own-bus"
SYSTEMD_SERVICE:${PN}-own-bus = "morvane-bus.service morvane.service"
# The users and the group of packaging/own-bus/morvane.sysusers.
USERADD_PACKAGES = "${PN}-own-bus"
GROUPADD_PARAM:${PN}-own-bus = "--system presets"
USERADD_PARAM:${PN}-own-bus = " \
    --system --user-group --no-create-home morvane-bus; \
    --system --user-group --no-create-home --home-dir /var/lib/morvane morvane; \
    --system --user-group --no-create-home parameter-handler \
"
