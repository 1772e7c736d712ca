// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// A folder in a place that all users of a machine share.

#pragma once

#include <juce_core/juce_core.h>

namespace pulsewright
{

/** Makes a folder, or takes one that is there, into which nobody else can put anything.

    The temporary folder of a Unix machine is everybody's. A folder there that is a link or that belongs to
    somebody else could make us overwrite a file of our user elsewhere. Such a folder is refused. One of
    our own that others may write to is made ours alone (mode 700). On other systems the temporary folder is the
    user's own, and the folder is only made.

    @returns whether it is there and ours. Touches the disk.
*/
bool makePrivateFolder (const juce::File& folder);

} // namespace pulsewright
