// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Runs the tests with JUCE's message thread in place, as in a host.

#include <juce_events/juce_events.h>

#include <gtest/gtest.h>

int main (int argc, char* argv[])
{
    testing::InitGoogleTest (&argc, argv);
    const juce::ScopedJuceInitialiser_GUI juceIsUp;
    return RUN_ALL_TESTS();
}
