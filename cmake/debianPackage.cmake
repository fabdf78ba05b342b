# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

# The Debian package that `cpack` makes from the installed files; script/package builds and checks it.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "The kestrune authors <kestrune@kestrune.example>"
    CACHE STRING "Maintainer of the packages")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX}) # the init script and the units contain this path
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "migrates the stored configuration of a desk phone
Runs once after a firmware upgrade, before the telephony starts. It moves
settings to their new places, rewrites contacts, dial rules, keys and phone
books, enciphers or deciphers stored passwords and adds factory certificates.
.
Nothing is started or enabled when this package is installed.")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Without this, CPack uses the architecture of the build machine.
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^arm")
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE armhf)
endif()

# SOURCE_DATE_EPOCH sets the date.
set(KESTRUNE_DEBIAN_VERSION ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
string(TIMESTAMP KESTRUNE_DEBIAN_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(${PROJECT_SOURCE_DIR}/packaging/debian/changelog.in ${PROJECT_BINARY_DIR}/packaging/debian/changelog @ONLY)

include(CPack)
