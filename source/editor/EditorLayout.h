// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Where everything in the window lies: a pure function of the window's size.

#pragma once

#include <juce_graphics/juce_graphics.h>

#include <array>

namespace pulsewright
{

/** Bounds in pixels. The header, panels, rows and buttons have fixed heights; what is wider or taller
    goes to the macros and to the grid. Nothing has a negative size in a window that is too small.
*/
struct EditorLayout
{
    static constexpr int minWidth = 900, minHeight = 720;
    static constexpr int initialWidth = 1120, initialHeight = 840;
    static constexpr int maxWidth = 1500, maxHeight = 1050;

    // What the panels are painted by; the controls lie inside.
    static constexpr int margin = 20, headerHeight = 52, headerGap = 18;
    static constexpr int panelHeight = 360, formPanelWidth = 250, panelGap = 16;

    /** The boxes down the left column. */
    enum Box : std::size_t
    {
        style,
        kit,
        playback,
        length,
        structure,
        duration,
        numBoxes
    };

    static constexpr std::size_t numMacros = 8, numLanes = 4, numSections = 8;

    using Bounds = juce::Rectangle<int>;

    struct Captioned
    {
        Bounds caption, control;
    };

    /** @param visibleSections  1 to 8; the section row is shared out between them */
    EditorLayout (int width, int height, int visibleSections);

    Bounds brand, title, subtitle, status;

    std::array<Captioned, numBoxes> boxes;
    Bounds generateButton, buildSongButton, previewButton;

    std::array<Captioned, numMacros> macros;
    std::array<Captioned, numLanes> lanes; ///< the lock button above its probability
    Bounds mutateButton, newFillButton;

    std::array<Bounds, numSections> sections; ///< empty from visibleSections on

    Bounds saveButton, patternDragButton, songDragButton;
    Bounds grid;

private:
    void placeHeader (Bounds area);
    void placeForm (Bounds area);
    void placeMacros (Bounds area);
    void placeLanes (Bounds area);
    void placeSections (Bounds area, int visibleSections);
    void placeExports (Bounds area);
};

} // namespace pulsewright
