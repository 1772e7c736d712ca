// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "Lv2Host.h"

#include <lilv/lilv.h>
#include <lv2/atom/atom.h>
#include <lv2/atom/forge.h>
#include <lv2/atom/util.h>
#include <lv2/buf-size/buf-size.h>
#include <lv2/midi/midi.h>
#include <lv2/options/options.h>
#include <lv2/patch/patch.h>
#include <lv2/state/state.h>
#include <lv2/time/time.h>
#include <lv2/urid/urid.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace pulsewright
{

namespace
{
    constexpr std::size_t portBytes = 1 << 16;

    /** Frees what lilv hands out. */
    template <auto release>
    struct Releases
    {
        template <typename Type>
        void operator() (Type* thing) const noexcept
        {
            release (thing);
        }
    };

    using World    = std::unique_ptr<LilvWorld, Releases<lilv_world_free>>;
    using Node     = std::unique_ptr<LilvNode, Releases<lilv_node_free>>;
    using Instance = std::unique_ptr<LilvInstance, Releases<lilv_instance_free>>;
    using State    = std::unique_ptr<LilvState, Releases<lilv_state_free>>;

    /** Numbers for URIs, both ways. */
    struct Urids
    {
        std::vector<std::unique_ptr<std::string>> uris; // each stays where it is
        LV2_URID_Map map { this, [] (LV2_URID_Map_Handle self, const char* uri) { return static_cast<Urids*> (self)->of (uri); } };
        LV2_URID_Unmap unmap { this,
                               [] (LV2_URID_Unmap_Handle self, LV2_URID urid) { return static_cast<Urids*> (self)->uris.at (urid - 1)->c_str(); } };

        LV2_URID of (const std::string& uri)
        {
            auto found = std::find_if (uris.begin(), uris.end(), [&] (const auto& known) { return *known == uri; });

            if (found == uris.end())
                found = uris.insert (uris.end(), std::make_unique<std::string> (uri));

            return static_cast<LV2_URID> (found - uris.begin() + 1);
        }
    };

    /** A sequence of atoms in memory of its own, as a port is connected to. */
    struct AtomPort
    {
        alignas (8) std::array<std::uint8_t, portBytes> bytes {};

        LV2_Atom_Sequence* sequence() noexcept { return reinterpret_cast<LV2_Atom_Sequence*> (bytes.data()); }
    };
} // namespace

struct Lv2Host::Impl
{
    double sampleRate;
    std::string uri;
    Urids urids;
    World world { lilv_world_new() };
    const LilvPlugin* plugin = nullptr;
    Instance instance;

    std::vector<std::vector<float>> signals; // a buffer a port that carries numbers
    AtomPort in, out;
    std::vector<std::pair<std::string, float>> settings; // to be said in the next block
    std::vector<Message> recorded;
    std::int64_t samplesPlayed = 0;

    //==============================================================================
    std::vector<LV2_Feature> features;
    std::vector<const LV2_Feature*> featureList;
    std::array<LV2_Options_Option, 2> options {};
    std::int32_t blockLength = 0;

    void offerFeatures()
    {
        options[0] = {
            LV2_OPTIONS_INSTANCE, 0, urids.of (LV2_BUF_SIZE__maxBlockLength), sizeof (blockLength), urids.of (LV2_ATOM__Int), &blockLength
        };
        features = { { LV2_URID__map, &urids.map },
                     { LV2_URID__unmap, &urids.unmap },
                     { LV2_OPTIONS__options, options.data() },
                     { LV2_BUF_SIZE__boundedBlockLength, nullptr } };

        for (const auto& feature : features)
            featureList.push_back (&feature);

        featureList.push_back (nullptr);
    }

    void connectPorts()
    {
        const Node audio { lilv_new_uri (world.get(), LILV_URI_AUDIO_PORT) };
        const Node control { lilv_new_uri (world.get(), LILV_URI_CONTROL_PORT) };
        const Node input { lilv_new_uri (world.get(), LILV_URI_INPUT_PORT) };
        const auto numPorts = lilv_plugin_get_num_ports (plugin);

        std::vector<float> defaults (numPorts); // such as the switch that says that the plug-in is on
        lilv_plugin_get_port_ranges_float (plugin, nullptr, nullptr, defaults.data());
        signals.resize (numPorts);

        for (std::uint32_t i = 0; i < numPorts; ++i)
        {
            const auto* port = lilv_plugin_get_port_by_index (plugin, i);

            if (lilv_port_is_a (plugin, port, audio.get()) || lilv_port_is_a (plugin, port, control.get()))
            {
                signals[i].assign (static_cast<std::size_t> (blockLength), defaults[i]);
                lilv_instance_connect_port (instance.get(), i, signals[i].data());
            }
            else
            {
                lilv_instance_connect_port (instance.get(), i, lilv_port_is_a (plugin, port, input.get()) ? in.sequence() : out.sequence());
            }
        }
    }

    //==============================================================================
    /** One object at the block's first sample. @param addProperties  forges its keys and values */
    template <typename Function>
    void say (LV2_Atom_Forge& forge, const char* type, Function&& addProperties)
    {
        LV2_Atom_Forge_Frame object;
        lv2_atom_forge_frame_time (&forge, 0);
        lv2_atom_forge_object (&forge, &object, 0, urids.of (type));
        addProperties ([&] (const char* key) { lv2_atom_forge_key (&forge, urids.of (key)); });
        lv2_atom_forge_pop (&forge, &object);
    }

    void sayTransport (LV2_Atom_Forge& forge, const Transport& transport)
    {
        say (forge,
             LV2_TIME__Position,
             [&] (auto&& key)
             {
                 key (LV2_TIME__frame);
                 lv2_atom_forge_long (&forge, std::llround (transport.beat * 60.0 / transport.bpm * sampleRate));
                 key (LV2_TIME__speed);
                 lv2_atom_forge_float (&forge, transport.isRolling ? 1.0f : 0.0f);

                 if (transport.namesTempo)
                 {
                     key (LV2_TIME__beatsPerMinute);
                     lv2_atom_forge_float (&forge, static_cast<float> (transport.bpm));
                 }

                 if (transport.namesBeat)
                 {
                     key (LV2_TIME__beat);
                     lv2_atom_forge_double (&forge, transport.beat);
                 }
             });
    }

    void saySetting (LV2_Atom_Forge& forge, const std::string& symbol, float value)
    {
        say (forge,
             LV2_PATCH__Set,
             [&] (auto&& key)
             {
                 key (LV2_PATCH__property);
                 lv2_atom_forge_urid (&forge, urids.of (uri + ":" + symbol));
                 key (LV2_PATCH__value);
                 lv2_atom_forge_float (&forge, value);
             });
    }

    void writeInput (const std::optional<Transport>& news)
    {
        LV2_Atom_Forge forge;
        LV2_Atom_Forge_Frame sequence;
        lv2_atom_forge_init (&forge, &urids.map);
        lv2_atom_forge_set_buffer (&forge, in.bytes.data(), in.bytes.size());
        lv2_atom_forge_sequence_head (&forge, &sequence, 0);

        for (const auto& [symbol, value] : settings)
            saySetting (forge, symbol, value);

        if (news)
            sayTransport (forge, *news);

        lv2_atom_forge_pop (&forge, &sequence);
        settings.clear();
    }

    void readOutput()
    {
        const auto midi = urids.of (LV2_MIDI__MidiEvent);

        LV2_ATOM_SEQUENCE_FOREACH (out.sequence(), event)
        {
            if (event->body.type != midi || event->body.size != 3)
                continue;

            Message message { samplesPlayed + event->time.frames, {} };
            std::copy_n (static_cast<const std::uint8_t*> (LV2_ATOM_BODY_CONST (&event->body)), 3, message.bytes.begin());
            recorded.push_back (message);
        }
    }
};

//==============================================================================
Lv2Host::Lv2Host (const std::filesystem::path& bundle, const std::string& uri, double sampleRate, int largestBlock) : impl (std::make_unique<Impl>())
{
    impl->sampleRate  = sampleRate;
    impl->uri         = uri;
    impl->blockLength = largestBlock;
    impl->offerFeatures();

    lilv_world_load_specifications (impl->world.get());
    const Node folder { lilv_new_file_uri (impl->world.get(), nullptr, (bundle / "").c_str()) };
    lilv_world_load_bundle (impl->world.get(), folder.get());

    const Node name { lilv_new_uri (impl->world.get(), uri.c_str()) };
    impl->plugin = lilv_plugins_get_by_uri (lilv_world_get_all_plugins (impl->world.get()), name.get());

    if (impl->plugin == nullptr)
        throw std::runtime_error ("No plug-in " + uri + " in " + bundle.string());

    impl->instance.reset (lilv_plugin_instantiate (impl->plugin, sampleRate, impl->featureList.data()));

    if (impl->instance == nullptr)
        throw std::runtime_error ("The plug-in " + uri + " does not load");

    impl->connectPorts();
    lilv_instance_activate (impl->instance.get());
}

Lv2Host::~Lv2Host()
{
    lilv_instance_deactivate (impl->instance.get());
}

void Lv2Host::process (int numSamples, const std::optional<Transport>& news)
{
    impl->writeInput (news);
    impl->out.sequence()->atom = { portBytes - sizeof (LV2_Atom), impl->urids.of (LV2_ATOM__Chunk) };

    lilv_instance_run (impl->instance.get(), static_cast<std::uint32_t> (numSamples));

    impl->readOutput();
    impl->samplesPlayed += numSamples;
}

const std::vector<Lv2Host::Message>& Lv2Host::recordedMidi() const noexcept
{
    return impl->recorded;
}

void Lv2Host::setParameter (const std::string& symbol, float value)
{
    impl->settings.emplace_back (symbol, value);
}

//==============================================================================
std::string Lv2Host::save()
{
    constexpr auto flags = LV2_STATE_IS_POD | LV2_STATE_IS_PORTABLE;
    const State state { lilv_state_new_from_instance (impl->plugin,
                                                      impl->instance.get(),
                                                      &impl->urids.map,
                                                      nullptr,
                                                      nullptr,
                                                      nullptr,
                                                      nullptr,
                                                      nullptr,
                                                      nullptr,
                                                      flags,
                                                      impl->featureList.data()) };

    const std::unique_ptr<char, Releases<lilv_free>> text {
        lilv_state_to_string (impl->world.get(), &impl->urids.map, &impl->urids.unmap, state.get(), "urn:state", nullptr)
    };
    return text.get();
}

void Lv2Host::restore (const std::string& text)
{
    const State state { lilv_state_new_from_string (impl->world.get(), &impl->urids.map, text.c_str()) };

    if (state == nullptr)
        throw std::runtime_error ("Not a state");

    lilv_state_restore (state.get(), impl->instance.get(), nullptr, nullptr, 0, impl->featureList.data());
}

} // namespace pulsewright
