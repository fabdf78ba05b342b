# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

# The example's target. A vendor's own file names the device's library instead; docs/platform.md has one.

find_package(PkgConfig REQUIRED)
pkg_check_modules(nettle REQUIRED IMPORTED_TARGET nettle)

# Saving, the commit of a run, XML and the start of the process: no device has these, so they are compiled unchanged.
set(taken carryOut commitRecord commitStaged contentSum descriptor fileAttributes fileBytes fileHelper fileReplacement
          folderFlush foreignCopies integerText patience privateFile processStart pugiXmlFile replaceAtOnce runCommit
          runLock stagedFiles systemLog temporaryFile trackedNew upgradeMarker xmlFile xmlGuard)
list(TRANSFORM taken PREPEND ${PROJECT_SOURCE_DIR}/platform/src/)
list(TRANSFORM taken APPEND .cpp)

# The device's own services.
add_library(
    example-platform STATIC
    ${CMAKE_CURRENT_LIST_DIR}/src/entryList.cpp
    ${CMAKE_CURRENT_LIST_DIR}/src/iniFile.cpp
    ${CMAKE_CURRENT_LIST_DIR}/src/keys.cpp
    ${CMAKE_CURRENT_LIST_DIR}/src/passwordCipher.cpp
    ${CMAKE_CURRENT_LIST_DIR}/src/reports.cpp
    ${taken})
# Two headers of its own precede those of the project, which serve for the rest.
target_include_directories(
    example-platform
    PUBLIC ${CMAKE_CURRENT_LIST_DIR}/include ${PROJECT_SOURCE_DIR}/platform/include
    PRIVATE ${PROJECT_SOURCE_DIR}/platform/src ${PROJECT_SOURCE_DIR}/platform/host)
target_link_libraries(
    example-platform
    PUBLIC tinyxml pugixml
    PRIVATE PkgConfig::nettle kestrune-settings kestrune-warnings)
