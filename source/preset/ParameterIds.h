// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The keys of the parameters that are choices; those of the controls are in allSettings.

#pragma once

/** The keys by which hosts automate and states are stored. They never change. */
namespace pulsewright::parameterID
{

inline constexpr const char* genre         = "genre";
inline constexpr const char* playMode      = "play_mode";
inline constexpr const char* patternLength = "pattern_length";
inline constexpr const char* songDuration  = "song_duration";
inline constexpr const char* songStructure = "song_structure";
inline constexpr const char* soundKit      = "sound_kit";

} // namespace pulsewright::parameterID
