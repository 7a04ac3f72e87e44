# SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
# SPDX-License-Identifier: BSD-3-Clause

# Whatever the project has set, if() knows IN_LIST below.
cmake_policy(SET CMP0057 NEW)

function(_tarnvel_refuse_test reason)
    message(FATAL_ERROR "tarnvel_managed_configuration_add_test: ${reason}")
endfunction()

# Refuses an argument that a list would join to the next one.
function(_tarnvel_check_list_item argument)
    string(REGEX REPLACE "[^[]" "" opening "${argument}")
    string(REGEX REPLACE "[^]]" "" closing "${argument}")
    string(LENGTH "${opening}" opened)
    string(LENGTH "${closing}" closed)
    if(NOT opened EQUAL closed)
        _tarnvel_refuse_test("CMake cannot pass on an argument with unbalanced brackets: ${argument}")
    elseif(argument MATCHES "\\\\$")
        _tarnvel_refuse_test("CMake cannot pass on an argument that ends with a backslash: ${argument}")
    endif()
endfunction()

# Refuses a name that would make CTest's file unreadable. The policy is that of the project.
function(_tarnvel_check_test_name name)
    set(policy OLD)
    if(POLICY CMP0110)
        cmake_policy(GET CMP0110 policy)
    endif()
    if(name MATCHES "[][ \t\n()#\"$\\]" AND NOT policy STREQUAL NEW)
        _tarnvel_refuse_test("without the policy CMP0110 of CMake 3.19, set to NEW before this function \
is included, a test cannot have the name: ${name}")
    endif()
endfunction()

# Appends an argument such that an unquoted reference to the list gives it back whole, even if empty.
function(_tarnvel_append_argument list argument)
    string(REPLACE ";" "$<SEMICOLON>" argument "${argument}")
    if(argument STREQUAL "")
        set(argument "$<0:>")
    endif()
    list(APPEND ${list} "${argument}")
    set(${list} "${${list}}" PARENT_SCOPE)
endfunction()

# Appends an option with a file, which is relative to the directory unless it is absolute.
function(_tarnvel_append_file list option file directory)
    if(IS_ABSOLUTE "${file}")
        set(directory "")
    elseif(file MATCHES "^\\$<")
        # What the file is shows when the expression is evaluated.
        set(directory "$<$<STREQUAL:$<FILTER:${file},INCLUDE,^/>,>:${directory}/>")
    else()
        string(APPEND directory /)
    endif()
    _tarnvel_append_argument(${list} ${option})
    _tarnvel_append_argument(${list} "${directory}${file}")
    set(${list} "${${list}}" PARENT_SCOPE)
endfunction()

# Adds a test that runs in the sandbox:
#
#     tarnvel_managed_configuration_add_test(NAME <name>
#         SCENARIO <file>               the applications and their configurations
#         COMMAND <command> [<arg>...]  a program, or the target of one
#         [EXPECT <file>]               what must come and be kept
#         [LOG <file>]                  where to record the events
#         [WORKING_DIRECTORY <directory>])
#
# The test passes if the command succeeds and its expectations are met. The command finds the bus
# through the variable DBUS_SYSTEM_BUS_ADDRESS. Files are relative to the current source directory,
# the log to the current binary directory. All values but the name may be generator expressions.
function(tarnvel_managed_configuration_add_test)
    math(EXPR last "${ARGC} - 1")
    foreach(index RANGE ${last})
        _tarnvel_check_list_item("${ARGV${index}}")
    endforeach()
    set(keywords NAME SCENARIO EXPECT LOG WORKING_DIRECTORY)
    cmake_parse_arguments(PARSE_ARGV 0 test "" "${keywords}" COMMAND)
    if(DEFINED test_UNPARSED_ARGUMENTS)
        _tarnvel_refuse_test("unknown arguments: ${test_UNPARSED_ARGUMENTS}")
    elseif(DEFINED test_KEYWORDS_MISSING_VALUES)
        _tarnvel_refuse_test("missing value after ${test_KEYWORDS_MISSING_VALUES}")
    endif()
    foreach(keyword IN ITEMS NAME SCENARIO COMMAND)
        if(NOT keyword IN_LIST ARGV)
            _tarnvel_refuse_test("${keyword} is missing")
        endif()
    endforeach()
    foreach(keyword IN ITEMS ${keywords} COMMAND)
        if(keyword IN_LIST ARGV AND "${test_${keyword}}" STREQUAL "")
            _tarnvel_refuse_test("empty value after ${keyword}")
        endif()
    endforeach()
    _tarnvel_check_test_name("${test_NAME}")
    if(NOT TARGET Tarnvel::managed-configuration-sandbox)
        _tarnvel_refuse_test("the sandbox is not installed")
    endif()

    set(options)
    _tarnvel_append_file(options --scenario "${test_SCENARIO}" "${CMAKE_CURRENT_SOURCE_DIR}")
    if(DEFINED test_EXPECT)
        _tarnvel_append_file(options --expect "${test_EXPECT}" "${CMAKE_CURRENT_SOURCE_DIR}")
    endif()
    if(DEFINED test_LOG)
        _tarnvel_append_file(options --log "${test_LOG}" "${CMAKE_CURRENT_BINARY_DIR}")
    endif()
    set(command)
    foreach(argument IN LISTS test_COMMAND)
        _tarnvel_append_argument(command "${argument}")
    endforeach()
    list(POP_FRONT command program)
    if(TARGET "${program}")
        set(program $<TARGET_FILE:${program}>)
    endif()
    set(directory)
    if(DEFINED test_WORKING_DIRECTORY)
        set(directory WORKING_DIRECTORY)
        _tarnvel_append_argument(directory "${test_WORKING_DIRECTORY}")
    endif()
    add_test(NAME "${test_NAME}"
        COMMAND Tarnvel::managed-configuration-sandbox ${options} -- ${program} ${command}
        ${directory})
endfunction()
