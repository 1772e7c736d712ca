// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The window's colours by role.

#pragma once

#include <juce_graphics/juce_graphics.h>

namespace pulsewright::palette
{

// clang-format off
inline const juce::Colour backgroundColour      { 0xff111318 }; // window; text on the orange menu highlight
inline const juce::Colour panelColour           { 0xff1b1f27 }; // panels, pattern grid
inline const juce::Colour faceColour            { 0xff242a35 }; // buttons, boxes, knob bodies
inline const juce::Colour outlineColour         { 0xff343b48 }; // outlines, knob tracks, grid lines
inline const juce::Colour accentColour          { 0xffff9d42 }; // orange: toggled buttons, values, kick
inline const juce::Colour secondaryAccentColour { 0xff51d6b1 }; // teal: hats, the song's button
inline const juce::Colour mutedTextColour       { 0xff9299a8 };
inline const juce::Colour textColour            { 0xfff3f0e7 };

inline const juce::Colour snareColour           { 0xffff5f6d };
inline const juce::Colour percColour            { 0xffa78bfa };

inline const juce::Colour generateButtonColour  { 0xffcc7d34 }; // the orange at four fifths
inline const juce::Colour buildSongButtonColour { 0xff37937a }; // the teal at seven tenths
// clang-format on

} // namespace pulsewright::palette
