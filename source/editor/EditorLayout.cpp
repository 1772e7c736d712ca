// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "EditorLayout.h"

namespace pulsewright
{

namespace
{
    using Bounds = EditorLayout::Bounds;

    /** Shrinks on all sides and never beyond nothing. */
    Bounds shrunk (Bounds area, int horizontally, int vertically)
    {
        return { area.getX() + horizontally,
                 area.getY() + vertically,
                 juce::jmax (0, area.getWidth() - 2 * horizontally),
                 juce::jmax (0, area.getHeight() - 2 * vertically) };
    }

    EditorLayout::Captioned captioned (Bounds& column, int captionHeight, int controlHeight, int gap)
    {
        // One after the other, from the top down.
        const auto caption = column.removeFromTop (captionHeight);
        const auto control = column.removeFromTop (controlHeight);
        column.removeFromTop (gap);
        return { caption, control };
    }
} // namespace

EditorLayout::EditorLayout (int width, int height, int visibleSections)
{
    auto area = shrunk ({ width, height }, 20, 20);

    auto header = area.removeFromTop (52);
    brand       = shrunk (header.removeFromLeft (58), 0, 12);
    header.removeFromLeft (10);
    title    = header.removeFromLeft (220);
    subtitle = shrunk (header.removeFromLeft (270), 0, 8);
    status   = header;

    area.removeFromTop (18);

    auto panel  = area.removeFromTop (360);
    auto column = shrunk (panel.removeFromLeft (250), 16, 13);
    style       = captioned (column, 15, 28, 3);
    kit         = captioned (column, 14, 25, 3);
    playback    = captioned (column, 15, 26, 3);
    length      = captioned (column, 14, 25, 3);
    structure   = captioned (column, 14, 25, 3);
    duration    = captioned (column, 14, 25, 3);

    auto generation = column.removeFromTop (31);
    generateButton  = generation.removeFromLeft (juce::jmax (0, generation.getWidth() - 5) / 2);
    generation.removeFromLeft (5);
    buildSongButton = generation;
    column.removeFromTop (4);
    previewButton = column.removeFromTop (30);

    panel.removeFromLeft (16);
    auto macroArea       = shrunk (panel, 10, 9);
    const int macroWidth = macroArea.getWidth() / static_cast<int> (numMacros);

    for (std::size_t i = 0; i < numMacros; ++i)
    {
        auto cell         = i == numMacros - 1 ? macroArea : macroArea.removeFromLeft (macroWidth);
        macros[i].caption = cell.removeFromTop (24);
        macros[i].control = shrunk (cell, 2, 0);
    }

    area.removeFromTop (15);

    auto laneRow = area.removeFromTop (52);

    for (auto& lane : lanes)
    {
        auto cell    = laneRow.removeFromLeft (128);
        lane.caption = cell.removeFromTop (26);
        lane.control = shrunk (cell, 3, 0);
    }

    laneRow.removeFromLeft (12);
    mutateButton = laneRow.removeFromLeft (105);
    laneRow.removeFromLeft (8);
    newFillButton = laneRow.removeFromLeft (105);

    area.removeFromTop (10);

    auto sectionRow        = area.removeFromTop (31);
    const int sectionCount = juce::jlimit (1, static_cast<int> (numSections), visibleSections);
    const int sectionWidth = sectionRow.getWidth() / sectionCount;

    for (int i = 0; i < sectionCount; ++i)
    {
        const auto cell                        = i == sectionCount - 1 ? sectionRow : sectionRow.removeFromLeft (sectionWidth);
        sections[static_cast<std::size_t> (i)] = shrunk (cell, 3, 0);
    }

    area.removeFromTop (10);

    auto bottom = area.removeFromBottom (40);
    saveButton  = bottom.removeFromLeft (170);
    bottom.removeFromLeft (8);
    patternDragButton = bottom.removeFromLeft (180);
    bottom.removeFromLeft (8);
    songDragButton = bottom.removeFromLeft (190);

    area.removeFromBottom (10);
    grid = area;
}

} // namespace pulsewright
