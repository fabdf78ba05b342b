# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

# The target of the example. A vendor's own file names the device's library instead, as in docs/platform.md.

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
# Two headers of the example come before those of the project, which are used for everything else.
target_include_directories(example-platform PUBLIC ${CMAKE_CURRENT_LIST_DIR}/include
                                                   ${PROJECT_SOURCE_DIR}/platform/include)
target_link_libraries(
    example-platform
    PUBLIC tinyxml pugixml
    PRIVATE kestrune-settings kestrune-warnings)
