// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// What JUCE uses of Windows' UI Automation and speech, and MinGW of version 12 lacks. Names and numbers are Windows'.
// Included once, by juce_gui_basics.cpp.

#pragma once

constexpr long UIA_IsReadOnlyAttributeId    = 40015;
constexpr long UIA_CaretPositionAttributeId = 40038;

enum CaretPosition
{
    CaretPosition_Unknown         = 0,
    CaretPosition_EndOfLine       = 1,
    CaretPosition_BeginningOfLine = 2
};

struct ISelectionProvider2 : public ISelectionProvider
{
    virtual HRESULT STDMETHODCALLTYPE get_FirstSelectedItem (IRawElementProviderSimple**)   = 0;
    virtual HRESULT STDMETHODCALLTYPE get_LastSelectedItem (IRawElementProviderSimple**)    = 0;
    virtual HRESULT STDMETHODCALLTYPE get_CurrentSelectedItem (IRawElementProviderSimple**) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_ItemCount (int*)                                  = 0;
};

__CRT_UUID_DECL (ISelectionProvider2, 0x14f68475, 0xee1c, 0x44f6, 0xa8, 0x69, 0xd2, 0x39, 0x38, 0x1f, 0x0f, 0xe7)

// Declared by MinGW's header, but in none of its libraries.
extern "C" const CLSID CLSID_SpVoice { 0x96749377, 0x3391, 0x11d2, { 0x9e, 0xe3, 0x00, 0xc0, 0x4f, 0x79, 0x73, 0x96 } };
