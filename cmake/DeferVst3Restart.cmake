# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only

# Ardour 7.3 loads a VST3 preset under the lock of its processing, and takes the same lock again when the plug-in says that
# its parameters have changed. JUCE's wrapper says so from inside the call that brings the state, and Ardour stands still for
# ever. The wrapper is compiled from a copy that says it a moment later. Run after juce_add_plugin.

function (defer_vst3_restart)
    get_target_property (sources juce_audio_plugin_client_VST3 INTERFACE_SOURCES)
    list (FILTER sources INCLUDE REGEX "juce_audio_plugin_client_VST3\\.cpp$")
    list (GET sources 0 original)

    set (at_once "handler->restartComponent (Vst::kParamValuesChanged | Vst::kParamIDMappingChanged)")
    set (later "juce::ignoreUnused (handler), restartLater.triggerAsyncUpdate()")
    set (member "ComponentRestarter componentRestarter { *this };")
    set (members "${member}

    struct RestartLater final : public AsyncUpdater
    {
        explicit RestartLater (JuceVST3EditController& c) : controller (c) {}
        ~RestartLater() override { cancelPendingUpdate(); }
        void handleAsyncUpdate() override { controller.restartComponentOnMessageThread (Vst::kParamValuesChanged | Vst::kParamIDMappingChanged); }
        JuceVST3EditController& controller;
    };

    RestartLater restartLater { *this };")

    file (READ "${original}" text)
    string (FIND "${text}" "${at_once}" has_call)
    string (FIND "${text}" "${member}" has_member)

    if (has_call EQUAL -1 OR has_member EQUAL -1)
        message (WARNING "This JUCE's VST3 wrapper is another one: choosing a preset in Ardour 7.3 may stop it.")
        return()
    endif()

    string (REPLACE "${at_once}" "${later}" text "${text}")
    string (REPLACE "${member}" "${members}" text "${text}")
    set (copy "${CMAKE_CURRENT_BINARY_DIR}/juce-vst3/juce_audio_plugin_client_VST3.cpp")
    file (CONFIGURE OUTPUT "${copy}" CONTENT "${text}" @ONLY)

    get_target_property (all juce_audio_plugin_client_VST3 INTERFACE_SOURCES)
    list (TRANSFORM all REPLACE "^.*/juce_audio_plugin_client_VST3\\.cpp$" "${copy}")
    set_target_properties (juce_audio_plugin_client_VST3 PROPERTIES INTERFACE_SOURCES "${all}")
endfunction()
