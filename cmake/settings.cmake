# Settings and warnings for our own code, as two interface targets that every target of ours links.

add_library(kestrune-settings INTERFACE)
target_compile_features(kestrune-settings INTERFACE cxx_std_17)
# 64-bit file offsets and times on 32-bit machines too: a file dated 2040 has to open there.
target_compile_definitions(kestrune-settings INTERFACE _FILE_OFFSET_BITS=64 _TIME_BITS=64)
if(KESTRUNE_SANITIZE)
    set(sanitizers -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_compile_options(kestrune-settings INTERFACE ${sanitizers})
    target_link_options(kestrune-settings INTERFACE ${sanitizers})
endif()
if(KESTRUNE_FUZZ)
    set(fuzzers -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all)
    target_compile_options(kestrune-settings INTERFACE ${fuzzers})
    target_link_options(kestrune-settings INTERFACE ${fuzzers})
endif()
if(KESTRUNE_COVERAGE)
    target_compile_options(kestrune-settings INTERFACE --coverage -fprofile-abs-path)
    target_link_options(kestrune-settings INTERFACE --coverage)
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
              -Wundef
              -Werror)
