// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Shows a pattern: four lanes over sixteenth columns, every hit a square.

#pragma once

#include "generation/DrumPattern.h"

#include <juce_gui_basics/juce_gui_basics.h>

namespace pulsewright
{

/** A pure view of a copy of the pattern: it never touches the processor. Thread: message. */
class PatternGrid final : public juce::Component
{
public:
    PatternGrid();

    void setPattern (DrumPattern newPattern);

    void paint (juce::Graphics& g) override;

private:
    struct Geometry;

    void paintHeader (juce::Graphics& g, const Geometry& geometry) const;
    void paintRows (juce::Graphics& g, const Geometry& geometry) const;
    void paintColumns (juce::Graphics& g, const Geometry& geometry) const;
    void paintHits (juce::Graphics& g, const Geometry& geometry) const;

    juce::String title() const;
    juce::String counts() const;

    DrumPattern pattern;
};

} // namespace pulsewright
