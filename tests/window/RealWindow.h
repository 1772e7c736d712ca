// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// A window on a display, and the pointer and the keyboard (xdotool) that drive it.

#pragma once

#include "EditorWindow.h"

#include <gtest/gtest.h>

namespace pulsewright
{

template <typename Condition>
[[nodiscard]] bool comesTrue (Condition&& condition)
{
    for (int i = 0; i < 1000 && ! condition(); ++i)
        runFor (20);

    return condition();
}

/** Runs a program while the window goes on living. */
inline void run (const juce::String& command)
{
    juce::ChildProcess process;
    ASSERT_TRUE (process.start (command)) << command;
    while (process.isRunning())
        runFor (10);
    ASSERT_EQ (process.getExitCode(), 0u) << command;
    runFor (50);
}

class Window : public testing::Test, protected EditorWindow, private juce::MouseListener
{
protected:
    Window()
    {
        editor->addMouseListener (this, true);
        editor->addToDesktop (juce::ComponentPeer::windowIsResizable);
        editor->setTopLeftPosition (60, 60);
        editor->setVisible (true);
        run ("xdotool mousemove 1100 140");
        EXPECT_TRUE (comesTrue ([this] { return editor->isMouseOver (true); })) << "the window is not shown";
    }

    /** Puts the pointer on a control, again whenever the window has moved, and waits until the control has noticed. */
    void pointAt (const juce::String& title, juce::Point<int> offset = {})
    {
        juce::Point<int> aimedAt;
        const auto isOver = [&]
        {
            if (const auto point = find (title).getScreenBounds().getCentre() + offset; point != aimedAt)
            {
                aimedAt = point;
                run ("xdotool mousemove " + juce::String (point.x) + " " + juce::String (point.y));
            }

            return find (title).isMouseOver (true);
        };

        ASSERT_TRUE (comesTrue (isOver)) << title;
    }

    void pressButton() { sendUntilCounted ("xdotool mousedown 1", presses); }
    void releaseButton() { sendUntilCounted ("xdotool mouseup 1", releases); }

    void click (const juce::String& title)
    {
        pointAt (title);
        pressButton();
        releaseButton();
        runFor (100);
    }

    void doubleClick (const juce::String& title, juce::Point<int> offset = {})
    {
        pointAt (title, offset);
        sendUntilCounted ("xdotool click --repeat 2 --delay 40 1", releases, 2);
        runFor (100);
    }

    void press (const juce::String& keys)
    {
        run ("xdotool key --delay 30 " + keys);
        runFor (100);
    }

private:
    void sendUntilCounted (const char* command, const int& events, int times = 1)
    {
        const auto expected = events + times;
        run (command);
        ASSERT_TRUE (comesTrue ([&] { return events >= expected; })) << command;
    }

    void mouseDown (const juce::MouseEvent&) override { ++presses; }
    void mouseUp (const juce::MouseEvent&) override { ++releases; }

    int presses = 0, releases = 0;
};

} // namespace pulsewright
