// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "Theme.h"

#include "Palette.h"

#include <cmath>

namespace pulsewright
{

Theme::Theme()
{
    using namespace palette;

    // clang-format off
    setColour (juce::ComboBox::backgroundColourId,             faceColour);
    setColour (juce::ComboBox::textColourId,                   textColour);
    setColour (juce::ComboBox::outlineColourId,                outlineColour);
    setColour (juce::ComboBox::arrowColourId,                  accentColour);
    setColour (juce::PopupMenu::backgroundColourId,            faceColour);
    setColour (juce::PopupMenu::textColourId,                  textColour);
    setColour (juce::PopupMenu::highlightedBackgroundColourId, accentColour);
    setColour (juce::PopupMenu::highlightedTextColourId,       backgroundColour);
    setColour (juce::Slider::textBoxTextColourId,              textColour);
    setColour (juce::Slider::textBoxOutlineColourId,           juce::Colours::transparentBlack);
    setColour (juce::Slider::textBoxBackgroundColourId,        juce::Colours::transparentBlack);
    setColour (juce::ToggleButton::textColourId,               mutedTextColour);
    setColour (juce::TextButton::buttonColourId,               faceColour); // of the buttons without a colour of their own
    // clang-format on
}

void Theme::drawButtonBackground (juce::Graphics& g, juce::Button& button, const juce::Colour& background, bool isOver, bool isDown)
{
    constexpr float cornerSize = 6.0f;

    // Half a pixel in, so that the outline falls on pixels.
    const juce::Rectangle<float> bounds (0.5f,
                                         0.5f,
                                         juce::jmax (static_cast<float> (button.getWidth()) - 1.0f, 0.0f),
                                         juce::jmax (static_cast<float> (button.getHeight()) - 1.0f, 0.0f));
    const bool isOn = button.getToggleState();

    const auto fill = isOn ? palette::accentColour : isDown ? background.brighter (0.16f) : isOver ? background.brighter (0.08f) : background;

    g.setColour (fill);
    g.fillRoundedRectangle (bounds, cornerSize);
    g.setColour (isOn ? palette::accentColour.brighter (0.4f) : palette::outlineColour);
    g.drawRoundedRectangle (bounds, cornerSize, 1.0f);
}

void Theme::drawRotarySlider (
    juce::Graphics& g, int x, int y, int width, int height, float proportion, float startAngle, float endAngle, juce::Slider&)
{
    const float radius    = static_cast<float> (juce::jmin (width, height)) * 0.4f;
    const float centreX   = static_cast<float> (x) + static_cast<float> (width) * 0.5f;
    const float centreY   = static_cast<float> (y) + static_cast<float> (height) * 0.47f; // a little above the middle
    const float lineWidth = juce::jmax (radius * 0.11f, 3.0f);
    const float angle     = startAngle + proportion * (endAngle - startAngle);

    const auto strokeArc = [&] (float toAngle, juce::Colour colour)
    {
        juce::Path arc;
        arc.addCentredArc (centreX, centreY, radius, radius, 0.0f, startAngle, toAngle, true);
        g.setColour (colour);
        g.strokePath (arc, juce::PathStrokeType (lineWidth, juce::PathStrokeType::curved, juce::PathStrokeType::rounded));
    };

    strokeArc (endAngle, palette::outlineColour);
    strokeArc (angle, palette::accentColour);

    const float bodySize = juce::jmax (2.0f * radius - 2.8f * lineWidth, 0.0f);
    g.setColour (palette::faceColour);
    g.fillEllipse (juce::Rectangle<float> (bodySize, bodySize).withCentre ({ centreX, centreY }));

    const float pointer = radius * 0.46f;
    g.setColour (palette::textColour);
    g.drawLine (centreX, centreY, centreX + std::sin (angle) * pointer, centreY - std::cos (angle) * pointer, 2.0f);
}

} // namespace pulsewright
