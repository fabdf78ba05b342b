# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

# Settings and warnings for our own code, as interface targets: each of our targets links one for its settings and the one
# for its warnings.

# What all our code needs.
add_library(kestrune-common-settings INTERFACE)
target_compile_features(kestrune-common-settings INTERFACE cxx_std_17)
# 64-bit file offsets and times also on 32-bit machines, so that a file dated 2040 can be opened.
target_compile_definitions(kestrune-common-settings INTERFACE _FILE_OFFSET_BITS=64 _TIME_BITS=64)
if(KESTRUNE_DEVICE)
    target_compile_options(kestrune-common-settings INTERFACE -fPIE)
    if(KESTRUNE_STATIC)
        # Not every C library has the start-up code for it: that of Debian 12 for armhf has none.
        include(CheckLinkerFlag)
        check_linker_flag(CXX -static-pie KESTRUNE_HAS_STATIC_PIE)
        target_link_options(kestrune-common-settings
                            INTERFACE $<IF:$<BOOL:${KESTRUNE_HAS_STATIC_PIE}>,-static-pie,-static>)
    else()
        target_link_options(kestrune-common-settings INTERFACE -pie)
    endif()
endif()
if(NOT KESTRUNE_COVERAGE) # coverage reports need the real paths of the sources
    # Reproducible builds, independent of the build folder.
    target_compile_options(kestrune-common-settings INTERFACE -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.)
    # For link-time optimisation.
    target_link_options(kestrune-common-settings INTERFACE -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.)
endif()
if(KESTRUNE_SANITIZE)
    set(sanitizers -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_compile_options(kestrune-common-settings INTERFACE ${sanitizers})
    target_link_options(kestrune-common-settings INTERFACE ${sanitizers})
endif()
if(KESTRUNE_FUZZ)
    set(fuzzers -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all)
    target_compile_options(kestrune-common-settings INTERFACE ${fuzzers})
    target_link_options(kestrune-common-settings INTERFACE ${fuzzers})
endif()
if(KESTRUNE_COVERAGE)
    target_compile_options(kestrune-common-settings INTERFACE --coverage -fprofile-abs-path)
    target_link_options(kestrune-common-settings INTERFACE --coverage)
endif()

# What the program, its libraries and the tools are compiled with.
add_library(kestrune-settings INTERFACE)
target_link_libraries(kestrune-settings INTERFACE kestrune-common-settings)
if(KESTRUNE_DEVICE)
    # The program is single-threaded: statics need no locks. Objects contain machine code as well: the tests link them without optimising again.
    target_compile_options(
        kestrune-settings INTERFACE -g -flto=auto -ffat-lto-objects -ffunction-sections -fdata-sections
                                    -fno-threadsafe-statics -fstack-protector-strong)
    target_compile_definitions(kestrune-settings INTERFACE _FORTIFY_SOURCE=2)
endif()

# What the program is linked with. Not a part of the above: the libraries would hand it on to the tests.
add_library(kestrune-program-settings INTERFACE)
target_link_libraries(kestrune-program-settings INTERFACE kestrune-settings)
if(KESTRUNE_DEVICE)
    target_link_options(kestrune-program-settings INTERFACE -flto=auto -Wl,--gc-sections,-z,relro,-z,now)
    if(KESTRUNE_STATIC)
        # Fewer pages at start-up: this saves a tenth of the time of a run with nothing to do beyond an empty program.
        check_linker_flag(CXX -Wl,--fatal-warnings,-z,pack-relative-relocs KESTRUNE_PACKS_RELOCATIONS) # some only warn
        target_link_options(
            kestrune-program-settings INTERFACE $<$<BOOL:${KESTRUNE_PACKS_RELOCATIONS}>:-Wl,-z,pack-relative-relocs>)
    else()
        target_link_options(kestrune-program-settings INTERFACE -Wl,--as-needed)
    endif()
endif()

# What the tests' own code is built with: quickly, since it takes most of the time of a build and runs only once.
add_library(kestrune-test-settings INTERFACE)
target_link_libraries(kestrune-test-settings INTERFACE kestrune-common-settings)
if(NOT KESTRUNE_FUZZ) # a harness runs a million times
    target_compile_options(kestrune-test-settings INTERFACE -O0 -g1)
endif()
if(KESTRUNE_DEVICE)
    target_compile_options(kestrune-test-settings INTERFACE -Wno-psabi) # notes about how old compilers passed arguments
    target_link_options(kestrune-test-settings INTERFACE -fno-lto)
endif()

add_library(kestrune-warnings INTERFACE)
target_compile_options(
    kestrune-warnings
    INTERFACE -Wall
              -Wextra
              -Wpedantic
              -Wshadow
              -Wconversion
              -Wsign-conversion
              -Wcast-align
              -Wcast-qual
              -Wformat=2
              -Wold-style-cast
              -Woverloaded-virtual
              -Wnon-virtual-dtor
              -Wundef)
target_compile_options(kestrune-warnings
                       INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond;-Wduplicated-branches;-Wlogical-op>)
