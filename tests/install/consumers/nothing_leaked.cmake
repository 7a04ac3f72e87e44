# SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
# SPDX-License-Identifier: BSD-3-Clause

# Fails if the library, built with add_subdirectory(), has changed the settings of this project.

foreach(property IN ITEMS COMPILE_DEFINITIONS COMPILE_OPTIONS INCLUDE_DIRECTORIES LINK_OPTIONS)
    get_directory_property(value ${property})
    if(value)
        message(FATAL_ERROR "the library sets the directory's ${property}: ${value}")
    endif()
endforeach()
# Qt 6 sets this one too.
list(FILTER CMAKE_MODULE_PATH EXCLUDE REGEX /cmake/Qt6)
foreach(variable IN ITEMS CMAKE_AUTOMOC CMAKE_MODULE_PATH CMAKE_CXX_VISIBILITY_PRESET)
    if(NOT "${${variable}}" STREQUAL "")
        message(FATAL_ERROR "the library sets ${variable}: ${${variable}}")
    endif()
endforeach()
foreach(target IN ITEMS managed-configuration-sandbox tarnvel-viewer test-support)
    if(TARGET ${target})
        message(FATAL_ERROR "the library adds the target ${target}")
    endif()
endforeach()
