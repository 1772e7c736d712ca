-- SPDX-FileCopyrightText: 2026 Tolm
-- SPDX-License-Identifier: AGPL-3.0-only

-- Makes a session with the plug-in on a MIDI track, exports eight bars and rolls the transport.
-- Arguments: VST3 or LV2, the plug-in's id, the session's folder, the export's folder, the id of the export preset.

local plugin_type, plugin_id, session_folder, export_folder, preset = arg[1], arg[2], arg[3], arg[4], arg[5]
local sample_rate, beats = 48000, 32
local first_bpm, second_bpm, change = 90, 140, 8 * 60 / 90 * 48000 -- at beat 8

local function expect (what, ok, seen)
	if not ok then
		error ("expected " .. what .. "; saw " .. tostring (seen), 0)
	end
end

AudioEngine:set_backend ("None (Dummy)", "", "")
local session = create_session (session_folder, "groove", sample_rate)
expect ("a new session", session, session)

-- Only now: Ardour reads its list of plug-ins when the engine starts, with the session.
local info = ARDOUR.LuaAPI.new_plugin_info (plugin_id, ARDOUR.PluginType[plugin_type])
expect ("the plug-in among Ardour's", not info:isnil (), "no such id")

local tempo_map = Temporal.TempoMap.fetch_writable ()
tempo_map:set_tempo (Temporal.Tempo (first_bpm, first_bpm, 4), Temporal.timepos_t (0))
tempo_map:set_tempo (Temporal.Tempo (second_bpm, second_bpm, 4), Temporal.timepos_t (change))
Temporal.TempoMap.update (tempo_map)
tempo_map = nil

local midi_in   = ARDOUR.ChanCount (ARDOUR.DataType ("midi"), 1)
local audio_out = ARDOUR.ChanCount (ARDOUR.DataType ("audio"), 2)
local tracks    = session:new_midi_track (midi_in, audio_out, true, info, nil, nil, 1, "Drums",
                                          ARDOUR.PresentationInfo.max_order, ARDOUR.TrackMode.Normal, true)
expect ("one MIDI track", tracks:size () == 1, tracks:size ())

local track  = tracks:front ()
local plugin = track:nth_plugin (0)
expect ("the plug-in on the track", not plugin:isnil () and plugin:name () == info.name, plugin)

-- The export comes first: the plug-in's noises are numbered from the first stroke it plays.
local export = session:simple_export ()
expect ("the export preset", export:set_preset (preset), "another one")
export:set_name ("groove")
export:set_folder (export_folder)
export:set_range (0, math.floor (change + (beats - 8) * 60 / second_bpm * sample_rate + 0.5))
expect ("an export", export:run_export (), "a failure")

local function loudest (channel)
	return session:master_out ():peak_meter ():meter_level (channel, ARDOUR.MeterType.MeterMaxPeak)
end

-- Long enough for the last sounds of the export to have died away.
session:request_locate (0, false, ARDOUR.LocateTransportDisposition.MustStop, ARDOUR.TransportRequestSource.TRS_UI)
sleep (2)
session:master_out ():peak_meter ():reset_max ()
sleep (0.5)
expect ("silence while the transport stands", not session:transport_rolling () and loudest (0) < -100, loudest (0) .. " dB")

session:request_roll (ARDOUR.TransportRequestSource.TRS_UI)
for _ = 1, 100 do
	sleep (0.1)
	if session:transport_sample () > sample_rate then break end
end

expect ("a rolling transport", session:transport_rolling () and session:transport_sample () > sample_rate,
        "a transport at sample " .. session:transport_sample ())
for channel = 0, 1 do
	expect ("sound on channel " .. channel, loudest (channel) > -30, loudest (channel) .. " dB")
end

print (string.format ("ROLLED silent while it stands, peaks of %.1f and %.1f dB while it rolls", loudest (0), loudest (1)))

-- Saving asks the plug-in for its state.
expect ("a saved session", session:save_state ("") == 0, "a failure")

-- What Lua holds of a closed session would be freed too late.
info, tracks, track, plugin, export = nil, nil, nil, nil, nil
collectgarbage ()
session:close ()
