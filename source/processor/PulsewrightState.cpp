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
    // A state of ours is two elements deep and under two kilobytes. Larger ones are let through as far
    // as parsing them is safe and quick: the XML parser calls itself for every level of nesting, and
    // looking up an attribute takes longer the more there are.
    constexpr int largestState = 1 << 16; // bytes
    constexpr int deepestState = 16;      // elements

    /** Whether the nesting of the elements in a text stays within bounds. Declarations and comments,
        which no state has, are refused along with what is not XML.
    */
    bool isFlatXml (std::string_view text)
    {
        int depth = 0;

        for (auto tagStart = text.find ('<'); tagStart != text.npos; tagStart = text.find ('<'))
        {
            text.remove_prefix (tagStart + 1);

            if (text.empty() || text.front() == '!')
                return false;

            const bool isClosing = text.front() == '/';
            const bool isHeader  = text.front() == '?';

            // The end of the tag, past quoted values.
            std::size_t end = 0;
            for (; end < text.size() && text[end] != '>'; ++end)
            {
                if (text[end] == '"' || text[end] == '\'')
                {
                    end = text.find (text[end], end + 1);

                    if (end == text.npos)
                        return false;
                }
            }

            if (end == text.size())
                return false;

            const bool isEmptyElement = end > 0 && text[end - 1] == '/';

            if (isClosing)
                --depth;
            else if (! isHeader && ! isEmptyElement && ++depth > deepestState)
                return false;

            text.remove_prefix (end);
        }

        return true;
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

        if (! isFlatXml (text.substr (0, text.find ('\0'))))
            return {};

        return juce::AudioProcessor::getXmlFromBinary (data, size);
    }

    /** A decimal number modulo 2^32, with or without a sign; what is no number is 0. */
    std::uint32_t counterFrom (const juce::String& text)
    {
        auto digit            = text.trimStart().getCharPointer();
        const bool isNegative = *digit == '-';

        if (*digit == '-' || *digit == '+')
            ++digit;

        std::uint32_t counter = 0;

        for (; *digit >= '0' && *digit <= '9'; ++digit)
            counter = counter * 10 + static_cast<std::uint32_t> (*digit - '0');

        return isNegative ? 0u - counter : counter;
    }

    /** A stored value as a number inside the parameter's range; text that is no number counts as 0. */
    double safeValue (const juce::var& stored, const juce::NormalisableRange<float>& range)
    {
        const auto value = stored.toString().getDoubleValue();

        return juce::jlimit (static_cast<double> (range.start), static_cast<double> (range.end), std::isnan (value) ? 0.0 : value);
    }

    /** Makes every parameter's stored value safe and gives those that are missing their defaults. */
    void complete (juce::ValueTree state, const juce::AudioProcessorValueTreeState& parameters)
    {
        for (auto* parameter : parameters.processor.getParameters())
        {
            const auto* ranged = dynamic_cast<juce::RangedAudioParameter*> (parameter);

            if (ranged == nullptr)
                continue;

            const auto isOurs = [ranged] (const juce::ValueTree& child)
            { return child.hasType (parameterType) && child[idProperty].toString() == ranged->paramID; };

            if (std::none_of (state.begin(), state.end(), isOurs))
                state.appendChild (juce::ValueTree (parameterType, { { idProperty, ranged->paramID } }), nullptr);

            for (auto child : state)
                if (isOurs (child))
                    child.setProperty (valueProperty,
                                       child.hasProperty (valueProperty) ? safeValue (child[valueProperty], ranged->getNormalisableRange())
                                                                         : static_cast<double> (ranged->convertFrom0to1 (ranged->getDefaultValue())),
                                       nullptr);
        }
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
    const auto xml = parseState (data, size);

    if (xml == nullptr || xml->getTagName() != stateType)
        return;

    auto state = juce::ValueTree::fromXml (*xml);
    complete (state, parameters);

    ++restoreCount;

    seedCounter = state.hasProperty (seedCounterProperty) ? counterFrom (state[seedCounterProperty].toString()) : 1u;

    for (std::size_t lane = 0; lane < laneLocks.size(); ++lane)
        laneLocks[lane] = static_cast<bool> (state[lockProperty (lane)]);

    parameters.replaceState (state);
    rebuildFromCounter();

    ++restoreCount;
}

void PulsewrightAudioProcessor::rebuildFromCounter()
{
    const juce::ScopedLock lock (dataLock);

    // The stored counter is one ahead of the take that was on screen. Every save and every reload of
    // a project has to give the same music, so it is not advanced here, and what comes back is the
    // take that comes next: always as a two-bar verse.
    refreshSettings();
    settings.seed = saltOf (seedCounter.load());
    pattern       = GrooveGenerator::generate (settings, SectionType::verse, openingBars, 0);
    buildSongFromSettings();
    publishPlaybackData();
    ++changeCounter;
}

} // namespace pulsewright
