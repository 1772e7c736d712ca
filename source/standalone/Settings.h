// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The app's settings file: where it is, and whether JUCE may read it. Message thread.

#pragma once

#include <juce_data_structures/juce_data_structures.h>

namespace pulsewright
{

/** On Linux in XDG_CONFIG_HOME, or in ~/.config where that is not set to an absolute path. */
juce::PropertiesFile::Options settingsOptions();

struct PreparedSettings
{
    juce::String message; ///< for the user; empty where there is nothing to say
    bool isUsable = true; ///< false where what the file holds is bad and nothing can be put in its place
};

/** To be called before JUCE reads the settings.

    A file that JUCE could not read, or that would end the app (it nests its elements deeper than the parser goes, or
    its state names more memory than there is), is renamed: nothing of it is lost, and the app starts with default settings. A file
    in ~/.config, where earlier versions kept it, is copied to XDG_CONFIG_HOME.
*/
PreparedSettings prepareSettings (const juce::File& file);

} // namespace pulsewright
