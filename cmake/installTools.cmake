# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

# The component "host-tools". It has a copy of the host's program, which the preview runs: a package of the tools does not
# need that of the device.

set(toolsDocumentation ${CMAKE_INSTALL_DATADIR}/doc/kestrune-tools)

install(
    TARGETS kestrune-preview kestrune-table-check
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    COMPONENT host-tools)
install(
    TARGETS kestrune kestrune-preview-steps
    RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/kestrune # where kestrune-preview finds them
    COMPONENT host-tools)
install(
    FILES ${packaging}/completions/kestrune-preview ${packaging}/completions/kestrune-table-check
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
    COMPONENT host-tools)
install(
    FILES ${PROJECT_SOURCE_DIR}/tools/preview/preview.schema.json ${PROJECT_SOURCE_DIR}/tools/preview/fleet.schema.json
    DESTINATION ${dataFolder}
    COMPONENT host-tools)
foreach(page IN ITEMS kestrune-preview.1 kestrune-table-check.1)
    kestrune_install_compressed(${PROJECT_SOURCE_DIR}/man/${page} ${page} ${CMAKE_INSTALL_MANDIR}/man1 host-tools)
endforeach()

install(
    FILES ${packaging}/debian/copyright
    DESTINATION ${toolsDocumentation}
    COMPONENT host-tools)
install(
    FILES ${made}/changelog.Debian.gz
    DESTINATION ${toolsDocumentation}
    COMPONENT host-tools)
install(
    FILES ${packaging}/debian/tools.lintian-overrides
    DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
    COMPONENT host-tools
    RENAME kestrune-tools)
