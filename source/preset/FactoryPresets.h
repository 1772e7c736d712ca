// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The presets that come with the plug-in: two grooves and a song in every style.

#pragma once

#include "PresetFiles.h"

#include <array>
#include <string_view>
#include <vector>

namespace pulsewright
{

struct FactoryPreset
{
    std::string_view name;
    std::string_view code;
    std::string_view description;
};

/** In the order of the styles. Of each style's two grooves one plays few strokes and one plays many, and of the takes that
    were tried it is the most typical one: nearest to all others. Any two share less than three quarters of their strokes.
*/
// clang-format off
inline constexpr std::array<FactoryPreset, 21> factoryPresets
{{
    { "Back Room",        "PW1-Q978P-XJXJR-APUYK-RW050-50505-PQYQQ-83QQQ-QQ3CQ-NDLAM7", "a bare verse that leans back" },
    { "Head Nod",         "PW1-QFK22-FVYKF-VPUZS-RW050-50505-PQYQQ-8SQQQ-QQVCQ-ZRAG0Q", "more kicks between the beats, with ghosts" },
    { "Night Bus",        "PW1-S86GN-XJ908-PPUZS-RW050-50505-QQQQQ-83QQQ-QQPUQ-49N4YS", "a song that stays low" },
    { "Low Ceiling",      "PW1-Q4586-90Z6Y-KPUZS-RW050-50505-PQYQQ-DCSQQ-QQ35Q-4LXTJE", "half-time with room in it" },
    { "Fast Hands",       "PW1-Q62TJ-FKZ6V-XPUZS-RW050-50505-PQYQQ-DCSQQ-QQQGQ-95JT3R", "rolls in every second bar" },
    { "Glass Tower",      "PW1-SH6FV-XJZ6G-NPUZS-RW050-50505-QQQQQ-DCSQQ-QQZYQ-YKY20L", "a song of even hats and sudden rolls" },
    { "Slow Tide",        "PW1-PXGXJ-XJYK9-0PU90-RW050-50505-PQYQQ-9SQQQ-QQVQQ-LD750R", "few strokes, loosely in time" },
    { "Echo Yard",        "PW1-P27FV-XJRY8-695ZS-RW050-50505-PQYQQ-9SQQQ-QQSUQ-2RWASF", "side stick and wandering toms" },
    { "Harbour Wall",     "PW1-3GY86-XJYV9-0PUZS-RW050-50505-QQQQQ-93QQQ-QQQ5Q-SYVCM7", "a long, calm song" },
    { "First Floor",      "PW1-PKJ86-XJPU9-0PUZS-RW050-50505-PQYQQ-TESQQ-QQQSQ-R5KCSJ", "four on the floor, nothing else in the way" },
    { "Peak Hour",        "PW1-PMGVX-22RW9-0PUZS-RW050-50505-PQYQQ-TESQQ-QQXYQ-EEMDKC", "sixteenth hats, loud" },
    { "Warehouse Light",  "PW1-3CC2Q-86ZS9-0PUZS-RW050-50505-QQQQQ-TESQQ-QQRYQ-0YRHZL", "a club song that builds slowly" },
    { "Rolling Fog",      "PW1-Z8PGN-XGZ6Y-KPUZS-RW050-50505-PQYQQ-JQQQQ-QQ2SQ-L2ER78", "a plain two-step" },
    { "Sharp Turn",       "PW1-Z25TU-27Z6T-GPUZS-RW050-50505-PQYQQ-JPSQQ-QQJQQ-KXHXYW", "ghosts and pickups everywhere" },
    { "Motorway North",   "PW1-JGN22-XJZ68-6PUZS-RW050-50505-QQQQQ-JQQQQ-QQPUQ-VL4CVM", "a song that keeps moving" },
    { "Window Seat",      "PW1-Z45XG-XJGN9-0PU95-XG050-50505-PQYQQ-XEQQQ-QQZUQ-Q8MRV8", "soft, swung and late" },
    { "Brush Talk",       "PW1-ZEV86-XJFV2-2PUZS-8P050-50505-PQYQQ-XCQQQ-QQ2CQ-6ZKR8U", "a chatter of ghost notes" },
    { "Late Library",     "PW1-JHS8P-XJ869-0PUYK-RW050-50505-QQQQQ-XEQQQ-QQZQQ-QCVHW5", "a quiet song with a lot of swing" },
    { "Test Tone",        "PW1-RXG86-XJZ69-0PUQ5-PJ050-50505-PQYQQ-VFSQQ-QQPCQ-GUA5W2", "straight as a ruler" },
    { "Broken Clock",     "PW1-R2527-TGZ69-0XGZS-RW050-50505-PQYQQ-VFSQQ-QQNCQ-5D4RRR", "a beat that trips over its toms" },
    { "Signal Path",      "PW1-NGNFK-86Z69-0PUPG-RW050-50505-QQQQQ-VFSQQ-QQR5Q-UPP7WY", "a song on the grid" }
}};
// clang-format on

/** Each as a state, named with its style: "House - Peak Hour". */
std::vector<NamedState> factoryStates();

} // namespace pulsewright
