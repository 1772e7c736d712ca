// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// JUCE's LV2 and standalone wrappers read a state with MemoryBlock::fromBase64Encoding, which takes the length that the
// text names, a negative one too, before any code of ours is called. The linker sends their calls here first: see --wrap
// in cmake/PulsewrightPlugin.cmake. Only those two link this file.

#include "preset/UntrustedText.h"

#include <juce_core/juce_core.h>

#if JUCE_LINUX || JUCE_BSD

// What the linker calls JUCE's own, and what it puts in its place. A member function takes its object first.
extern "C" bool readBase64AsJuce (juce::MemoryBlock*, juce::StringRef) asm("__real__ZN4juce11MemoryBlock18fromBase64EncodingENS_9StringRefE");
extern "C" bool readGuardedBase64 (juce::MemoryBlock*, juce::StringRef) asm("__wrap__ZN4juce11MemoryBlock18fromBase64EncodingENS_9StringRefE");

extern "C" bool readGuardedBase64 (juce::MemoryBlock* block, juce::StringRef text)
{
    return pulsewright::isWholeBase64 (text.text.getAddress()) && readBase64AsJuce (block, text);
}

#endif
