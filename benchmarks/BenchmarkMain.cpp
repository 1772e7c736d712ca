// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "ComparisonTable.h"

#include <juce_events/juce_events.h>

int main (int argc, char* argv[])
{
    const juce::ScopedJuceInitialiser_GUI juceIsUp;
    benchmark::Initialize (&argc, argv);
    pulsewright::ComparisonTable table;
    benchmark::RunSpecifiedBenchmarks (&table);
    return 0;
}
