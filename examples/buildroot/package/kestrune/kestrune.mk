################################################################################
#
# kestrune
#
################################################################################

KESTRUNE_VERSION = 0.2.0
# This tree is a part of the sources: examples/buildroot.
KESTRUNE_SITE = $(BR2_EXTERNAL_KESTRUNE_PATH)/../..
KESTRUNE_SITE_METHOD = local
KESTRUNE_LICENSE = MIT
KESTRUNE_LICENSE_FILES = LICENSE
KESTRUNE_DEPENDENCIES = host-pkgconf nettle pugixml tinyxml
KESTRUNE_CONF_OPTS = -DKESTRUNE_DEVICE=ON -DKESTRUNE_TESTS=OFF

# After the mounts, before the telephony. A firmware with a step of its own between the modes calls the script instead.
define KESTRUNE_INSTALL_INIT_SYSV
	mkdir -p $(TARGET_DIR)/etc/init.d
	ln -sf ../../usr/share/kestrune/kestrune.init $(TARGET_DIR)/etc/init.d/S15kestrune
endef

define KESTRUNE_INSTALL_INIT_SYSTEMD
	mkdir -p $(TARGET_DIR)/etc/systemd/system/sysinit.target.wants
	for mode in 1 2 all; do \
		ln -sf /usr/lib/systemd/system/kestrune@.service \
			$(TARGET_DIR)/etc/systemd/system/sysinit.target.wants/kestrune@$$mode.service || exit 1; \
	done
endef

$(eval $(cmake-package))
