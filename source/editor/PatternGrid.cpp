// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "PatternGrid.h"

#include "AsciiCase.h"
#include "Palette.h"

#include <algorithm>
#include <array>

namespace pulsewright
{

namespace
{
    constexpr float cornerSize = 9.0f;

    const std::array<juce::Colour, laneCount> laneColours {
        palette::accentColour, palette::snareColour, palette::secondaryAccentColour, palette::percColour
    };

    juce::Font fontOf (float height, int style)
    {
        return juce::Font (juce::FontOptions (height, style));
    }

    juce::String toString (std::string_view text)
    {
        return juce::String::fromUTF8 (text.data(), static_cast<int> (text.size()));
    }
} // namespace

/** Where things lie, in pixels. */
struct PatternGrid::Geometry
{
    explicit Geometry (const juce::Component& grid) : width (static_cast<float> (grid.getWidth())), height (static_cast<float> (grid.getHeight())) {}

    const float width, height;
    const float headerHeight = std::min (height, 35.0f);
    const float labelWidth   = std::min (width, 66.0f);
    const float left         = labelWidth + 10.0f;
    const float gridWidth    = std::max (width - labelWidth - 20.0f, 0.0f);
    const float top          = headerHeight + 8.0f;
    const float gridHeight   = std::max (height - headerHeight - 16.0f, 0.0f);
    const float rowHeight    = gridHeight * 0.25f;

    float rowTop (std::uint32_t lane) const noexcept { return static_cast<float> (lane) * rowHeight + top; }
};

PatternGrid::PatternGrid()
{
    setInterceptsMouseClicks (false, false);
    setTitle ("Pattern");
}

void PatternGrid::setPattern (DrumPattern newPattern)
{
    pattern = std::move (newPattern);
    setDescription (title() + ", " + lowerCased (counts()));
    repaint();
}

juce::String PatternGrid::title() const
{
    return pattern.name.empty() ? juce::String ("CURRENT PATTERN") : toString (pattern.name);
}

juce::String PatternGrid::counts() const
{
    return juce::String (pattern.bars) + " BARS  /  " + juce::String (static_cast<int> (pattern.hits.size())) + " NOTES";
}

void PatternGrid::paint (juce::Graphics& g)
{
    const Geometry geometry (*this);

    g.setColour (palette::panelColour);
    g.fillRoundedRectangle (getLocalBounds().toFloat(), cornerSize);
    g.setColour (palette::outlineColour);
    g.drawRoundedRectangle (0.5f, 0.5f, std::max (geometry.width - 1.0f, 0.0f), std::max (geometry.height - 1.0f, 0.0f), cornerSize, 1.0f);

    paintHeader (g, geometry);
    paintRows (g, geometry);
    paintColumns (g, geometry);
    paintHits (g, geometry);
}

void PatternGrid::paintHeader (juce::Graphics& g, const Geometry& geometry) const
{
    const juce::Rectangle<float> area (14.0f, 0.0f, std::max (geometry.width - 28.0f, 0.0f), geometry.headerHeight);

    g.setColour (palette::textColour);
    g.setFont (fontOf (15.0f, juce::Font::bold));
    g.drawText (title(), area, juce::Justification::centredLeft, true);

    g.setColour (palette::mutedTextColour);
    g.setFont (fontOf (11.0f, juce::Font::plain));
    g.drawText (counts(), area, juce::Justification::centredRight, true);
}

void PatternGrid::paintRows (juce::Graphics& g, const Geometry& geometry) const
{
    g.setFont (fontOf (11.0f, juce::Font::bold));

    for (std::uint32_t lane = 0; lane < laneCount; ++lane)
    {
        const float y = geometry.rowTop (lane);

        g.setColour (palette::faceColour.withAlpha (static_cast<juce::uint8> (lane % 2 == 0 ? 0x8c : 0x4c)));
        g.fillRect (juce::Rectangle<float> (geometry.left, y, geometry.gridWidth, std::max (geometry.rowHeight - 1.0f, 0.0f)));

        g.setColour (laneColours[lane]);
        g.drawText (toString (nameOf (static_cast<DrumLane> (lane))),
                    10,
                    static_cast<int> (y),
                    static_cast<int> (geometry.labelWidth - 10.0f),
                    static_cast<int> (geometry.rowHeight),
                    juce::Justification::centredLeft,
                    true);
    }
}

void PatternGrid::paintColumns (juce::Graphics& g, const Geometry& geometry) const
{
    if (! (geometry.gridHeight > 0.0f))
        return;

    const int columns        = std::max (pattern.bars * 16, 16);
    const auto barLine       = palette::mutedTextColour.withAlpha (static_cast<juce::uint8> (0x7a));
    const auto beatLine      = palette::outlineColour.brighter (0.15f);
    const auto sixteenthLine = palette::outlineColour.withAlpha (static_cast<juce::uint8> (0x61));

    for (int i = 0; i <= columns; ++i)
    {
        const auto x = static_cast<int> (static_cast<float> (i) * geometry.gridWidth / static_cast<float> (columns) + geometry.left);

        g.setColour (i % 16 == 0 ? barLine : i % 4 == 0 ? beatLine : sixteenthLine);
        g.fillRect (juce::Rectangle<float> (static_cast<float> (x), geometry.top, 1.0f, geometry.gridHeight));
    }
}

void PatternGrid::paintHits (juce::Graphics& g, const Geometry& geometry) const
{
    const auto beats = static_cast<double> (std::max (pattern.bars * beatsPerBar, 1));

    for (const auto& hit : pattern.hits)
    {
        const auto lane = static_cast<std::uint32_t> (hit.lane);

        if (lane >= laneCount)
            continue;

        const float loudness = static_cast<float> (hit.velocity) / 127.0f;
        const float size     = loudness * 5.0f + 5.0f;
        const float opacity  = loudness * 0.52f + 0.48f;
        const auto alpha     = static_cast<juce::uint8> (juce::roundToInt (juce::jlimit (0.0f, 1.0f, opacity) * 255.0f));
        const juce::Point centre (static_cast<float> (hit.start / beats) * geometry.gridWidth + geometry.left,
                                  geometry.rowTop (lane) + geometry.rowHeight * 0.5f);

        g.setColour (laneColours[lane].withAlpha (alpha));
        g.fillRoundedRectangle (juce::Rectangle<float> (size, size).withCentre (centre), 2.0f);
    }
}

} // namespace pulsewright
