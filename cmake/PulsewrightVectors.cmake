# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only

# Inner loops that are compiled once for every kind of vectors that a processor may have. Which one runs is
# found out when it runs: one binary serves them all.

# The headers are all of it; Debian's CMake package would also link a library that it does not bring.
find_path (XSIMD_INCLUDE_DIR xsimd/xsimd.hpp PATHS /usr/local/include /usr/include REQUIRED NO_CMAKE_FIND_ROOT_PATH)

# A cross-compiler gets them alone: the other headers beside them are this system's.
if (EMSCRIPTEN)
    file (MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/include")
    file (CREATE_LINK "${XSIMD_INCLUDE_DIR}/xsimd" "${PROJECT_BINARY_DIR}/include/xsimd" SYMBOLIC)
    set (XSIMD_INCLUDE_DIR "${PROJECT_BINARY_DIR}/include")
endif()

add_library (pulsewright_vectors STATIC
    source/vectors/VectorKinds.cpp
    source/vectors/VectorKinds.h)
target_include_directories (pulsewright_vectors PUBLIC source)
target_include_directories (pulsewright_vectors SYSTEM INTERFACE "${XSIMD_INCLUDE_DIR}")
target_link_libraries (pulsewright_vectors PUBLIC pulsewright_build_settings PRIVATE pulsewright_warnings)

# On other processors there is one kind, which the compiler knows.
set (PULSEWRIGHT_X86_KERNELS 0)

if (CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64" AND NOT CMAKE_OSX_ARCHITECTURES MATCHES "arm64")
    set (PULSEWRIGHT_X86_KERNELS 1)
    target_compile_definitions (pulsewright_vectors PUBLIC PULSEWRIGHT_X86_KERNELS=1)
endif()

# Compiles PREFIXSse2.cpp, PREFIXAvx2.cpp and PREFIXAvx512.cpp, each for its kind, into a target.
function (pulsewright_add_kernels target prefix)
    if (NOT PULSEWRIGHT_X86_KERNELS)
        return()
    endif()

    set (flags_Sse2)

    if (MSVC)
        set (flags_Avx2 /arch:AVX2)
        set (flags_Avx512 /arch:AVX512)
    else()
        set (flags_Avx2 -mavx2 -mfma)
        set (flags_Avx512 -mavx512f -mavx512bw -mavx512cd -mavx512dq -mfma)
    endif()

    if (CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        list (APPEND flags_Avx512 -Wno-uninitialized -Wno-maybe-uninitialized) # GCC 12's own header: its bug 105593
    endif()

    # SSE2 comes first: of a function that several of them hold, as a build without optimisation does of the SIMD
    # library's, the linker takes the first.
    foreach (kind Sse2 Avx2 Avx512)
        set (library "${target}_${kind}")
        add_library (${library} STATIC "${prefix}.h" "${prefix}For.h" "${prefix}${kind}.cpp")
        target_link_libraries (${library} PRIVATE pulsewright_vectors pulsewright_warnings)
        target_compile_options (${library} PRIVATE ${flags_${kind}})
        target_link_libraries (${target} PRIVATE ${library})
    endforeach()
endfunction()
