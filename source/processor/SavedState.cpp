// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "SavedState.h"

#include "Parameters.h"

#include "preset/UntrustedText.h"

#include <algorithm>
#include <cmath>
#include <string_view>

namespace pulsewright
{

namespace
{
    // As the parameter tree writes its children.
    const juce::Identifier parameterType { "PARAM" };
    const juce::Identifier idProperty { "id" };
    const juce::Identifier valueProperty { "value" };

    const juce::Identifier seedCounterProperty { "seedCounter" };

    juce::Identifier lockProperty (std::size_t lane)
    {
        return "lock" + juce::String (static_cast<int> (lane));
    }

    //==============================================================================
    // A state of ours is under two kilobytes. Larger ones are let through as far as parsing them is safe and quick.
    constexpr int largestState = 1 << 16; // bytes

    /** @returns the element, or null where the bytes hold none of ours that is safe to parse */
    std::unique_ptr<juce::XmlElement> parse (const void* data, int size)
    {
        constexpr int headerSize = 8; // a magic number and the length of the text

        if (data == nullptr || size <= headerSize || size > largestState)
            return {};

        const auto* bytes     = static_cast<const char*> (data);
        const auto textLength = static_cast<int> (juce::ByteOrder::littleEndianInt (bytes + 4));

        if (textLength <= 0)
            return {};

        const std::string_view text (bytes + headerSize, static_cast<std::size_t> (std::min (size - headerSize, textLength)));

        if (! isSafeToParse (text.substr (0, text.find ('\0'))))
            return {};

        auto xml = juce::AudioProcessor::getXmlFromBinary (data, size);
        return xml != nullptr && xml->getTagName() == SavedState::type ? std::move (xml) : nullptr;
    }

    /** The parser lets an attribute stand twice, and a tree would read the first and save the last. */
    void keepLastOfEachAttribute (juce::XmlElement& element)
    {
        juce::NamedValueSet last;

        for (int i = 0; i < element.getNumAttributes(); ++i)
            last.set (element.getAttributeName (i), element.getAttributeValue (i));

        element.removeAllAttributes();

        for (const auto& [name, value] : last)
            element.setAttribute (name, value.toString());

        for (auto* child : element.getChildIterator())
            if (! child->isTextElement())
                keepLastOfEachAttribute (*child);
    }

    /** A decimal number modulo 2^32, with or without a sign; 0 where there is none. Not JUCE's reading, which takes no
        "+" and overflows on the smallest 64-bit number.
    */
    std::uint32_t counterFrom (const juce::String& text)
    {
        const auto trimmed    = text.trimStart();
        auto digit            = trimmed.getCharPointer();
        const bool isNegative = *digit == '-';

        if (*digit == '-' || *digit == '+')
            ++digit;

        std::uint32_t counter = 0;

        for (; *digit >= '0' && *digit <= '9'; ++digit)
            counter = counter * 10 + static_cast<std::uint32_t> (*digit - '0');

        return isNegative ? 0u - counter : counter;
    }

    /** A stored value as the float that the parameter would hold, inside its range; text without a number counts as 0. JUCE
        does not read the last digits of a small double that it has written: the saved text would change with a restore.
    */
    float safeValue (const juce::String& stored, const juce::NormalisableRange<float>& range)
    {
        const auto value = numberFrom (stored);

        return static_cast<float> (
            juce::jlimit (static_cast<double> (range.start), static_cast<double> (range.end), std::isnan (value) ? 0.0 : value));
    }

    /** Makes every parameter's stored value safe and gives those that are missing their defaults. What a
        later version has stored besides stays where it is.
    */
    void complete (juce::ValueTree state, const juce::AudioProcessorValueTreeState& parameters)
    {
        for (auto* parameter : parameters.processor.getParameters())
        {
            const auto* ranged = dynamic_cast<juce::RangedAudioParameter*> (parameter);

            if (ranged == nullptr)
                continue;

            if (! state.getChildWithProperty (idProperty, ranged->paramID).isValid())
                state.appendChild (juce::ValueTree (parameterType, { { idProperty, ranged->paramID } }), nullptr);

            const auto defaultValue = ranged->convertFrom0to1 (ranged->getDefaultValue());

            for (auto child : state)
                if (child[idProperty].toString() == ranged->paramID)
                    child.setProperty (valueProperty,
                                       child.hasProperty (valueProperty) ? safeValue (child[valueProperty].toString(), ranged->getNormalisableRange())
                                                                         : defaultValue,
                                       nullptr);
        }
    }

    /** Whether a state would be taken back once it is saved: writing it out takes more characters than it came with. */
    bool isRestorable (const juce::ValueTree& state)
    {
        constexpr std::size_t roomToGrow = 2048; // the counter, the locks, and longer numbers

        const auto text = state.createXml()->toString (juce::XmlElement::TextFormat().singleLine()).toStdString();
        return text.size() + roomToGrow <= static_cast<std::size_t> (largestState) && isSafeToParse (text);
    }

    /** The values of our own parameters alone. @param state  complete */
    juce::ValueTree ownParametersOnly (const juce::ValueTree& state, const juce::AudioProcessorValueTreeState& parameters)
    {
        juce::ValueTree own (state.getType());

        for (const auto* parameter : parameters.processor.getParameters())
            if (const auto* ranged = dynamic_cast<const juce::RangedAudioParameter*> (parameter))
            {
                juce::var value;

                for (const auto& child : state)
                    if (child[idProperty].toString() == ranged->paramID)
                        value = child[valueProperty]; // of several the last, as the parameter tree takes it

                own.appendChild (juce::ValueTree (parameterType, { { idProperty, ranged->paramID }, { valueProperty, value } }), nullptr);
            }

        return own;
    }
} // namespace

//==============================================================================
std::optional<SavedState> SavedState::read (const void* data, int size, const juce::AudioProcessorValueTreeState& layout)
{
    const auto xml = parse (data, size);

    if (xml == nullptr)
        return {};

    keepLastOfEachAttribute (*xml);

    SavedState state;
    state.parameters = juce::ValueTree::fromXml (*xml);
    complete (state.parameters, layout);

    if (! isRestorable (state.parameters))
        state.parameters = ownParametersOnly (state.parameters, layout);

    if (xml->hasAttribute (seedCounterProperty))
        state.seedCounter = counterFrom (xml->getStringAttribute (seedCounterProperty));

    for (std::size_t lane = 0; lane < state.locks.size(); ++lane)
        state.locks[lane] = static_cast<bool> (juce::var (xml->getStringAttribute (lockProperty (lane))));

    return state;
}

bool SavedState::isReadable (const void* data, int size)
{
    return parse (data, size) != nullptr;
}

void SavedState::write (juce::MemoryBlock& destination) const
{
    auto state = parameters.createCopy();
    state.setProperty (seedCounterProperty, static_cast<juce::int64> (seedCounter), nullptr);

    for (std::size_t lane = 0; lane < locks.size(); ++lane)
        state.setProperty (lockProperty (lane), locks[lane], nullptr);

    if (const auto xml = state.createXml())
        juce::AudioProcessor::copyXmlToBinary (*xml, destination);
}

} // namespace pulsewright
