# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only

# What all targets share: the language, and the flags that keep the music the same everywhere.

if (NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set (CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

set (CMAKE_CXX_STANDARD 20)
set (CMAKE_CXX_STANDARD_REQUIRED ON)
set (CMAKE_CXX_EXTENSIONS OFF)
set (CMAKE_POSITION_INDEPENDENT_CODE ON)
set (CMAKE_CXX_VISIBILITY_PRESET hidden)
set (CMAKE_C_VISIBILITY_PRESET hidden)
set (CMAKE_VISIBILITY_INLINES_HIDDEN ON)

find_program (PULSEWRIGHT_CCACHE ccache)

if (PULSEWRIGHT_CCACHE AND NOT EMSCRIPTEN)
    set (CMAKE_C_COMPILER_LAUNCHER "${PULSEWRIGHT_CCACHE}")
    set (CMAKE_CXX_COMPILER_LAUNCHER "${PULSEWRIGHT_CCACHE}")
endif()

add_library (pulsewright_build_settings INTERFACE)
target_compile_features (pulsewright_build_settings INTERFACE cxx_std_20)

# A fused multiply-add rounds once instead of twice: on the processors that have one, a seed would
# play another song.
target_compile_options (pulsewright_build_settings INTERFACE
    $<$<CXX_COMPILER_ID:GNU,Clang,AppleClang>:-ffp-contract=off>
    $<$<CXX_COMPILER_ID:MSVC>:/fp:precise /utf-8>)

# A browser's machine: its own exceptions, and its vectors, for which the SIMD library has the SSE2 kind.
if (EMSCRIPTEN)
    add_compile_options (-fwasm-exceptions -msimd128 -msse2)
    add_link_options (-fwasm-exceptions)
endif()

# GCC's unique symbols keep a plug-in's module in memory for ever once it is loaded. For JUCE's files too.
if (CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options ($<$<COMPILE_LANGUAGE:CXX>:-fno-gnu-unique>)
endif()

# GCC 12's std::stable_sort uses a buffer that newer Clangs warn of as deprecated. GCC goes on warning of what we call.
if (CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 17)
    add_compile_options ($<$<COMPILE_LANGUAGE:CXX>:-Wno-deprecated-declarations>)
endif()

set (PULSEWRIGHT_OWN_FLAGS "" CACHE STRING "Compiler flags for our own files, not for JUCE's: such as a sanitizer")
separate_arguments (PULSEWRIGHT_OWN_FLAGS)

# Warnings are errors where CMAKE_COMPILE_WARNING_AS_ERROR asks for it, as ./dev does, and in our own files alone: a
# packager's compiler is newer than ours.
set (own_warnings -Wall -Wextra -Wshadow -Wconversion)

if (EMSCRIPTEN)
    list (APPEND own_warnings -Wno-shorten-64-to-32) # of positions that were compared with a size before
endif()

if (CMAKE_COMPILE_WARNING_AS_ERROR)
    list (APPEND own_warnings -Werror)
    set (CMAKE_COMPILE_WARNING_AS_ERROR OFF)
endif()

# For our own code only; JUCE's headers are system headers to it.
add_library (pulsewright_warnings INTERFACE)
target_compile_options (pulsewright_warnings INTERFACE
    ${PULSEWRIGHT_OWN_FLAGS}
    "$<$<CXX_COMPILER_ID:GNU,Clang,AppleClang>:${own_warnings}>"
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict> # "a" + std::string: its bug 105651
    $<$<CXX_COMPILER_ID:MSVC>:/W4>)
