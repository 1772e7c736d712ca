-- SPDX-FileCopyrightText: 2026 Tolm
-- SPDX-License-Identifier: AGPL-3.0-only

-- Loads a preset and repeats the first two bars at 90 BPM under JACK, for a number of seconds.
-- Arguments: VST3 or LV2, the plug-in's id, the session's folder, the seconds, a shell command for when it is ready, the preset.

local plugin_type, plugin_id, folder, seconds, ready, preset = arg[1], arg[2], arg[3], tonumber (arg[4]), arg[5], arg[6]

AudioEngine:set_backend ("JACK", "", "")
local session = create_session (folder, "groove", 48000)
local info    = ARDOUR.LuaAPI.new_plugin_info (plugin_id, ARDOUR.PluginType[plugin_type])

local tempo_map = Temporal.TempoMap.fetch_writable ()
tempo_map:set_tempo (Temporal.Tempo (90, 90, 4), Temporal.timepos_t (0))
Temporal.TempoMap.update (tempo_map)

local presets = info:get_presets (false):size ()

local tracks = session:new_midi_track (ARDOUR.ChanCount (ARDOUR.DataType ("midi"), 1), ARDOUR.ChanCount (ARDOUR.DataType ("audio"), 2), true,
                                       info, nil, nil, 1, "Drums", ARDOUR.PresentationInfo.max_order, ARDOUR.TrackMode.Normal, true)
local plugin = tracks:front ():nth_plugin (0):to_insert ():plugin (0)

if presets ~= 21 or not plugin:load_preset (plugin:preset_by_label (preset)) then
	error ("expected 21 presets, and " .. preset .. " among them; saw " .. presets, 0)
end

session:locations ():add_range (Temporal.timepos_t (0), Temporal.timepos_t (8 * 60 / 90 * 48000))
session:save_state ("")
tempo_map, info, tracks, plugin = nil, nil, nil, nil
collectgarbage ()
session:close ()

-- Lua cannot make a range the loop, but a session's file can.
os.execute ("sed -i s/IsRangeMarker/IsAutoLoop/ '" .. folder .. "/groove.ardour'")
session = load_session (folder, "groove")
session:request_locate (0, false, ARDOUR.LocateTransportDisposition.MustStop, ARDOUR.TransportRequestSource.TRS_UI)
sleep (1)
os.execute (ready)
session:request_play_loop (true, true)
sleep (seconds)

if not (session:transport_rolling () and session:get_play_loop ()) then
	error ("expected a rolling loop", 0)
end

session:close ()
