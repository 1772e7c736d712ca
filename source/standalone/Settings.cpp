// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "Settings.h"

#include "preset/UntrustedText.h"
#include "processor/SavedState.h"

#include <filesystem>

namespace pulsewright
{

namespace
{
#if JUCE_LINUX || JUCE_BSD
    constexpr const char* usualFolder = "~/.config";

    juce::String settingsFolder()
    {
        const auto folder = juce::SystemStats::getEnvironmentVariable ("XDG_CONFIG_HOME", {});
        return juce::File::isAbsolutePath (folder) ? folder : juce::String (usualFolder);
    }

    void copyFromUsualFolder (const juce::File& file)
    {
        const auto earlier = juce::File (usualFolder).getChildFile (file.getFileName());

        if (! file.exists() && earlier.existsAsFile() && file.getParentDirectory().createDirectory())
            earlier.copyFileTo (file); // where that fails, the app starts with default settings
    }
#endif

    bool isReadableState (const juce::String& text)
    {
        juce::MemoryBlock state;

        return isWholeBase64 (text.toRawUTF8()) && state.fromBase64Encoding (text)
            && SavedState::isReadable (state.getData(), static_cast<int> (state.getSize()));
    }

    /** @returns what is wrong with a file's text; empty where nothing is */
    juce::String faultOf (const juce::String& text)
    {
        constexpr int largestText = 1 << 18; // a usual one has three kilobytes

        if (text.length() > largestText || ! isSafeToParse (text.toStdString()))
            return "belong to another program or are incomplete";

        const auto settings = juce::parseXMLIfTagMatches (text, "PROPERTIES");

        if (settings == nullptr)
            return "belong to another program";

        // The app takes the last state that is named, or what stands inside an entry.
        for (const auto* entry : settings->getChildIterator())
            if (entry->getStringAttribute ("name") == "filterState"
                && (entry->getNumChildElements() > 0 || ! isReadableState (entry->getStringAttribute ("val"))))
                return "hold a state that cannot be restored";

        return {};
    }
} // namespace

juce::PropertiesFile::Options settingsOptions()
{
    juce::PropertiesFile::Options options;
    options.applicationName          = "Pulsewright";
    options.filenameSuffix           = ".settings";
    options.osxLibrarySubFolder      = "Application Support";
    options.millisecondsBeforeSaving = 500;
#if JUCE_LINUX || JUCE_BSD
    options.folderName = settingsFolder();
#endif
    return options;
}

PreparedSettings prepareSettings (const juce::File& file)
{
#if JUCE_LINUX || JUCE_BSD
    copyFromUsualFolder (file);
#endif

    if (! file.exists())
        return {};

    std::error_code error;
    const auto& path  = file.getFullPathName();
    const bool isFile = std::filesystem::is_regular_file (reinterpret_cast<const char8_t*> (path.toRawUTF8()), error); // to read a pipe would wait
    const auto fault  = isFile ? faultOf (file.loadFileAsString()) : "are not a file";

    if (fault.isEmpty())
        return {};

    const auto aside = file.getParentDirectory().getNonexistentChildFile (file.getFileName() + ".bad", {}, false);

    if (file.moveFileTo (aside))
        return { "The settings in " + path + " " + fault + ". They are kept as " + aside.getFileName() + "; the app starts with default settings." };

    return { "The settings in " + path + " " + fault + ", and cannot be renamed. Move or delete that file.", false };
}

} // namespace pulsewright
