// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// What a host project keeps of the plug-in: parameters, lane locks and the seed counter.

#include "PulsewrightAudioProcessor.h"

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
    // A state of ours has some twenty elements and is under two kilobytes. Larger ones are let through as
    // far as parsing them is safe and quick.
    constexpr int largestState         = 1 << 16; // bytes
    constexpr std::ptrdiff_t mostMarks = 256;

    /** Whether the XML parser can be trusted with a text. It calls itself for every level of nesting and
        for every entity, and forgives much that is not XML, so its reading is not guessed at: these
        bounds hold whatever it makes of the text. (Of entities it also searches the whole rest of the text
        for the end.) A state that was saved is plain ASCII, has one header and no markup in its values; one
        that was cut short does not end with a tag. An attribute in base64, which the tree takes for binary,
        says itself how much memory it wants; ours has none.
    */
    bool isSafeToParse (std::string_view text)
    {
        const bool isPlain = std::all_of (text.begin(), text.end(), [] (char c) { return static_cast<unsigned char> (c) < 0x80; });

        const auto lastChar = text.find_last_not_of (" \t\r\n");
        const bool isWhole  = lastChar != text.npos && text[lastChar] == '>';

        return isPlain && isWhole && std::count (text.begin(), text.end(), '<') <= mostMarks
            && std::count (text.begin(), text.end(), '&') <= mostMarks && text.find ("<!") == text.npos && text.find ("<?", 1) == text.npos
            && text.find ("base64:") == text.npos;
    }

    std::unique_ptr<juce::XmlElement> parseState (const void* data, int size)
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

        return juce::AudioProcessor::getXmlFromBinary (data, size);
    }

    /** A decimal number modulo 2^32, with or without a sign; what is no number is 0. */
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

    /** A stored value as a number inside the parameter's range; text that is no number counts as 0. */
    double safeValue (const juce::String& stored, const juce::NormalisableRange<float>& range)
    {
        const auto value = numberFrom (stored);

        return juce::jlimit (static_cast<double> (range.start), static_cast<double> (range.end), std::isnan (value) ? 0.0 : value);
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

            const auto defaultValue = static_cast<double> (ranged->convertFrom0to1 (ranged->getDefaultValue()));

            for (auto child : state)
                if (child[idProperty].toString() == ranged->paramID)
                    child.setProperty (valueProperty,
                                       child.hasProperty (valueProperty) ? safeValue (child[valueProperty].toString(), ranged->getNormalisableRange())
                                                                         : defaultValue,
                                       nullptr);
        }
    }

    /** Whether a state would be taken back once it is saved: writing it out takes more characters than it came with. */
    bool comesBack (const juce::ValueTree& state)
    {
        constexpr std::size_t roomToGrow = 2048; // the counter, the locks, and longer numbers

        const auto text = state.createXml()->toString (juce::XmlElement::TextFormat().singleLine()).toStdString();
        return text.size() + roomToGrow <= static_cast<std::size_t> (largestState) && isSafeToParse (text);
    }

    /** The values of our own parameters alone. @param state  complete */
    juce::ValueTree withoutStrangers (const juce::ValueTree& state, const juce::AudioProcessorValueTreeState& parameters)
    {
        juce::ValueTree ours (state.getType());

        for (const auto* parameter : parameters.processor.getParameters())
            if (const auto* ranged = dynamic_cast<const juce::RangedAudioParameter*> (parameter))
            {
                juce::var value;

                for (const auto& child : state)
                    if (child[idProperty].toString() == ranged->paramID)
                        value = child[valueProperty]; // of several the last, as the parameter tree takes it

                ours.appendChild (juce::ValueTree (parameterType, { { idProperty, ranged->paramID }, { valueProperty, value } }), nullptr);
            }

        return ours;
    }
} // namespace

//==============================================================================
void PulsewrightAudioProcessor::getStateInformation (juce::MemoryBlock& destination)
{
    auto state = parameters.copyState();
    state.setProperty (seedCounterProperty, static_cast<juce::int64> (seedCounter.load()), nullptr);

    for (std::size_t lane = 0; lane < laneLocks.size(); ++lane)
        state.setProperty (lockProperty (lane), laneLocks[lane].load(), nullptr);

    if (const auto xml = state.createXml())
        copyXmlToBinary (*xml, destination);
}

void PulsewrightAudioProcessor::setStateInformation (const void* data, int size)
{
    const auto parsed = parseState (data, size);

    if (parsed == nullptr || parsed->getTagName() != stateType)
        return;

    // The parser lets an attribute stand twice; a tree then reads the first and saves the last. So what is
    // read here is what would be saved.
    const auto xml = juce::ValueTree::fromXml (*parsed).createXml();
    auto state     = juce::ValueTree::fromXml (*xml);
    complete (state, parameters);

    if (! comesBack (state))
        state = withoutStrangers (state, parameters);

    ++restoresUnderway;

    seedCounter = xml->hasAttribute (seedCounterProperty) ? counterFrom (xml->getStringAttribute (seedCounterProperty)) : 1u;

    for (std::size_t lane = 0; lane < laneLocks.size(); ++lane)
        laneLocks[lane] = static_cast<bool> (juce::var (xml->getStringAttribute (lockProperty (lane))));

    parameters.replaceState (state);
    rebuildFromCounter();

    ++restoreCount;
    --restoresUnderway;
}

} // namespace pulsewright
