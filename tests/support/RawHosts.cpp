// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "RawHosts.h"

#include <lv2/atom/forge.h>
#include <lv2/atom/util.h>
#include <lv2/buf-size/buf-size.h>
#include <lv2/core/lv2.h>
#include <lv2/instance-access/instance-access.h>
#include <lv2/midi/midi.h>
#include <lv2/options/options.h>
#include <lv2/state/state.h>
#include <lv2/time/time.h>
#include <lv2/ui/ui.h>
#include <lv2/urid/urid.h>

#include <pluginterfaces/vst/ivstaudioprocessor.h>
#include <pluginterfaces/vst/ivstcomponent.h>
#include <pluginterfaces/vst/ivstevents.h>
#include <pluginterfaces/vst/ivstprocesscontext.h>
#include <public.sdk/source/common/memorystream.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace pulsewright
{

namespace
{
    void require (bool isWell, const char* what)
    {
        if (! isWell)
            throw std::runtime_error (what);
    }

    struct Module
    {
        explicit Module (const juce::File& bundle)
            : library (bundle.findChildFiles (juce::File::findFiles, true, "*.so;*.vst3").getFirst().getFullPathName())
        {
            require (library.getNativeHandle() != nullptr, "the module does not load");
        }

        template <typename Function>
        Function find (const char* name)
        {
            return reinterpret_cast<Function> (library.getFunction (name));
        }

        juce::DynamicLibrary library;
    };

    //==============================================================================
    namespace Vst = Steinberg::Vst;

#if JUCE_WINDOWS
    constexpr const char *moduleEntry = "InitDll", *moduleExit = "ExitDll";
#else
    constexpr const char *moduleEntry = "ModuleEntry", *moduleExit = "ModuleExit";
#endif

    constexpr Steinberg::TBool on = 1, off = 0;

    struct EventList final : Vst::IEventList // NOLINT(cppcoreguidelines-virtual-class-destructor): as the interface
    {
        Steinberg::int32 PLUGIN_API getEventCount() override { return static_cast<Steinberg::int32> (events.size()); }
        Steinberg::tresult PLUGIN_API addEvent (Vst::Event& e) override { return events.push_back (e), Steinberg::kResultOk; }
        Steinberg::tresult PLUGIN_API queryInterface (const Steinberg::TUID, void**) override { return Steinberg::kNoInterface; }
        Steinberg::uint32 PLUGIN_API addRef() override { return 1; }
        Steinberg::uint32 PLUGIN_API release() override { return 1; }

        Steinberg::tresult PLUGIN_API getEvent (Steinberg::int32 index, Vst::Event& e) override
        {
            e = events[static_cast<std::size_t> (index)];
            return Steinberg::kResultOk;
        }

        std::vector<Vst::Event> events;
    };

    Vst::Event toVst (const RawEvent& raw)
    {
        Vst::Event event {};
        event.sampleOffset  = raw.sample;
        event.type          = (raw.bytes[0] & 0xf0) == 0x90 ? Vst::Event::kNoteOnEvent : Vst::Event::kNoteOffEvent;
        const auto channel  = static_cast<Steinberg::int16> (raw.bytes[0] & 15);
        const auto note     = static_cast<Steinberg::int16> (raw.bytes[1]);
        const auto velocity = static_cast<float> (raw.bytes[2]) / 127.0f;

        if (event.type == Vst::Event::kNoteOnEvent)
            event.noteOn = { channel, note, 0.0f, velocity, 0, -1 };
        else
            event.noteOff = { channel, note, velocity, -1, 0.0f };

        return event;
    }

    RawEvent fromVst (const Vst::Event& event)
    {
        const bool isOn     = event.type == Vst::Event::kNoteOnEvent;
        const auto velocity = isOn ? event.noteOn.velocity : event.noteOff.velocity;
        const auto channel  = isOn ? event.noteOn.channel : event.noteOff.channel;

        return { event.sampleOffset,
                 { static_cast<std::uint8_t> ((isOn ? 0x90 : 0x80) | channel),
                   static_cast<std::uint8_t> (isOn ? event.noteOn.pitch : event.noteOff.pitch),
                   static_cast<std::uint8_t> (std::lround (velocity * 127.0f)) } };
    }

    struct RawVst3 final : RawHost
    {
        RawVst3 (const juce::File& bundle, double rate) : module (bundle)
        {
            require (module.find<bool (*) (void*)> (moduleEntry) (module.library.getNativeHandle()), moduleEntry);
            factory = module.find<Steinberg::IPluginFactory* (*) ()> ("GetPluginFactory")();

            for (Steinberg::int32 i = 0; i < factory->countClasses(); ++i)
            {
                Steinberg::PClassInfo info {};
                factory->getClassInfo (i, &info);

                if (juce::String (info.category) == kVstAudioEffectClass)
                    factory->createInstance (info.cid, Vst::IComponent::iid, reinterpret_cast<void**> (&component));
            }

            require (component != nullptr && component->initialize (nullptr) == Steinberg::kResultOk, "no component");
            component->queryInterface (Vst::IAudioProcessor::iid, reinterpret_cast<void**> (&processor));

            Vst::ProcessSetup setup { Vst::kRealtime, Vst::kSample32, largestRawBlock, rate };
            require (processor->setupProcessing (setup) == Steinberg::kResultOk, "setupProcessing");

            for (const auto kind : { Vst::kAudio, Vst::kEvent })
                for (const auto direction : { Vst::kInput, Vst::kOutput })
                    component->activateBus (kind, direction, 0, on);

            component->setActive (on);
            processor->setProcessing (on);
        }

        ~RawVst3() override
        {
            processor->setProcessing (off);
            component->setActive (off);
            component->terminate();
            processor->release();
            component->release();
            factory->release();
            module.find<bool (*)()> (moduleExit)();
        }

        bool play (const RawBlock& block) override
        {
            EventList in, out;
            std::ranges::transform (block.midi, std::back_inserter (in.events), toVst);
            midi.clear();

            Vst::ProcessContext context {};
            context.state = Vst::ProcessContext::kTempoValid | Vst::ProcessContext::kProjectTimeMusicValid;
            context.state |= block.isPlaying ? static_cast<Steinberg::uint32> (Vst::ProcessContext::kPlaying) : 0u;
            context.projectTimeMusic = block.beat;
            context.tempo            = block.tempo;

            std::array<float*, 2> channels { audio[0].data(), audio[1].data() };
            Vst::AudioBusBuffers bus {};
            bus.numChannels      = 2;
            bus.channelBuffers32 = channels.data();

            Vst::ProcessData data;
            data.numSamples     = block.numSamples;
            data.numOutputs     = 1;
            data.outputs        = &bus;
            data.inputEvents    = &in;
            data.outputEvents   = &out;
            data.processContext = &context;

            if (processor->process (data) != Steinberg::kResultOk)
                return false;

            for (const auto& event : out.events)
                if (event.type == Vst::Event::kNoteOnEvent || event.type == Vst::Event::kNoteOffEvent)
                    midi.push_back (fromVst (event));

            return true;
        }

        std::size_t mostEvents() const override { return 2048; }

        /** JUCE's wrapper appends the size of its own data, that data, its size again and a name; it also reads
            states that lack them.
        */
        juce::MemoryBlock save() override
        {
            constexpr std::size_t nameSize = 15, sizeSize = 8;
            Steinberg::MemoryStream stream;
            component->getState (&stream);

            const auto* bytes  = stream.getData();
            const auto size    = static_cast<std::size_t> (stream.getSize());
            const auto ownSize = juce::ByteOrder::littleEndianInt (bytes + size - nameSize - sizeSize);
            return { bytes, size - nameSize - 2 * sizeSize - ownSize };
        }

        void restore (const juce::MemoryBlock& state) override
        {
            Steinberg::MemoryStream stream (const_cast<void*> (state.getData()), static_cast<Steinberg::TSize> (state.getSize()));
            component->setState (&stream);
        }

        Module module;
        Steinberg::IPluginFactory* factory = nullptr;
        Vst::IComponent* component         = nullptr;
        Vst::IAudioProcessor* processor    = nullptr;
    };

    //==============================================================================
    /** Names and their numbers. */
    struct Urids
    {
        LV2_URID operator() (const char* uri)
        {
            uris.addIfNotAlreadyThere (uri);
            return static_cast<LV2_URID> (uris.indexOf (uri)) + 1;
        }

        juce::StringArray uris;
        LV2_URID_Map map { this, [] (LV2_URID_Map_Handle self, const char* uri) { return (*static_cast<Urids*> (self)) (uri); } };
    };

    struct RawLv2 final : RawHost
    {
        RawLv2 (const juce::File& bundle, double rate) : module (bundle)
        {
            const std::int64_t largest = largestRawBlock;
            const std::array options { LV2_Options_Option { LV2_OPTIONS_INSTANCE,
                                                            0,
                                                            urids (LV2_BUF_SIZE__maxBlockLength),
                                                            sizeof (largest),
                                                            urids (LV2_ATOM__Long),
                                                            &largest },
                                       LV2_Options_Option { LV2_OPTIONS_INSTANCE, 0, 0, 0, 0, nullptr } };

            const LV2_Feature map { LV2_URID__map, &urids.map }, bounded { LV2_BUF_SIZE__boundedBlockLength, nullptr };
            const LV2_Feature withOptions { LV2_OPTIONS__options, const_cast<LV2_Options_Option*> (options.data()) };
            const std::array<const LV2_Feature*, 4> features { &map, &bounded, &withOptions, nullptr };

            descriptor = module.find<LV2_Descriptor_Function> ("lv2_descriptor") (0);
            instance   = descriptor->instantiate (descriptor, rate, bundle.getFullPathName().toRawUTF8(), features.data());
            require (instance != nullptr, "the LV2 cannot be made");

            states = static_cast<const LV2_State_Interface*> (descriptor->extension_data (LV2_STATE__interface));
            lv2_atom_forge_init (&forge, &urids.map);

            const std::array<void*, 4> ports { audio[0].data(), audio[1].data(), in.data(), out.data() };
            for (std::uint32_t port = 0; port < ports.size(); ++port)
                descriptor->connect_port (instance, port, ports[port]);

            descriptor->activate (instance);
        }

        ~RawLv2() override
        {
            descriptor->deactivate (instance);
            descriptor->cleanup (instance);
        }

        bool play (const RawBlock& block) override
        {
            write (block);
            auto& sequence     = *reinterpret_cast<LV2_Atom_Sequence*> (out.data());
            sequence.atom.size = static_cast<std::uint32_t> (out.size() * sizeof (out[0]) - sizeof (LV2_Atom));
            descriptor->run (instance, static_cast<std::uint32_t> (block.numSamples));
            return readMidi (sequence);
        }

        std::size_t mostEvents() const override { return out.size() / 3 - 400; } // 24 bytes each; restored parameters take room, too

        void write (const RawBlock& block)
        {
            LV2_Atom_Forge_Frame sequence, position;
            lv2_atom_forge_set_buffer (&forge, reinterpret_cast<std::uint8_t*> (in.data()), in.size() * sizeof (in[0]));
            lv2_atom_forge_sequence_head (&forge, &sequence, 0);
            lv2_atom_forge_frame_time (&forge, 0);
            lv2_atom_forge_object (&forge, &position, 0, urids (LV2_TIME__Position));
            lv2_atom_forge_key (&forge, urids (LV2_TIME__speed));
            lv2_atom_forge_float (&forge, block.isPlaying ? 1.0f : 0.0f);
            lv2_atom_forge_key (&forge, urids (LV2_TIME__beat));
            lv2_atom_forge_double (&forge, block.beat);
            lv2_atom_forge_key (&forge, urids (LV2_TIME__beatsPerMinute));
            lv2_atom_forge_float (&forge, static_cast<float> (block.tempo));
            lv2_atom_forge_pop (&forge, &position);

            for (const auto& event : block.midi)
            {
                lv2_atom_forge_frame_time (&forge, event.sample);
                lv2_atom_forge_atom (&forge, 3, urids (LV2_MIDI__MidiEvent));
                lv2_atom_forge_write (&forge, event.bytes.data(), 3);
            }

            lv2_atom_forge_pop (&forge, &sequence);
        }

        bool readMidi (const LV2_Atom_Sequence& sequence)
        {
            const auto* end = reinterpret_cast<const std::uint8_t*> (&sequence.body) + sequence.atom.size;
            midi.clear();

            LV2_ATOM_SEQUENCE_FOREACH (&sequence, event)
            {
                const auto* bytes = reinterpret_cast<const std::uint8_t*> (event + 1);

                if (bytes + event->body.size > end)
                    return false;

                if (event->body.type == urids (LV2_MIDI__MidiEvent) && event->body.size == 3)
                    midi.push_back ({ static_cast<int> (event->time.frames), { bytes[0], bytes[1], bytes[2] } });
            }

            return true;
        }

        juce::MemoryBlock save() override
        {
            const auto keep = [] (LV2_State_Handle self, std::uint32_t, const void* value, std::size_t size, std::uint32_t, std::uint32_t)
            {
                static_cast<RawLv2*> (self)->text.assign (static_cast<const char*> (value), size - 1);
                return LV2_STATE_SUCCESS;
            };
            states->save (instance, keep, this, 0, nullptr);

            juce::MemoryBlock state;
            state.fromBase64Encoding (text.c_str());
            return state;
        }

        void restore (const juce::MemoryBlock& state) override { restoreText (state.toBase64Encoding().toStdString()); }

        void restoreText (const std::string& newText) override
        {
            const auto give = [] (LV2_State_Handle self, std::uint32_t key, std::size_t* size, std::uint32_t* type, std::uint32_t*) -> const void*
            {
                auto& host = *static_cast<RawLv2*> (self);

                if (! host.urids.uris[static_cast<int> (key) - 1].endsWithIgnoreCase ("StateString"))
                    return nullptr;

                *size = host.text.size() + 1;
                *type = host.urids (LV2_ATOM__String);
                return host.text.c_str();
            };
            text = newText;
            states->restore (instance, give, this, 0, nullptr);
        }

        void openWindow (unsigned long parent) override
        {
            // NOLINTNEXTLINE(performance-no-int-to-ptr): a window of X11's is a number
            const LV2_Feature self { LV2_INSTANCE_ACCESS_URI, instance }, inside { LV2_UI__parent, reinterpret_cast<void*> (parent) };
            const std::array<const LV2_Feature*, 3> features { &self, &inside, nullptr };
            LV2UI_Widget widget = nullptr;

            ui     = module.find<LV2UI_DescriptorFunction> ("lv2ui_descriptor") (0);
            window = ui->instantiate (ui, descriptor->URI, "", nullptr, nullptr, &widget, features.data());
            require (window != nullptr && widget != nullptr, "the LV2's window cannot be opened");
        }

        void tendWindow() override { static_cast<const LV2UI_Idle_Interface*> (ui->extension_data (LV2_UI__idleInterface))->idle (window); }
        void closeWindow() override { ui->cleanup (window); }

        Module module;
        Urids urids;
        LV2_Atom_Forge forge {};
        const LV2_Descriptor* descriptor  = nullptr;
        LV2_Handle instance               = nullptr;
        const LV2_State_Interface* states = nullptr;
        const LV2UI_Descriptor* ui        = nullptr;
        LV2UI_Handle window               = nullptr;
        std::string text;
        std::array<std::uint64_t, 16384> in {}, out {}; // as long as the Turtle asks for
    };
} // namespace

std::unique_ptr<RawHost> openRaw (const juce::File& bundle, double sampleRate)
{
    if (bundle.hasFileExtension ("lv2"))
        return std::make_unique<RawLv2> (bundle, sampleRate);

    return std::make_unique<RawVst3> (bundle, sampleRate);
}

} // namespace pulsewright
