// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Writes the factory presets where the build wants them: VST3 presets into a folder, LV2 presets into the plug-in's bundle.

#include "preset/FactoryPresets.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

namespace
{

namespace fs = std::filesystem;

bool write (const fs::path& file, const std::string& bytes, std::ios::openmode mode = std::ios::trunc)
{
    std::ofstream stream (file, std::ios::binary | mode);
    stream << bytes;
    stream.close();
    return stream.good();
}

bool writeVstPresets (const fs::path& folder)
{
    fs::remove_all (folder);
    fs::create_directories (folder);

    bool isGood = true;
    for (const auto& [name, code, state] : pulsewright::factoryStates())
        isGood = write (folder / (name + ".vstpreset"), pulsewright::vstPresetOf (state, name)) && isGood;
    return isGood;
}

/** The bundle's manifest is written anew by every build of the plug-in, before this. */
bool addLv2Presets (const fs::path& bundle)
{
    const auto files = pulsewright::lv2PresetsOf (pulsewright::factoryStates());
    return write (bundle / "presets.ttl", files.presets) && write (bundle / "manifest.ttl", "\n" + files.manifest, std::ios::app);
}

} // namespace

int main (int argc, char** argv)
{
    const std::string kind = argc == 3 ? argv[1] : "";

    if (kind != "vst3" && kind != "lv2")
        return std::fprintf (stderr, "usage: pulsewright-factory-presets vst3 FOLDER | lv2 BUNDLE\n"), 2;

    if (kind == "vst3" ? writeVstPresets (argv[2]) : addLv2Presets (argv[2]))
        return 0;

    return std::fprintf (stderr, "The presets could not be written to %s\n", argv[2]), 1;
}
