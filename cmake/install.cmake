# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

# Installed files, in the GNU folders, as the components "device" (the program and what starts it), "documentation" and
# "host-tools". Nothing is started or enabled: docs/your-phone.md describes how to do that.

include(GNUInstallDirs)
set(KESTRUNE_SYSTEMD_UNIT_DIR "lib/systemd/system" CACHE STRING "Folder for the systemd units, under the prefix")

set(dataFolder ${CMAKE_INSTALL_DATADIR}/kestrune)
set(packaging ${PROJECT_SOURCE_DIR}/packaging)
set(made ${PROJECT_BINARY_DIR}/packaging)

install(
    TARGETS kestrune
    RUNTIME DESTINATION ${CMAKE_INSTALL_SBINDIR}
    COMPONENT device)

configure_file(${packaging}/systemd/kestrune@.service.in ${made}/kestrune@.service @ONLY)
install(
    FILES ${made}/kestrune@.service
    DESTINATION ${KESTRUNE_SYSTEMD_UNIT_DIR}
    COMPONENT device)
foreach(mode IN ITEMS 1 2 all dev)
    install(
        DIRECTORY ${packaging}/systemd/kestrune@${mode}.service.d
        DESTINATION ${KESTRUNE_SYSTEMD_UNIT_DIR}
        COMPONENT device)
endforeach()

# Not in /etc/init.d: the firmware links the script to its place in the start order.
configure_file(${packaging}/kestrune.init.in ${made}/kestrune.init @ONLY)
install(
    PROGRAMS ${made}/kestrune.init
    DESTINATION ${dataFolder}
    COMPONENT device)

# Compressed without name and time, so that builds are reproducible.
find_program(KESTRUNE_GZIP gzip REQUIRED)
set(compressed "")
function(kestrune_install_compressed source name folder component)
    add_custom_command(
        OUTPUT ${made}/${name}.gz
        COMMAND ${CMAKE_COMMAND} -E copy ${source} ${made}/${name}
        COMMAND ${KESTRUNE_GZIP} -9nf ${made}/${name}
        DEPENDS ${source}
        VERBATIM)
    set(compressed ${compressed} ${made}/${name}.gz PARENT_SCOPE)
    install(
        FILES ${made}/${name}.gz
        DESTINATION ${folder}
        COMPONENT ${component})
endfunction()

foreach(page IN ITEMS kestrune.8 kestrune.xml.5 encryptconfig.xml.5)
    string(REGEX MATCH "[0-9]$" section ${page})
    configure_file(${PROJECT_SOURCE_DIR}/man/${page}.in ${PROJECT_BINARY_DIR}/man/man${section}/${page} @ONLY)
    kestrune_install_compressed(${PROJECT_BINARY_DIR}/man/man${section}/${page} ${page}
                                ${CMAKE_INSTALL_MANDIR}/man${section} documentation)
endforeach()

install(
    FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/SECURITY.md ${packaging}/debian/copyright
    DESTINATION ${CMAKE_INSTALL_DOCDIR}
    COMPONENT documentation)
install(
    DIRECTORY ${PROJECT_SOURCE_DIR}/docs
    DESTINATION ${CMAKE_INSTALL_DOCDIR}
    COMPONENT documentation
    FILES_MATCHING
    PATTERN "*.md")
kestrune_install_compressed(${PROJECT_SOURCE_DIR}/CHANGELOG.md changelog ${CMAKE_INSTALL_DOCDIR} documentation)

include(cmake/debianPackage.cmake)
kestrune_install_compressed(${made}/debian/changelog changelog.Debian ${CMAKE_INSTALL_DOCDIR} documentation)
install(
    FILES ${packaging}/debian/lintian-overrides
    DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
    COMPONENT documentation
    RENAME kestrune)

if(KESTRUNE_TOOLS)
    include(cmake/installTools.cmake)
endif()
add_custom_target(kestrune-compressed ALL DEPENDS ${compressed})
