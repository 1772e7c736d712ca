# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only

# The synthesised kit, and its inner loops once for every kind of vectors that a processor may have. Which one
# runs is found out when it runs: one binary serves them all. No JUCE.

# The headers are all of it; Debian's CMake package would also link a library that it does not bring.
find_path (XSIMD_INCLUDE_DIR xsimd/xsimd.hpp REQUIRED)

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
target_include_directories (pulsewright_kit SYSTEM PRIVATE "${XSIMD_INCLUDE_DIR}")
target_link_libraries (pulsewright_kit PUBLIC pulsewright_generation PRIVATE pulsewright_warnings)

if (NOT CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64" OR CMAKE_OSX_ARCHITECTURES MATCHES "arm64")
    return() # one kind, which the compiler knows: StrokeKernels.cpp has it
endif()

target_compile_definitions (pulsewright_kit PRIVATE PULSEWRIGHT_X86_KERNELS=1)

function (add_kernels kind)
    add_library (pulsewright_kernels_${kind} STATIC
        source/processor/kit/StrokeKernels.h
        source/processor/kit/StrokeKernelsFor.h
        source/processor/kit/StrokeKernels${kind}.cpp)
    target_include_directories (pulsewright_kernels_${kind} PRIVATE source)
    target_include_directories (pulsewright_kernels_${kind} SYSTEM PRIVATE "${XSIMD_INCLUDE_DIR}")
    target_link_libraries (pulsewright_kernels_${kind} PRIVATE pulsewright_build_settings pulsewright_warnings)
    target_compile_options (pulsewright_kernels_${kind} PRIVATE ${ARGN})
    target_link_libraries (pulsewright_kit PRIVATE pulsewright_kernels_${kind})
endfunction()

# SSE2 comes first: of a function that several of them hold, as a build without optimisation does of the SIMD
# library's, the linker takes the first.
if (MSVC)
    add_kernels (Sse2)
    add_kernels (Avx2 /arch:AVX2)
    add_kernels (Avx512 /arch:AVX512)
else()
    add_kernels (Sse2)
    add_kernels (Avx2 -mavx2 -mfma)
    add_kernels (Avx512 -mavx512f -mavx512bw -mavx512cd -mavx512dq -mfma)
endif()

if (CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options (pulsewright_kernels_Avx512 PRIVATE -Wno-uninitialized -Wno-maybe-uninitialized) # GCC 12's own header: its bug 105593
endif()
