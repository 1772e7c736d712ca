// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The window's look-and-feel: dark faces, rounded buttons, knobs with an orange arc.

#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace pulsewright
{

class Theme final : public juce::LookAndFeel_V4
{
public:
    Theme();

    void drawButtonBackground (juce::Graphics& g, juce::Button& button, const juce::Colour& background, bool isOver, bool isDown) override;

    void drawRotarySlider (
        juce::Graphics& g, int x, int y, int width, int height, float proportion, float startAngle, float endAngle, juce::Slider& slider) override;
};

} // namespace pulsewright
