# SPDX-FileCopyrightText: 2026 Tarnvel managed configuration contributors
# SPDX-License-Identifier: BSD-3-Clause

# As a number: 0x050f00, 0x060400.
string(REPLACE "." ";" version ${TARNVEL_MANAGED_CONFIGURATION_QT_VERSION})
list(GET version 0 major)
list(GET version 1 minor)
math(EXPR qt_version_number "(${major} << 16) + (${minor} << 8)" OUTPUT_FORMAT HEXADECIMAL)

# Sets the language standard, the warnings and the Qt definitions that all targets share.
function(tarnvel_set_up_target target)
    set_target_properties(${target} PROPERTIES
        CXX_STANDARD 17
        CXX_STANDARD_REQUIRED ON
        CXX_EXTENSIONS OFF)
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic
        $<$<BOOL:${TARNVEL_MANAGED_CONFIGURATION_WERROR}>:-Werror>)
    target_compile_definitions(${target} PRIVATE
        QT_DISABLE_DEPRECATED_BEFORE=${qt_version_number}
        QT_NO_KEYWORDS
        QT_NO_CAST_FROM_BYTEARRAY
        QT_NO_CAST_TO_ASCII
        QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
        QT_NO_URL_CAST_FROM_STRING)
endfunction()
