// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The mark of what the audio thread calls.

#pragma once

/** Behind a function's parameters, in place of noexcept: it neither blocks, allocates nor frees, and all that it calls does
    neither. `./dev check nonblocking` has Clang prove it; for other compilers it is noexcept alone.
*/
#if defined(__clang__) && defined(__has_cpp_attribute)
#if __has_cpp_attribute(clang::nonblocking)
#define PULSEWRIGHT_NONBLOCKING noexcept [[clang::nonblocking]]
#endif
#endif

#ifndef PULSEWRIGHT_NONBLOCKING
#define PULSEWRIGHT_NONBLOCKING noexcept
#endif

/** Around functions that are marked but not checked, because they call others whose declarations say nothing. Each says why it
    may be called all the same.
*/
#if defined(__clang__) && __clang_major__ >= 20
#define PULSEWRIGHT_UNCHECKED_BEGIN _Pragma ("clang diagnostic push") _Pragma ("clang diagnostic ignored \"-Wfunction-effects\"")
#define PULSEWRIGHT_UNCHECKED_END _Pragma ("clang diagnostic pop")
#else
#define PULSEWRIGHT_UNCHECKED_BEGIN
#define PULSEWRIGHT_UNCHECKED_END
#endif
