# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

# The Debian packages that `cpack` makes from the installed files: "kestrune" and, if they are built, "kestrune-tools".
# script/package builds and checks them.

set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PACKAGE_CONTACT "The kestrune authors <kestrune@kestrune.example>"
    CACHE STRING "Maintainer of the packages")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX}) # the init script and the units contain this path
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_DEVICE_PACKAGE_NAME kestrune)
set(CPACK_DEBIAN_DEVICE_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_DEVICE_DESCRIPTION
    "migrates the stored configuration of a desk phone
Runs once after a firmware upgrade, before the telephony starts. It moves
settings to their new places, rewrites contacts, dial rules, keys and phone
books, enciphers or deciphers stored passwords and adds factory certificates.
.
Nothing is started or enabled when this package is installed.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME kestrune-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS bubblewrap)
set(CPACK_DEBIAN_TOOLS_DESCRIPTION
    "tries an upgrade on the backups of desk phones
kestrune-preview shows what an upgrade will do to a phone or to a fleet of
them. kestrune-table-check finds mistakes in a translation table.
.
The tools run on an engineer's machine, not on a phone.")

# Without this, CPack uses the architecture of the build machine.
execute_process(
    COMMAND ${CMAKE_CXX_COMPILER} -dumpmachine
    OUTPUT_VARIABLE triplet
    OUTPUT_STRIP_TRAILING_WHITESPACE)
find_program(KESTRUNE_DPKG_ARCHITECTURE dpkg-architecture)
if(KESTRUNE_DPKG_ARCHITECTURE)
    execute_process(
        COMMAND ${KESTRUNE_DPKG_ARCHITECTURE} -f -t ${triplet} -q DEB_HOST_ARCH
        OUTPUT_VARIABLE CPACK_DEBIAN_PACKAGE_ARCHITECTURE
        OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
endif()
if(NOT CPACK_DEBIAN_PACKAGE_ARCHITECTURE) # Debian does not know it
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${CMAKE_SYSTEM_PROCESSOR})
endif()

# SOURCE_DATE_EPOCH sets the date.
set(KESTRUNE_DEBIAN_VERSION ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
string(TIMESTAMP KESTRUNE_DEBIAN_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(${PROJECT_SOURCE_DIR}/packaging/debian/changelog.in ${PROJECT_BINARY_DIR}/packaging/debian/changelog @ONLY)

set(CPACK_COMPONENTS_ALL device documentation)
if(KESTRUNE_TOOLS)
    list(APPEND CPACK_COMPONENTS_ALL host-tools)
endif()
include(CPack)
cpack_add_component(device GROUP device)
cpack_add_component(documentation GROUP device)
cpack_add_component(host-tools GROUP tools)
