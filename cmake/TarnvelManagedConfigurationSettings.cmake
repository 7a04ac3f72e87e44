# SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
# SPDX-License-Identifier: BSD-3-Clause

# Whatever the project has set, if() knows IN_LIST below.
cmake_policy(SET CMP0057 NEW)

function(_tarnvel_refuse_settings reason)
    message(FATAL_ERROR "tarnvel_managed_configuration_add_settings: ${reason}")
endfunction()

# Refuses a target that cannot have a header generated here.
function(_tarnvel_check_settings_target target)
    if(NOT TARGET "${target}")
        _tarnvel_refuse_settings("there is no target ${target}")
    endif()
    get_target_property(type ${target} TYPE)
    get_target_property(aliased ${target} ALIASED_TARGET)
    get_target_property(imported ${target} IMPORTED)
    if(type STREQUAL INTERFACE_LIBRARY OR type STREQUAL UTILITY OR aliased OR imported)
        _tarnvel_refuse_settings("the target ${target} has no sources of its own")
    endif()
    get_target_property(directory ${target} SOURCE_DIR)
    if(NOT directory STREQUAL CMAKE_CURRENT_SOURCE_DIR)
        _tarnvel_refuse_settings("the target ${target} is of another directory: ${directory}")
    endif()
endfunction()

# Sets the variable to the absolute path of a file that exists.
function(_tarnvel_find_settings_file variable file)
    get_filename_component(path "${file}" ABSOLUTE BASE_DIR "${CMAKE_CURRENT_SOURCE_DIR}")
    if(NOT EXISTS "${path}" OR IS_DIRECTORY "${path}")
        _tarnvel_refuse_settings("there is no file ${path}")
    endif()
    set(${variable} "${path}" PARENT_SCOPE)
endfunction()

# Sets the variable to the generator: a file, or the target of this package; empty if there is none.
function(_tarnvel_find_settings_tool variable)
    set(tool "${TARNVEL_MANAGED_CONFIGURATION_SCHEMA_TOOL}")
    if(NOT tool STREQUAL "" AND NOT (IS_ABSOLUTE "${tool}" AND EXISTS "${tool}"))
        _tarnvel_refuse_settings("TARNVEL_MANAGED_CONFIGURATION_SCHEMA_TOOL must be the absolute path of \
managed-configuration-schema, not: ${tool}")
    elseif(tool STREQUAL "" AND TARGET Tarnvel::managed-configuration-schema)
        set(tool $<TARGET_FILE:Tarnvel::managed-configuration-schema>)
    endif()
    set(${variable} "${tool}" PARENT_SCOPE)
endfunction()

# Gives a target a header with a class for the settings that a schema describes:
#
#     tarnvel_managed_configuration_add_settings(<target>
#         SCHEMA <file>
#         CLASS <name>
#         [HEADER <file>])
#
# The sources of the target include the header by the name of the class in lower case, such as
# "viewersettings.h". It is generated in the build directory when the schema changes. With HEADER, the
# target uses that file, which the project keeps, and a test compares it with what would be generated.
#
# The generator is the one of this package. If TARNVEL_MANAGED_CONFIGURATION_SCHEMA_TOOL is set, it is
# that file: for a package without the tools, or with tools for another machine. Without a generator,
# HEADER adds no test.
#
# Files are relative to the current source directory.
function(tarnvel_managed_configuration_add_settings target)
    set(keywords SCHEMA CLASS HEADER)
    cmake_parse_arguments(PARSE_ARGV 1 settings "" "${keywords}" "")
    if(DEFINED settings_UNPARSED_ARGUMENTS)
        _tarnvel_refuse_settings("unknown arguments: ${settings_UNPARSED_ARGUMENTS}")
    elseif(DEFINED settings_KEYWORDS_MISSING_VALUES)
        _tarnvel_refuse_settings("missing value after ${settings_KEYWORDS_MISSING_VALUES}")
    endif()
    foreach(keyword IN LISTS keywords)
        if(keyword IN_LIST ARGN AND "${settings_${keyword}}" STREQUAL "")
            _tarnvel_refuse_settings("empty value after ${keyword}")
        elseif(NOT keyword IN_LIST ARGN AND NOT keyword STREQUAL HEADER)
            _tarnvel_refuse_settings("${keyword} is missing")
        endif()
    endforeach()
    if(NOT settings_CLASS MATCHES "^[A-Za-z][A-Za-z0-9_]*$")
        _tarnvel_refuse_settings("not the name of a class: ${settings_CLASS}")
    endif()
    _tarnvel_check_settings_target("${target}")
    _tarnvel_find_settings_file(schema "${settings_SCHEMA}")
    _tarnvel_find_settings_tool(tool)
    string(TOLOWER "${settings_CLASS}.h" name)

    if(DEFINED settings_HEADER)
        _tarnvel_find_settings_file(header "${settings_HEADER}")
        get_filename_component(directory "${header}" DIRECTORY)
        get_filename_component(header_name "${header}" NAME)
        if(NOT header_name STREQUAL name)
            _tarnvel_refuse_settings("the header must be called ${name}: ${header}")
        endif()
        if(NOT tool STREQUAL "")
            add_test(NAME ${target}.${name}
                COMMAND sh -c [["$0" header "$1" --class "$2" | diff -u "$3" - || {
                    echo "Update it: $0 header $1 --class $2 -o $3" >&2; exit 1; }]]
                "${tool}" "${schema}" ${settings_CLASS} "${header}")
        endif()
    elseif(tool STREQUAL "")
        _tarnvel_refuse_settings("managed-configuration-schema is not installed. Install the tools, set \
TARNVEL_MANAGED_CONFIGURATION_SCHEMA_TOOL, or keep the header and pass it with HEADER.")
    else()
        # Targets of the same directory may have classes of the same name.
        set(directory "${CMAKE_CURRENT_BINARY_DIR}/${target}_settings")
        set(header "${directory}/${name}")
        file(MAKE_DIRECTORY "${directory}")
        add_custom_command(
            OUTPUT "${header}"
            COMMAND "${tool}" header "${schema}" --class ${settings_CLASS} -o "${header}"
            DEPENDS "${schema}" "${tool}"
            COMMENT "Generating ${name}"
            VERBATIM)
        set_source_files_properties("${header}" PROPERTIES SKIP_AUTOGEN ON)
    endif()
    target_sources(${target} PRIVATE "${header}")
    target_include_directories(${target} PRIVATE "${directory}")
endfunction()
