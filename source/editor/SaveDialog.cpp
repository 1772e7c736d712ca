// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "SaveDialog.h"

#include "export/MidiExport.h"

namespace pulsewright
{

namespace
{
    constexpr const char* dialogTitle = "Save editable MIDI";

    // No one reads a dialog and cancels it faster; a program that cannot start is gone by then.
    constexpr double shortestDialogMs = 500.0;
} // namespace

void SaveDialog::ask (const juce::File& newSuggestion, juce::Component& newWindow, std::function<void (const juce::File&)> newChosen)
{
    suggestion = newSuggestion;
    window     = &newWindow;
    chosen     = std::move (newChosen);
    open (true);
}

void SaveDialog::open (bool platformsOwn)
{
    const auto isPlatforms = platformsOwn && juce::FileChooser::isPlatformDialogAvailable();

    // JUCE changes the process's working directory to start the dialog's program: it is the host's.
    const auto workingDirectory = juce::File::getCurrentWorkingDirectory();

    chooser =
        std::make_unique<juce::FileChooser> (dialogTitle, suggestion, "*.mid", isPlatforms, false, isPlatforms ? nullptr : window.getComponent());
    chooser->launchAsync (juce::FileBrowserComponent::saveMode | juce::FileBrowserComponent::canSelectFiles
                              | juce::FileBrowserComponent::warnAboutOverwriting,
                          [self = juce::WeakReference (this), isPlatforms] (const juce::FileChooser& c)
                          {
                              if (self != nullptr)
                                  self->finished (c.getResult(), isPlatforms);
                          });

    openedAtMs = juce::Time::getMillisecondCounterHiRes(); // looking for the program took its time
    workingDirectory.setAsCurrentWorkingDirectory();
}

void SaveDialog::finished (const juce::File& file, bool platformsOwn)
{
    if (file == juce::File())
    {
        const bool wasNeverSeen = platformsOwn && juce::Time::getMillisecondCounterHiRes() - openedAtMs < shortestDialogMs;

        // Not from inside the chooser that calls this: it is replaced.
        if (wasNeverSeen)
            juce::MessageManager::callAsync (
                [self = juce::WeakReference (this)]
                {
                    if (self != nullptr && self->window != nullptr)
                        self->open (false);
                });

        return;
    }

    const auto target = midiExport::withMidiExtension (file);

    if (target == file || ! target.existsAsFile())
        return chosen (target);

    // The dialog asked about the name that was typed, which is not the one that will be written.
    question =
        juce::AlertWindow::showScopedAsync (juce::MessageBoxOptions::makeOptionsOkCancel (juce::MessageBoxIconType::QuestionIcon,
                                                                                          dialogTitle,
                                                                                          target.getFileName() + " already exists. Replace it?",
                                                                                          "Replace",
                                                                                          "Cancel",
                                                                                          window.getComponent()),
                                            [self = juce::WeakReference (this), target] (int answer)
                                            {
                                                if (answer == 1 && self != nullptr)
                                                    self->chosen (target);
                                            });
}

} // namespace pulsewright
