# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only

# 64-bit Arm from another machine: Debian's cross compiler, the libraries that ./dev fetches into .deps/arm64, and an
# emulator for the programs that the build itself runs. pkg-config is told by its environment variables.

set (CMAKE_SYSTEM_NAME Linux)
set (CMAKE_SYSTEM_PROCESSOR aarch64)
set (CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set (CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
get_filename_component (CMAKE_SYSROOT "${CMAKE_CURRENT_LIST_DIR}/../.deps/arm64" ABSOLUTE)
set (CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L "${CMAKE_SYSROOT}")

set (CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set (CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set (CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set (CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set (XSIMD_INCLUDE_DIR "${CMAKE_SYSROOT}/usr/include" CACHE PATH "Where the SIMD library is")
