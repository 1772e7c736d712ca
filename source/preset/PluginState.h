// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// A take as the state that the plug-in saves, without the plug-in.

#pragma once

#include "generation/Take.h"

#include <string>
#include <string_view>

namespace pulsewright
{

/** What stands in front of a state's text: this number and the text's length, 32 bits each, little-endian. */
inline constexpr std::uint32_t stateMagic = 0x21324356u;

/** The root element of a state's text, and what each parameter is in it: <PARAM id="swing" value="0.18"/>. */
inline constexpr const char* stateElement          = "PulsewrightState";
inline constexpr const char* stateParameterElement = "PARAM";
inline constexpr const char* stateSeedCounter      = "seedCounter";
inline constexpr const char* stateLock             = "lock"; ///< and the lane's number

/** Why no state can bring a take back whole; empty when one can. A restored instance shows a two-bar verse and the song of
    its counter, at the style's tempo.
*/
std::string whyNoState (const Take& take);

/** The state whose restore plays the take, with no lane locked. */
std::string stateOf (const Take& take);

} // namespace pulsewright
