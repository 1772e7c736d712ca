// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "FactoryPresets.h"

#include "PluginState.h"

#include "generation/TakeCode.h"

namespace pulsewright
{

std::vector<NamedState> factoryStates()
{
    std::vector<NamedState> states;

    for (const auto& preset : factoryPresets)
    {
        const auto take = takeOf (preset.code);
        states.push_back (
            { std::string (nameOf (take.settings.genre)).append (" - ").append (preset.name), std::string (preset.code), stateOf (take) });
    }

    return states;
}

} // namespace pulsewright
