// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The files in which hosts keep presets: a state with a name around it.

#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace pulsewright
{

/** Bytes that are no preset of this plug-in; the message says why not. */
struct BadPreset : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

//==============================================================================
/** The plug-in's VST3 class, as its module tells it. */
inline constexpr std::string_view vstClassId = "ABCDEF019182FAEB546F6C6D50777231";

/** A .vstpreset: Steinberg's format of chunks. The state is framed as JUCE's VST3 wrapper does it, not bypassed. */
std::string vstPresetOf (std::string_view state, std::string_view name);

/** The state in a .vstpreset, as it was saved, with or without the wrapper's frame. @throws BadPreset */
std::string stateInVstPreset (std::string_view preset);

//==============================================================================
inline constexpr std::string_view lv2Uri = "urn:tolm:pulsewright";

struct NamedState
{
    std::string name;
    std::string code; ///< of the take
    std::string state;
};

/** The files of an LV2 bundle that holds presets. Each preset's URI ends with its take's code. */
struct Lv2Presets
{
    std::string manifest; ///< manifest.ttl
    std::string presets;  ///< presets.ttl
};

Lv2Presets lv2PresetsOf (const std::vector<NamedState>& presets);

/** A state as JUCE's LV2 and standalone wrappers write it: its length, a dot, and its bytes in JUCE's variant of base64. */
std::string base64Of (std::string_view state);

/** The state in such a text. @throws BadPreset */
std::string stateInBase64 (std::string_view text);

} // namespace pulsewright
