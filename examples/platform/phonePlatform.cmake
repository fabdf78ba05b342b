# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

# The example's target. A vendor's own file names the device's library instead; docs/platform.md has one.

add_library(
    example-platform STATIC
    ${CMAKE_CURRENT_LIST_DIR}/src/entryList.cpp
    ${CMAKE_CURRENT_LIST_DIR}/src/files.cpp
    ${CMAKE_CURRENT_LIST_DIR}/src/iniFile.cpp
    ${CMAKE_CURRENT_LIST_DIR}/src/keys.cpp
    ${CMAKE_CURRENT_LIST_DIR}/src/passwordCipher.cpp
    ${CMAKE_CURRENT_LIST_DIR}/src/process.cpp
    ${CMAKE_CURRENT_LIST_DIR}/src/reports.cpp
    ${CMAKE_CURRENT_LIST_DIR}/src/runs.cpp
    ${CMAKE_CURRENT_LIST_DIR}/src/trackedNew.cpp
    ${CMAKE_CURRENT_LIST_DIR}/src/xml.cpp)
# Two headers of its own come before those of the project, which serve for all the rest.
target_include_directories(example-platform PUBLIC ${CMAKE_CURRENT_LIST_DIR}/include
                                                   ${PROJECT_SOURCE_DIR}/platform/include)
target_link_libraries(
    example-platform
    PUBLIC tinyxml pugixml
    PRIVATE kestrune-settings kestrune-warnings)
