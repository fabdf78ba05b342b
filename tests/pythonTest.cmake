# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

find_package(Python3 REQUIRED COMPONENTS Interpreter)

# kestrune_python_test(NAME SCRIPT ARGUMENTS...): runs SCRIPT_test.py, which finds what tests share in support/python.
# The interpreter is no target of ours: one would be started under the emulator.
function(kestrune_python_test name script)
    add_test(NAME ${name} COMMAND ${Python3_EXECUTABLE} -B ${CMAKE_CURRENT_SOURCE_DIR}/${script}_test.py ${ARGN})
    set_tests_properties(
        ${name} PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 300 ENVIRONMENT_MODIFICATION
                           PYTHONPATH=set:${PROJECT_SOURCE_DIR}/tests/support/python COST 20) # the short tests fill the gaps
endfunction()
