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
    auto area = shrunk ({ width, height }, margin, margin);

    placeHeader (area.removeFromTop (headerHeight));
    area.removeFromTop (headerGap);

    auto panels = area.removeFromTop (panelHeight);
    placeForm (shrunk (panels.removeFromLeft (formPanelWidth), 16, 13));
    panels.removeFromLeft (panelGap);
    placeMacros (shrunk (panels, 10, 9));
    area.removeFromTop (15);

    placeLanes (area.removeFromTop (52));
    area.removeFromTop (10);

    placeSections (area.removeFromTop (31), visibleSections);
    area.removeFromTop (10);

    placeExports (area.removeFromBottom (40));
    area.removeFromBottom (10);
    grid = area;
}

void EditorLayout::placeHeader (Bounds area)
{
    brand = shrunk (area.removeFromLeft (58), 0, 12);
    area.removeFromLeft (10);
    title    = area.removeFromLeft (220);
    subtitle = shrunk (area.removeFromLeft (270), 0, 8);
    status   = area;
}

void EditorLayout::placeForm (Bounds area)
{
    boxes[style]     = captioned (area, 15, 28, 3);
    boxes[kit]       = captioned (area, 14, 25, 3);
    boxes[playback]  = captioned (area, 15, 26, 3);
    boxes[length]    = captioned (area, 14, 25, 3);
    boxes[structure] = captioned (area, 14, 25, 3);
    boxes[duration]  = captioned (area, 14, 25, 3);

    auto generation = area.removeFromTop (31);
    generateButton  = generation.removeFromLeft (juce::jmax (0, generation.getWidth() - 5) / 2);
    generation.removeFromLeft (5);
    buildSongButton = generation;
    area.removeFromTop (4);
    previewButton = area.removeFromTop (30);
}

void EditorLayout::placeMacros (Bounds area)
{
    const int macroWidth = area.getWidth() / static_cast<int> (numMacros);

    for (std::size_t i = 0; i < numMacros; ++i)
    {
        auto cell         = i == numMacros - 1 ? area : area.removeFromLeft (macroWidth);
        macros[i].caption = cell.removeFromTop (24);
        macros[i].control = shrunk (cell, 2, 0);
    }
}

void EditorLayout::placeLanes (Bounds area)
{
    for (auto& lane : lanes)
    {
        auto cell    = area.removeFromLeft (128);
        lane.caption = cell.removeFromTop (26);
        lane.control = shrunk (cell, 3, 0);
    }

    area.removeFromLeft (12);
    mutateButton = area.removeFromLeft (105);
    area.removeFromLeft (8);
    newFillButton = area.removeFromLeft (105);
}

void EditorLayout::placeSections (Bounds area, int visibleSections)
{
    const int count = juce::jlimit (1, static_cast<int> (numSections), visibleSections);
    const int width = area.getWidth() / count;

    for (int i = 0; i < count; ++i)
    {
        const auto cell                        = i == count - 1 ? area : area.removeFromLeft (width);
        sections[static_cast<std::size_t> (i)] = shrunk (cell, 3, 0);
    }
}

void EditorLayout::placeExports (Bounds area)
{
    saveButton = area.removeFromLeft (170);
    area.removeFromLeft (8);
    patternDragButton = area.removeFromLeft (180);
    area.removeFromLeft (8);
    songDragButton = area.removeFromLeft (190);
}

} // namespace pulsewright
