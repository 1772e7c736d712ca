# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only

# The search through takes. No JUCE.

find_package (Threads REQUIRED)

add_library (pulsewright_search STATIC
    source/search/GrooveExample.cpp
    source/search/GrooveExample.h
    source/search/GrooveTarget.cpp
    source/search/GrooveTarget.h
    source/search/TakeBound.cpp
    source/search/TakeBound.h
    source/search/TakeKernels.cpp
    source/search/TakeKernels.h
    source/search/TakeKernelsFor.h
    source/search/TakeSearch.cpp
    source/search/TakeSearch.h)
target_link_libraries (pulsewright_search PUBLIC pulsewright_generation PRIVATE pulsewright_export pulsewright_vectors pulsewright_warnings Threads::Threads)
pulsewright_add_kernels (pulsewright_search source/search/TakeKernels)
