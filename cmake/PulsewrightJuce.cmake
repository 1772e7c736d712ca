# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only

# Finds JUCE 8: a given source tree, an installed package, or the pinned release from upstream.

set (JUCE_DIR "" CACHE PATH "A JUCE 8 source tree, or the folder of an installed JUCEConfig.cmake")

if (JUCE_DIR AND EXISTS "${JUCE_DIR}/modules/juce_core/juce_core.h")
    add_subdirectory ("${JUCE_DIR}" "${CMAKE_BINARY_DIR}/juce" EXCLUDE_FROM_ALL SYSTEM)
else()
    find_package (JUCE 8 CONFIG QUIET)

    if (NOT JUCE_FOUND)
        message (STATUS "No JUCE 8 given or installed: fetching the pinned release (./dev gets it from Debian instead)")
        include (FetchContent)
        FetchContent_Declare (JUCE
            GIT_REPOSITORY https://github.com/juce-framework/JUCE.git
            GIT_TAG 8.0.6
            GIT_SHALLOW TRUE)
        FetchContent_MakeAvailable (JUCE)
    endif()
endif()
