# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only

# 64-bit Windows from Debian: the MinGW compiler that ./dev fetches into .deps/mingw, behind the wrappers that it makes in
# build/windows/bin, Debian's own assembler and linker, and Wine for the programs that the build itself runs.

set (CMAKE_SYSTEM_NAME Windows)
set (CMAKE_SYSTEM_PROCESSOR x86_64)
get_filename_component (root "${CMAKE_CURRENT_LIST_DIR}/.." ABSOLUTE)
set (CMAKE_C_COMPILER "${root}/build/windows/bin/gcc")
set (CMAKE_CXX_COMPILER "${root}/build/windows/bin/g++")
set (CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set (CMAKE_RC_FLAGS_INIT "--preprocessor=${CMAKE_C_COMPILER} --preprocessor-arg=-E --preprocessor-arg=-xc --preprocessor-arg=-DRC_INVOKED")
set (CMAKE_CROSSCOMPILING_EMULATOR wine)

set (CMAKE_EXE_LINKER_FLAGS_INIT -static) # no DLL but the system's
set (CMAKE_MODULE_LINKER_FLAGS_INIT -static)

set (CMAKE_FIND_ROOT_PATH "${root}/.deps/mingw/usr/x86_64-w64-mingw32" "${root}/.deps/mingw")
set (CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set (CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set (CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set (CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set (ENV{PKG_CONFIG_LIBDIR} "${root}/.deps/mingw/usr/x86_64-w64-mingw32/lib/pkgconfig")
set (XSIMD_INCLUDE_DIR "${root}/.deps/mingw/usr/include" CACHE PATH "Where the SIMD library is")

# JUCE expects to be compiled by Microsoft's compiler: what that includes by itself, and the system of Windows 10. A method
# of Windows' that returns a structure takes its address as an argument there, which GCC does when the headers say so.
set (CMAKE_CXX_FLAGS_INIT "-include intrin.h -include cstring -include cstdlib -DUNICODE -D_UNICODE -I${CMAKE_CURRENT_LIST_DIR}/patches -D_WIN32_WINNT=0x0A00 -DNTDDI_VERSION=0x0A00000C -DWIDL_EXPLICIT_AGGREGATE_RETURNS")

# JUCE names its libraries for Microsoft's linker alone.
set (CMAKE_CXX_STANDARD_LIBRARIES "-ljpeg -lpng16 -lz -ld2d1 -ld3d11 -ldcomp -ldwrite -ldxgi -ldxguid -lwindowscodecs -lcomctl32 -lcomdlg32 \
-ldbghelp -ldwmapi -lgdi32 -limm32 -lksguid -lole32 -loleaut32 -lpropsys -lrpcrt4 -lsetupapi -lshell32 -lshlwapi -luuid -lversion -lwininet -lwinmm -lws2_32"
     CACHE STRING "What every program is linked to")
