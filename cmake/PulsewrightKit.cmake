# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only

# The synthesised kit. No JUCE.

add_library (pulsewright_kit STATIC
    source/processor/kit/DrumSound.cpp
    source/processor/kit/DrumSound.h
    source/processor/kit/DrumSynth.cpp
    source/processor/kit/DrumSynth.h
    source/processor/kit/DrumVoice.cpp
    source/processor/kit/DrumVoice.h
    source/processor/kit/KitTables.cpp
    source/processor/kit/KitTables.h
    source/processor/kit/StrokeKernels.cpp
    source/processor/kit/StrokeKernels.h
    source/processor/kit/StrokeKernelsFor.h)
target_link_libraries (pulsewright_kit PUBLIC pulsewright_generation PRIVATE pulsewright_vectors pulsewright_warnings)
pulsewright_add_kernels (pulsewright_kit source/processor/kit/StrokeKernels)
