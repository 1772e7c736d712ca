# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only

# Finds JUCE 8: a given source tree, an installed package, or, only where asked for, the pinned release from upstream.

set (JUCE_DIR "" CACHE PATH "A JUCE 8 source tree, or the folder of an installed JUCEConfig.cmake")
option (PULSEWRIGHT_DOWNLOAD_JUCE "Download JUCE 8.0.6 from upstream where none is given or installed" OFF)

if (JUCE_DIR AND EXISTS "${JUCE_DIR}/modules/juce_core/juce_core.h")
    set (pkg_config_libdir "$ENV{PKG_CONFIG_LIBDIR}") # JUCE takes it away where it builds for another machine
    add_subdirectory ("${JUCE_DIR}" "${CMAKE_BINARY_DIR}/juce" EXCLUDE_FROM_ALL SYSTEM)

    if (pkg_config_libdir)
        set (ENV{PKG_CONFIG_LIBDIR} "${pkg_config_libdir}")
    endif()

    return()
endif()

# Without a version: JUCE's own version file accepts no other than exactly the installed one.
find_package (JUCE CONFIG QUIET)

if (JUCE_FOUND AND NOT JUCE_VERSION MATCHES "^8\\.")
    message (FATAL_ERROR "Pulsewright needs JUCE 8; ${JUCE_CONFIG} is JUCE ${JUCE_VERSION}. Give another with -DJUCE_DIR=...")
elseif (JUCE_FOUND)
    message (STATUS "JUCE ${JUCE_VERSION}, installed: ${JUCE_CONFIG}")
elseif (PULSEWRIGHT_DOWNLOAD_JUCE)
    message (STATUS "Downloading JUCE 8.0.6")
    include (FetchContent)
    FetchContent_Declare (JUCE
        GIT_REPOSITORY https://github.com/juce-framework/JUCE.git
        GIT_TAG 8.0.6
        GIT_SHALLOW TRUE)
    FetchContent_MakeAvailable (JUCE)
else()
    message (FATAL_ERROR "No JUCE 8 is given or installed. Use ./dev, which gets it from Debian, or give one with -DJUCE_DIR=..., "
                         "or let CMake download it with -DPULSEWRIGHT_DOWNLOAD_JUCE=ON.")
endif()
