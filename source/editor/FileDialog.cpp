// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "FileDialog.h"

namespace pulsewright
{

namespace
{
    // No one reads a dialog and cancels it faster; a program that cannot start is gone by then.
    constexpr double shortestDialogMs = 500.0;

#if JUCE_LINUX || JUCE_BSD
    bool runs (const juce::String& command)
    {
        constexpr int longestMs = 3000;

        juce::ChildProcess program;

        if (! program.start (command))
            return false;

        if (! program.waitForProcessToFinish (longestMs))
            return program.kill(), false;

        return program.getExitCode() == 0;
    }
#endif

    /** Whether the program that JUCE will start can be started: one whose libraries do not fit takes any time to fail,
        and JUCE does not tell its failure from a dialog that was cancelled.
    */
    bool isPlatformDialogUsable()
    {
#if JUCE_LINUX || JUCE_BSD
        const bool isKde    = juce::SystemStats::getEnvironmentVariable ("KDE_FULL_SESSION", {}).equalsIgnoreCase ("true");
        const bool isZenity = runs ("which zenity") && ! (isKde && runs ("which kdialog"));

        return runs (isZenity ? "zenity --version" : "kdialog --version");
#else
        return juce::FileChooser::isPlatformDialogAvailable();
#endif
    }

    juce::TextEditor* findNameField (juce::Component& component)
    {
        for (auto* child : component.getChildren())
        {
            auto* field = dynamic_cast<juce::TextEditor*> (child);

            if (field == nullptr)
                field = findNameField (*child);

            if (field != nullptr)
                return field;
        }

        return nullptr;
    }

    /** Gives the keyboard to a field as soon as its window can have it. */
    void focusOnce (const juce::Component::SafePointer<juce::Component>& field)
    {
        constexpr int retryMs = 50;

        if (field == nullptr || field->hasKeyboardFocus (true))
            return;

        field->grabKeyboardFocus();
        juce::Timer::callAfterDelay (retryMs, [field] { focusOnce (field); });
    }
} // namespace

juce::File FileDialog::withExtension (const juce::File& chosen, const juce::String& extension)
{
    return chosen.hasFileExtension (extension) ? chosen : chosen.withFileExtension (extension);
}

void FileDialog::ask (Request newRequest, juce::Component& newWindow, std::function<void (const juce::File&)> newChosen)
{
    request = std::move (newRequest);
    window  = &newWindow;
    chosen  = std::move (newChosen);
    open (true);
}

void FileDialog::open (bool platformsOwn)
{
    const auto isPlatforms = platformsOwn && isPlatformDialogUsable();

    // JUCE changes the process's working directory to start the dialog's program: it is the host's.
    const auto workingDirectory = juce::File::getCurrentWorkingDirectory();

    chooser = std::make_unique<juce::FileChooser> (request.title,
                                                   request.suggestion,
                                                   "*" + request.extension,
                                                   isPlatforms,
                                                   false,
                                                   isPlatforms ? nullptr : window.getComponent());
    chooser->launchAsync ((request.isToRead ? juce::FileBrowserComponent::openMode
                                            : juce::FileBrowserComponent::saveMode | juce::FileBrowserComponent::warnAboutOverwriting)
                              | juce::FileBrowserComponent::canSelectFiles,
                          [self = juce::WeakReference (this), isPlatforms] (const juce::FileChooser& c)
                          {
                              if (self != nullptr)
                                  self->finished (c.getResult(), isPlatforms);
                          });

    // JUCE's dialog opens with the keyboard on the folder.
    if (auto* dialog = juce::Component::getCurrentlyModalComponent(); dialog != nullptr && ! isPlatforms)
        focusOnce (findNameField (*dialog));

    openedAtMs = juce::Time::getMillisecondCounterHiRes(); // looking for the program took its time
    workingDirectory.setAsCurrentWorkingDirectory();
}

void FileDialog::finished (const juce::File& file, bool platformsOwn)
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

    if (request.isToRead)
        return chosen (file);

    const auto target = withExtension (file, request.extension);

    if (target == file || ! target.existsAsFile())
        return chosen (target);

    // The dialog asked about the name that was typed, which is not the one that will be written.
    question =
        juce::AlertWindow::showScopedAsync (juce::MessageBoxOptions::makeOptionsOkCancel (juce::MessageBoxIconType::QuestionIcon,
                                                                                          request.title,
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
