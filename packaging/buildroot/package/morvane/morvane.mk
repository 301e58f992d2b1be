################################################################################
#
# morvane
#
# scripts/check-recipes of its tree runs what this file says.
#
################################################################################

MORVANE_VERSION = 1.07
# The source is the tree that this folder lies in, for which no hash is needed. A copy of the folder,
# elsewhere, names the tree's repository here.
MORVANE_SITE = $(BR2_EXTERNAL_MORVANE_PATH)/../..
MORVANE_SITE_METHOD = local
MORVANE_OVERRIDE_SRCDIR_RSYNC_EXCLUSIONS = --exclude=/build --exclude='/build-*'
MORVANE_SUPPORTS_IN_SOURCE_BUILD = NO
MORVANE_LICENSE = MIT
MORVANE_LICENSE_FILES = LICENSE

MORVANE_DEPENDENCIES = dbus dbus-glib host-dbus-glib host-pkgconf libglib2
MORVANE_CONF_OPTS = \
	-DBUILD_TESTING=OFF \
	-DCMAKE_INTERPROCEDURAL_OPTIMIZATION=ON \
	-DDBUS_BINDING_TOOL=$(HOST_DIR)/bin/dbus-binding-tool

ifeq ($(BR2_PACKAGE_MORVANE_TOOLS),y)
MORVANE_DEPENDENCIES += cli11 json-for-modern-cpp
MORVANE_CONF_OPTS += -DMORVANE_TOOLS=ON
else
MORVANE_CONF_OPTS += -DMORVANE_TOOLS=OFF
endif

# The users and the group of packaging/own-bus/morvane.sysusers.
define MORVANE_USERS
	morvane-bus -1 morvane-bus -1 * - - - Bus of the preset service
	morvane -1 morvane -1 * /var/lib/morvane - - Preset service
	parameter-handler -1 parameter-handler -1 * - - - Parameter Handler
	- -1 presets -1 * - - - Users of the preset service
endef

define MORVANE_INSTALL_INIT_SYSTEMD
	$(INSTALL) -D -m 0644 $(@D)/packaging/own-bus/bus.conf \
		$(TARGET_DIR)/etc/morvane/bus.conf
	$(INSTALL) -D -m 0644 $(@D)/packaging/own-bus/policy.conf \
		$(TARGET_DIR)/etc/morvane/policy.conf
	$(INSTALL) -D -m 0644 $(@D)/packaging/own-bus/morvane-bus.service \
		$(TARGET_DIR)/usr/lib/systemd/system/morvane-bus.service
	$(INSTALL) -D -m 0644 $(MORVANE_BUILDDIR)/packaging/own-bus/morvane.service \
		$(TARGET_DIR)/usr/lib/systemd/system/morvane.service
endef

$(eval $(cmake-package))
