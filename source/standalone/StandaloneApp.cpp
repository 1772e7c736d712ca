// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The app around the plug-in: JUCE's window, audio device and MIDI ports, and the manners of a program that is
// started from a shell.

#include "Settings.h"

#include "editor/X11Messages.h"

#include <juce_audio_plugin_client/juce_audio_plugin_client.h>
#include <juce_audio_utils/juce_audio_utils.h>

#include <juce_audio_plugin_client/Standalone/juce_StandaloneFilterWindow.h>
#include <juce_audio_plugin_client/detail/juce_CheckSettingMacros.h>

#include <array>
#include <atomic>
#include <cstdio>

#if JUCE_LINUX
#include <alsa/asoundlib.h>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <unistd.h>
#endif

namespace pulsewright
{

namespace
{
    constexpr const char* usage = "usage: pulsewright [--help | --version]\n"
                                  "\n"
                                  "Opens the window of Pulsewright, a genre-aware drum song generator, without a host.\n"
                                  "pulsewright-cli makes the same music without a window.\n";

    void say (const juce::String& message)
    {
        std::fputs (("pulsewright: " + message + "\n").toRawUTF8(), stderr);
    }

    /** Keeps a window's place on the screen; where it does not fit, its title bar. */
    juce::Point<int> placeOnScreen (juce::Rectangle<int> window)
    {
        const auto screen = juce::Desktop::getInstance().getDisplays().getDisplayForRect (window)->userArea;
        const auto last   = screen.getBottomRight() - juce::Point<int> (window.getWidth(), window.getHeight());

        return { juce::jmax (screen.getX(), juce::jmin (window.getX(), last.x)), juce::jmax (screen.getY(), juce::jmin (window.getY(), last.y)) };
    }

    /** JUCE's window shows itself while it is being made and changes its size then. When it is painted first, it also
        sends its bounds to the window manager once more; they may be those of a moment at which the manager was still
        placing it, so that now and then it ended up in a corner, or shrunk. So it is opened again, once it has its
        size, and painted before it is shown.
    */
    void openAgain (juce::TopLevelWindow& window)
    {
        window.removeFromDesktop();
        window.setTopLeftPosition (placeOnScreen (window.getBounds()));
        window.addToDesktop();

        if (auto* peer = window.getPeer())
        {
            peer->repaint (window.getLocalBounds());
            peer->performAnyPendingRepaintsNow();
        }

        window.setVisible (true);
    }

#if JUCE_LINUX
    // NOLINTNEXTLINE(cert-dcl50-cpp): as the library calls it
    void ignoreAlsaError (const char*, int, const char*, int, const char*, ...)
    {}

    void ignoreJackMessage (const char*)
    {}

    /** A machine without a sound card or a JACK server is told so once, not line by line by their libraries.
        JUCE opens JACK's by this name when it is there, and this keeps it open.
    */
    void silenceSoundLibraries()
    {
        snd_lib_error_set_handler (ignoreAlsaError);

        static juce::DynamicLibrary jack ("libjack.so.0");
        using SetHandler = void (*) (void (*) (const char*));

        for (const auto* name : { "jack_set_error_function", "jack_set_info_function" })
            if (auto* set = reinterpret_cast<SetHandler> (jack.getFunction (name)))
                set (ignoreJackMessage);
    }

    std::array<int, 2> signalPipe {};

    std::int64_t secondsSinceBoot()
    {
        timespec now {};
        clock_gettime (CLOCK_MONOTONIC, &now);
        return now.tv_sec;
    }

    void passSignalOn (int signal)
    {
        // A terminal that closes sends SIGHUP, and its shell sends one more: these are one.
        constexpr int atOnce = 2; // seconds
        static std::atomic<std::int64_t> first { 0 };
        static_assert (std::atomic<std::int64_t>::is_always_lock_free);

        const auto error = errno;
        auto before      = std::int64_t { 0 };
        const auto now   = secondsSinceBoot();

        if (! first.compare_exchange_strong (before, now) && now - before >= atOnce)
        {
            std::signal (signal, SIG_DFL);
            std::raise (signal);
        }

        [[maybe_unused]] const auto result = write (signalPipe[1], "", 1);
        errno                              = error;
    }

    void quitWhenTold (int pipe)
    {
        char byte = 0;

        if (auto* app = juce::JUCEApplicationBase::getInstance(); app != nullptr && read (pipe, &byte, 1) == 1)
            app->systemRequestedQuit();
    }

