# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only

# The plug-in. Its static library holds JUCE, compiled once; the wrappers, the tools and the tests link it.

set (PULSEWRIGHT_LV2_URI "urn:tolm:pulsewright") # what hosts know the LV2 by; it never changes

juce_add_plugin (Pulsewright
    PRODUCT_NAME "Pulsewright"
    PLUGIN_NAME "Pulsewright"
    DESCRIPTION "Genre-aware drum song generator"
    COMPANY_NAME "Tolm"
    COMPANY_WEBSITE "${PROJECT_HOMEPAGE_URL}"
    COMPANY_EMAIL "mailto:${PULSEWRIGHT_EMAIL}"
    BUNDLE_ID "com.tolm.pulsewright"
    PLUGIN_MANUFACTURER_CODE Tolm
    PLUGIN_CODE Pwr1
    FORMATS VST3 LV2 Standalone
    LV2URI "${PULSEWRIGHT_LV2_URI}"
    VST3_CATEGORIES Instrument Synth
    IS_SYNTH TRUE
    NEEDS_MIDI_INPUT TRUE
    NEEDS_MIDI_OUTPUT TRUE
    COPY_PLUGIN_AFTER_BUILD FALSE)

target_sources (Pulsewright PRIVATE
    source/processor/BlockPlayer.cpp
    source/processor/BlockPlayer.h
    source/wrappers/GuardedBase64.cpp
    source/wrappers/PluginFilter.cpp
    source/processor/Parameters.cpp
    source/processor/Parameters.h
    source/processor/PulsewrightAudioProcessor.cpp
    source/processor/PulsewrightAudioProcessor.h
    source/processor/SavedState.cpp
    source/processor/SavedState.h
    source/export/MidiExport.cpp
    source/export/MidiExport.h
    source/export/PrivateFolder.cpp
    source/export/PrivateFolder.h
    source/editor/AsciiCase.h
    source/editor/EditorConstruction.cpp
    source/editor/EditorLayout.cpp
    source/editor/EditorLayout.h
    source/editor/FileDialog.cpp
    source/editor/FileDialog.h
    source/editor/FileDrag.cpp
    source/editor/FileDrag.h
    source/editor/HostKeyboard.cpp
    source/editor/HostKeyboard.h
    source/editor/MidiDragButton.cpp
    source/editor/MidiDragButton.h
    source/editor/Palette.h
    source/editor/PatternGrid.cpp
    source/editor/PatternGrid.h
    source/editor/PercentSlider.cpp
    source/editor/PercentSlider.h
    source/editor/PulsewrightAudioProcessorEditor.cpp
    source/editor/PulsewrightAudioProcessorEditor.h
    source/editor/TakeMenu.cpp
    source/editor/TakeMenu.h
    source/editor/Theme.cpp
    source/editor/Theme.h
    source/editor/X11Messages.cpp
    source/editor/X11Messages.h)

# The program that describes the VST3 to its bundle starts in Unicode.
if (MINGW)
    target_link_options (juce_vst3_helper PRIVATE -municode)
endif()

include (DeferVst3Restart)
defer_vst3_restart()

# Debian's JUCE takes the plug-in's name for a URI where the wrappers do not see one in time.
target_compile_definitions (Pulsewright INTERFACE JucePlugin_LV2URI="${PULSEWRIGHT_LV2_URI}")

target_sources (Pulsewright_Standalone PRIVATE
    source/standalone/Settings.cpp
    source/standalone/Settings.h
    source/standalone/StandaloneApp.cpp)
target_compile_definitions (Pulsewright_Standalone PRIVATE JUCE_USE_CUSTOM_PLUGIN_STANDALONE_APP=1)

