# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

# A big-endian machine with Debian's cross compiler and libraries: script/bootstrap portability.

set(CMAKE_SYSTEM_PROCESSOR s390x)
set(CMAKE_LIBRARY_ARCHITECTURE s390x-linux-gnu)
set(emulator qemu-s390x-static)
include(${CMAKE_CURRENT_LIST_DIR}/debianCross.cmake)