    /** SIGTERM and its like close the app as its window's button does. One that comes seconds later ends it at once. */
    void quitOnSignals()
    {
        if (pipe2 (signalPipe.data(), O_CLOEXEC | O_NONBLOCK) != 0)
            return;

        juce::LinuxEventLoop::registerFdCallback (signalPipe[0], quitWhenTold);

        struct sigaction action = {}, before = {};
        action.sa_handler = passSignalOn;
        action.sa_flags   = SA_RESTART;

        for (const int signal : { SIGHUP, SIGINT, SIGTERM })
            if (sigaction (signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN) // as under nohup
                sigaction (signal, &action, nullptr);
    }
#endif
} // namespace

class StandaloneApp final : public juce::JUCEApplication, private juce::ChangeListener, private juce::Timer
{
public:
    StandaloneApp() { settings.setStorageParameters (settingsOptions()); }

    const juce::String getApplicationName() override { return JucePlugin_Name; }             // NOLINT(readability-const-return-type): as in JUCE
    const juce::String getApplicationVersion() override { return JucePlugin_VersionString; } // NOLINT(readability-const-return-type)
    bool moreThanOneInstanceAllowed() override { return true; }

    void initialise (const juce::String&) override
    {
        const auto arguments = getCommandLineParameterArray();

        if (arguments.size() == 1 && arguments[0] == "--version")
            return leave (stdout, "Pulsewright " JucePlugin_VersionString "\n", 0);

        if (arguments.size() == 1 && (arguments[0] == "--help" || arguments[0] == "-h"))
            return leave (stdout, usage, 0);

        if (! arguments.isEmpty())
            return leave (stderr, usage, 2);

        if (juce::Desktop::getInstance().getDisplays().displays.isEmpty())
            return leave (stderr, "pulsewright: There is no display to open a window on.\n", 1);

#if JUCE_LINUX
        std::signal (SIGPIPE, SIG_IGN); // nobody may be reading what is said
#endif

        if (! openSettings())
            return leave (stderr, "", 1);

#if JUCE_LINUX
        silenceSoundLibraries();
        quitOnSignals();
#endif
        prepareX11Connection();

        window = std::make_unique<juce::StandaloneFilterWindow> (
            getApplicationName(),
            juce::LookAndFeel::getDefaultLookAndFeel().findColour (juce::ResizableWindow::backgroundColourId),
            std::make_unique<juce::StandalonePluginHolder> (settings.getUserSettings(), false));
        openAgain (*window);

        window->getDeviceManager().addChangeListener (this);
        nameWindow();
        startTimer (millisecondsBetweenSaves);

        if (! hasSoundDevice())
            say ("There is no sound device: nothing plays. Options, Audio/MIDI Settings chooses one.");
    }

    void shutdown() override
    {
        if (window == nullptr)
            return;

        stopTimer();
        window->getDeviceManager().removeChangeListener (this);
        window->pluginHolder->savePluginState();
        window.reset();

        if (! settings.saveIfNeeded())
            sayNotSaved();
    }

    void systemRequestedQuit() override
    {
        // An open box or dialog closes first; what waits for its answer may still use the window.
        if (juce::ModalComponentManager::getInstance()->cancelAllModalComponents())
            juce::Timer::callAfterDelay (100,
                                         []
                                         {
                                             if (auto* app = getInstance())
                                                 app->systemRequestedQuit();
                                         });
        else
            quit();
    }

private:
    static constexpr int millisecondsBetweenSaves = 3000;

    /** What is new is written now, in case the app is killed. */
    void timerCallback() override
    {
        window->pluginHolder->savePluginState();
    }
    void changeListenerCallback (juce::ChangeBroadcaster*) override
    {
        nameWindow();
    }
    bool hasSoundDevice() const
    {
        return window->getDeviceManager().getCurrentAudioDevice() != nullptr;
    }
    void nameWindow()
    {
        window->setName (getApplicationName() + (hasSoundDevice() ? "" : ": no sound device"));
    }

    /** Reads the settings and writes them again: whether they can be kept is said now, not when it is too late.
        @returns false where they cannot be used
    */
    bool openSettings()
    {
        const auto [message, isUsable] = prepareSettings (settingsOptions().getDefaultFile());

        if (message.isNotEmpty())
            say (message);

        if (isUsable && ! settings.getUserSettings()->save())
            sayNotSaved();

        return isUsable;
    }

    void sayNotSaved()
    {
        say ("The settings cannot be written to " + settings.getUserSettings()->getFile().getFullPathName() + ": changes will be lost on exit.");
    }

    void leave (std::FILE* stream, const char* text, int status)
    {
        std::fputs (text, stream);
        setApplicationReturnValue (status);
        quit();
    }

    juce::ApplicationProperties settings;
    std::unique_ptr<juce::StandaloneFilterWindow> window;
};

} // namespace pulsewright

juce::JUCEApplicationBase* juce_CreateApplication(); // NOLINT(readability-identifier-naming): JUCE calls it by this name

juce::JUCEApplicationBase* juce_CreateApplication()
{
    return new pulsewright::StandaloneApp();
}