# Warnings are for our files alone: the same target also compiles JUCE's modules.
get_target_property (pulsewright_sources Pulsewright SOURCES)
list (APPEND pulsewright_sources source/standalone/Settings.cpp source/standalone/StandaloneApp.cpp)
list (FILTER pulsewright_sources INCLUDE REGEX "^(source/|${CMAKE_CURRENT_SOURCE_DIR}/source/).*\\.cpp$")
set_source_files_properties (${pulsewright_sources} PROPERTIES
    COMPILE_OPTIONS "$<TARGET_PROPERTY:pulsewright_warnings,INTERFACE_COMPILE_OPTIONS>")

target_compile_definitions (Pulsewright PUBLIC
    JUCE_JACK=$<PLATFORM_ID:Linux> # opened at run time, by the standalone app alone
    JUCE_MODAL_LOOPS_PERMITTED=1 # tools and tests run the message loop for a while
    JUCE_PLUGINHOST_VST3=1 # for the offline host and the tests
    JUCE_REPORT_APP_USAGE=0
    JUCE_STRICT_REFCOUNTEDPOINTER=1
    JUCE_USE_CURL=0
    JUCE_USE_FLAC=0
    JUCE_USE_OGGVORBIS=0
    JUCE_USE_WINDOWS_MEDIA_FORMAT=0
    JUCE_VST3_CAN_REPLACE_VST2=0
    JUCE_WEB_BROWSER=0)

target_link_libraries (Pulsewright
    PRIVATE
        juce::juce_audio_utils
        juce::juce_recommended_config_flags
    PUBLIC
        pulsewright_export
        pulsewright_kit
        pulsewright_playback
        pulsewright_preset
        pulsewright_session)

# For tools and tests: the library, with the headers and the definitions that it was built with. The
# modules are not compiled again. (The wrappers bring definitions of their own and link it as it is.)
add_library (pulsewright_plugin INTERFACE)
target_link_libraries (pulsewright_plugin INTERFACE Pulsewright)
target_include_directories (pulsewright_plugin SYSTEM INTERFACE
    $<TARGET_PROPERTY:Pulsewright,INCLUDE_DIRECTORIES>)
target_compile_definitions (pulsewright_plugin INTERFACE
    $<TARGET_PROPERTY:Pulsewright,COMPILE_DEFINITIONS>)

set (PULSEWRIGHT_BUNDLE "$<TARGET_FILE_DIR:Pulsewright_VST3>/../..")
set (PULSEWRIGHT_LV2_BUNDLE "$<TARGET_FILE_DIR:Pulsewright_LV2>")

add_custom_command (TARGET Pulsewright_LV2 POST_BUILD
    COMMAND "${CMAKE_COMMAND}" "-DBUNDLE=${PULSEWRIGHT_LV2_BUNDLE}" -DLICENCE=https://www.gnu.org/licenses/agpl-3.0.html
            -P "${CMAKE_CURRENT_SOURCE_DIR}/cmake/MendLv2Turtle.cmake"
    COMMAND pulsewright-factory-presets lv2 "${PULSEWRIGHT_LV2_BUNDLE}"
    VERBATIM)

# Modules show their entry points alone: symbols of the standard library would be shared with other plug-ins' in a host.
if (CMAKE_SYSTEM_NAME STREQUAL "Linux")
    foreach (format VST3 LV2)
        set (map "${CMAKE_CURRENT_SOURCE_DIR}/cmake/${format}.map")
        target_link_options (Pulsewright_${format} PRIVATE "LINKER:--version-script=${map}")
        set_property (TARGET Pulsewright_${format} APPEND PROPERTY LINK_DEPENDS "${map}")
    endforeach()
endif()

# The wrappers that read a state as text do so by way of GuardedBase64.cpp. Linkers of other systems know no --wrap:
# there JUCE's function is called as it is.
if (CMAKE_SYSTEM_NAME MATCHES "Linux|BSD")
    foreach (format LV2 Standalone)
        target_link_options (Pulsewright_${format} PRIVATE "LINKER:--wrap=_ZN4juce11MemoryBlock18fromBase64EncodingENS_9StringRefE")
    endforeach()
endif()
