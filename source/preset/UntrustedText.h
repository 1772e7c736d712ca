// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Text from a host, a project or a settings file, looked at before JUCE reads it. Pure functions.

#pragma once

#include <string_view>

namespace pulsewright
{

/** Whether JUCE's XML parser can be trusted with a text.

    The parser calls itself for every level of nesting, and accepts much that is not XML. We do not predict how the parser
    reads such a text. The limits here are safe however it reads it. What it takes for an entity of another name than the
    five known ones may hold markup, which it reads as well, and past its end. What was written here is plain ASCII, has one
    header and no markup in its values; a text that was cut short does not end with a tag. A base64 attribute names the
    memory to allocate. Our states have none, so it is refused.
*/
bool isSafeToParse (std::string_view text);

/** Whether a text that JUCE's MemoryBlock is to read, "1234.ABCD", names no more bytes than it brings. */
bool isWholeBase64 (std::string_view text);

} // namespace pulsewright
