# SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
# SPDX-License-Identifier: BSD-3-Clause

# Adds a test that runs in the sandbox:
#
#     tarnvel_managed_configuration_add_test(NAME <name>
#         SCENARIO <file>               the applications and their configurations
#         COMMAND <command> [<arg>...]  a program, or the target of one
#         [EXPECT <file>]               the calls that must come
#         [LOG <file>]                  where to record the events
#         [WORKING_DIRECTORY <directory>])
#
# The test passes if the command succeeds and each expected call comes. The command finds the bus
# through the variable DBUS_SYSTEM_BUS_ADDRESS. Files are relative to the current source directory,
# the log to the current binary directory. Empty arguments of the command are dropped, and a ";"
# separates arguments.
function(tarnvel_managed_configuration_add_test)
    cmake_parse_arguments(PARSE_ARGV 0 test "" "NAME;SCENARIO;EXPECT;LOG;WORKING_DIRECTORY" "COMMAND")
    if(DEFINED test_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "tarnvel_managed_configuration_add_test: "
            "unknown arguments: ${test_UNPARSED_ARGUMENTS}")
    endif()
    if(DEFINED test_KEYWORDS_MISSING_VALUES)
        message(FATAL_ERROR "tarnvel_managed_configuration_add_test: "
            "missing value after ${test_KEYWORDS_MISSING_VALUES}")
    endif()
    foreach(argument IN ITEMS NAME SCENARIO COMMAND)
        if(NOT DEFINED test_${argument})
            message(FATAL_ERROR "tarnvel_managed_configuration_add_test: ${argument} is missing")
        endif()
    endforeach()
    if(NOT TARGET Tarnvel::managed-configuration-sandbox)
        message(FATAL_ERROR "tarnvel_managed_configuration_add_test: "
            "the sandbox is not installed")
    endif()

    get_filename_component(scenario ${test_SCENARIO} ABSOLUTE)
    set(options --scenario ${scenario})
    if(DEFINED test_EXPECT)
        get_filename_component(expect ${test_EXPECT} ABSOLUTE)
        list(APPEND options --expect ${expect})
    endif()
    if(DEFINED test_LOG)
        get_filename_component(log ${test_LOG} ABSOLUTE BASE_DIR ${CMAKE_CURRENT_BINARY_DIR})
        list(APPEND options --log ${log})
    endif()
    list(POP_FRONT test_COMMAND program)
    if(TARGET ${program})
        set(program $<TARGET_FILE:${program}>)
    endif()
    set(directory)
    if(DEFINED test_WORKING_DIRECTORY)
        set(directory WORKING_DIRECTORY ${test_WORKING_DIRECTORY})
    endif()
    add_test(NAME ${test_NAME}
        COMMAND Tarnvel::managed-configuration-sandbox ${options} -- ${program} ${test_COMMAND}
        ${directory})
endfunction()
