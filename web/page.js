// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The page: what each control does, and what is shown after it.

import { addChoice, addPercentage, addSwitch, made, offer } from "./controls.js";
import { loadEngine } from "./engine.js";
import { draw, placeOf, plural, summary, words } from "./grid.js";
import { Player } from "./player.js";
import { keep, kept } from "./store.js";

const beatsPerBar = 4;
const restBeforeRegenerationMs = 100;
const silenceMs = 2000; // after which a start counts as one that is not heard
const presetName = "Pulsewright take";

const at = (id) => document.getElementById (id);
const isCalm = matchMedia ("(prefers-reduced-motion: reduce)");

let engine, tables, state, player;
let boxes, sliders, locks; // what shows the choices, the settings and the locks
let sent = {};             // what the player was told last
let regeneration;          // the timer of a setting that was moved
let saidThatNothingIsKept = false;

//==============================================================================
function say (text)      { at ("status").textContent = text; }
function complain (text) { at ("problem").textContent = text ?? ""; }

const rowOf = (id) => tables.choices.findIndex ((row) => row.id === id);
const choice = (id) => state.choices[rowOf (id)];
const isSong = () => choice ("play_mode") === 1;

/** The name of the kit where it is the last one, which is none. */
function silentKit ()
{
    const { names } = tables.choices[rowOf ("sound_kit")];
    return choice ("sound_kit") === names.length - 1 ? names.at (-1) : undefined;
}

const newest = () => `${state.takes[0].text}. ${state.pattern.name} has ${strokes()}.`;
const strokes = () => plural (state.pattern.hits.length, "stroke");

/** One operation: then everything shows what has come of it. @param what  is said, by default the newest take */
function act (operation, what)
{
    const why = operation();
    complain (why);

    if (why)
        return;

    refresh();
    say (what?.() ?? newest());
}

//==============================================================================
// What is shown.

function refresh ()
{
    state = engine.state();
    state.choices.forEach ((index, row) => boxes[row].selectedIndex = index);
    state.values.forEach ((value, i) => sliders[i] (value));
    state.locks.forEach ((isLocked, lane) => locks[lane].checked = isLocked);
    at ("tempo").value = state.tempo;
    at ("build").textContent = `Build ${state.nextSongBars}-bar song`;

    showPattern();
    showSong();
    showTake();
    tellPlayer();
    remember();
}

function showPattern ()
{
    const { pattern } = state;
    at ("pattern-name").textContent = pattern.name;
    at ("strokes").setAttribute ("aria-label", `${pattern.name}, ${summary (pattern, tables.lanes)}`);
    at ("words").replaceChildren (...words (pattern, tables.lanes).map ((text) => made ("li", { textContent: text })));
    draw (at ("strokes"), pattern, tables.lanes);
}

function showSong ()
{
    const { song } = state;
    at ("song-name").textContent = song.name;

    // The buttons stay where only names change: one of them may have the focus.
    const list = at ("sections");
    while (list.children.length > song.sections.length)
        list.lastChild.remove();
    while (list.children.length < song.sections.length)
        list.append (sectionButton (list.children.length));

    song.sections.forEach (({ name, bars }, i) =>
    {
        const button = list.children[i].firstChild;
        button.textContent = `${name}, ${bars}`;
        button.setAttribute ("aria-label", `Section ${name}, ${plural (bars, "bar")}`);
    });
}

function sectionButton (index)
{
    return made ("li", {}, made ("button", { type: "button", onclick: () => selectSection (index) }));
}

function selectSection (index)
{
    act (() => engine.run ("SelectSection", index), () => `${state.pattern.name} is the pattern now: ${plural (state.pattern.bars, "bar")}, ${strokes()}.`);
}

function showTake ()
{
    const hash = state.code ? "#" + state.code : "";
    history.replaceState (null, "", location.pathname + location.search + hash);
    at ("link").value = state.code ? location.href : "A mutation has no link: it depends on the groove before it";
    at ("copy").disabled = ! state.code;

    const preset = engine.preset (presetName);
    offer (at ("pattern-midi"), () => engine.midi (false), "audio/midi");
    offer (at ("song-midi"), () => engine.midi (true), "audio/midi");
    offer (at ("preset"), preset.bytes && (() => preset.bytes), "application/octet-stream");
    at ("preset-why").textContent = preset.why ?? "";
    at ("takes").replaceChildren (...state.takes.map (({ id, text }) => made ("option", { value: id, textContent: text })));
}

/** Only what has changed: music goes over as a copy. */
function tellPlayer ()
{
    const told = JSON.stringify (isSong() ? [state.song, state.code, state.takes[0].id] : state.pattern);
    const change = { kit: choice ("sound_kit"), tempo: state.tempo };

    if (told !== sent.music)
        change.music = engine.music();

    sent = { music: told };
    player.change (change);
}

function remember ()
{
    const isKept = keep ({ code: state.code || kept().code, locks: state.locks, length: choice ("pattern_length") });

    if (! isKept && ! saidThatNothingIsKept && ! at ("problem").textContent)
    {
        saidThatNothingIsKept = true;
        complain ("This browser keeps nothing for the page: the next visit begins anew. A link keeps the take.");
    }
}

//==============================================================================
// The playback.

async function togglePlay ()
{
    if (player.isPlaying)
        return stopped ("Stopped.");

    showPlaying (true);
    say ((isSong() ? "Playing the song" : "Playing the pattern in a loop") + (silentKit() ? `, without sound: the kit is ${silentKit()}.` : "."));

    try
    {
        await player.start ({ kit: choice ("sound_kit"), tempo: state.tempo, music: engine.music() });
        requestAnimationFrame (showPlace);
        setTimeout (complainOfSilence, silenceMs);
    }
    catch (error)
    {
        complain (error.message);
        stopped ("Nothing plays.");
    }
}

function complainOfSilence ()
{
    if (player.isPlaying && player.beat() === undefined)
        complain ("Nothing is heard yet: the browser has found no sound device, or waits for one.");
}

function stopped (why)
{
    player.stop();
    showPlaying (false);
    say (why);
}

function showPlaying (isPlaying)
{
    at ("play").textContent = isPlaying ? "Stop" : "Play";
    at ("playhead").hidden = true;
    at ("place").textContent = "";
    markSection (-1);
}

function markSection (index)
{
    [...at ("sections").children].forEach ((item, i) => item.firstChild.setAttribute ("aria-current", i === index));
}

/** The section that a beat of the song is in: { index, from }, where it begins in beats. */
function sectionAt (beat)
{
    let from = 0, index = 0;

    for (; index < state.song.sections.length - 1 && beat >= from + state.song.sections[index].bars * beatsPerBar; ++index)
        from += state.song.sections[index].bars * beatsPerBar;

    return { index, from };
}

function showPlace ()
{
    const beat = player.beat();

    if (beat !== undefined)
        isSong() ? showSongPlace (beat) : showPatternPlace (beat % (state.pattern.bars * beatsPerBar));

    if (player.isPlaying)
        requestAnimationFrame (showPlace);
}

function showSongPlace (beat)
{
    const { index, from } = sectionAt (beat);
    const section = state.song.sections[index];
    const isShown = section?.name === state.pattern.name && section.bars === state.pattern.bars;

    markSection (index);
    at ("place").textContent = `Bar ${Math.floor (beat / beatsPerBar) + 1} of ${state.song.bars}, ${section?.name}`;
    showHead (isShown ? beat - from : undefined);
}

function showPatternPlace (beat)
{
    markSection (-1);
    at ("place").textContent = `Bar ${Math.floor (beat / beatsPerBar) + 1} of ${state.pattern.bars}`;
    showHead (beat);
}

function showHead (beat)
{
    at ("playhead").hidden = beat === undefined;

    if (beat !== undefined) // where motion is not wanted it stands on each bar
        at ("playhead").style.left = 100 * placeOf (at ("strokes"), isCalm.matches ? beat - beat % beatsPerBar : beat, state.pattern.bars) + "%";
}

//==============================================================================
// The controls.

function addControls ()
{
    const lanes     = tables.lanes.map (() => made ("div"));
    const numMacros = tables.settings.findIndex ((row) => ! row.isMacro); // behind them come the lanes' probabilities
    at ("lanes").append (...lanes);

    boxes   = tables.choices.map ((row, i) => addChoice (row, (index) => choose (i, index)));
    sliders = tables.settings.map ((row, i) => addPercentage (lanes[i - numMacros] ?? at ("settings"), row, (value) => setValue (i, value)));
    locks   = tables.lanes.map ((name, lane) => addSwitch (lanes[lane], "lock-" + lane, `Lock ${name}`, (isOn) => setLock (lane, isOn)));

    Object.assign (at ("tempo"), { min: tables.minTempo, max: tables.maxTempo, onchange: setTempo });
    at ("play").onclick = togglePlay;
    at ("generate").onclick = () => act (() => engine.run ("Generate", 0));
    at ("fill").onclick = () => act (() => engine.run ("Generate", 1));
    at ("mutate").onclick = () => act (() => engine.run ("Mutate"));
    at ("build").onclick = () => act (() => engine.run ("BuildSong"));
    at ("copy").onclick = copyLink;
    at ("open").onsubmit = openTyped;
    at ("earlier").onsubmit = bringBack;
}

function choose (row, index)
{
    const song = state.song.name;
    const name = () => `${tables.choices[row].name}: ${tables.choices[row].names[index]}. ${state.song.name === song ? "" : state.song.name + "."}`;
    act (() => engine.run ("Choose", row, index), name);
}

/** The music follows when the setting rests. A probability counts from the next take on. */
function setValue (setting, value)
{
    engine.run ("SetValue", setting, value);
    clearTimeout (regeneration);

    if (tables.settings[setting].isMacro)
        regeneration = setTimeout (() => act (() => engine.run ("Regenerate")), restBeforeRegenerationMs);
}

function setLock (lane, isOn)
{
    act (() => engine.run ("SetLock", lane, isOn), () => `${tables.lanes[lane]} ${isOn ? "is kept by mutations" : "is free again"}.`);
}

function setTempo ()
{
    const box = at ("tempo");

    if (! box.checkValidity())
    {
        complain (`The tempo is a whole number from ${tables.minTempo} to ${tables.maxTempo}, not: ${box.value || "nothing"}`);
        box.value = state.tempo;
        return;
    }

    act (() => engine.run ("SetTempo", box.valueAsNumber), () => `${state.tempo} beats per minute.`);
}

async function copyLink ()
{
    try
    {
        await navigator.clipboard.writeText (location.href);
        say ("The link to this take is copied.");
    }
    catch
    {
        at ("link").select();
        say ("The browser does not let the page copy; the link is selected in its field.");
    }
}

/** @returns why not, or nothing */
function openCode (text)
{
    const code = decodeURIComponent (text.slice (text.indexOf ("#") + 1));
    return engine.openCode (code);
}

function openTyped (event)
{
    event.preventDefault();
    act (() => openCode (at ("code").value));
}

function bringBack (event)
{
    event.preventDefault();
    const { text } = state.takes.find (({ id }) => id === Number (at ("takes").value));
    act (() => engine.run ("PlayEarlier", Number (at ("takes").value)), () => `${text} is back.`);
}

//==============================================================================
/** The take of the link, else that of the last visit, else the one that every instance opens with. */
function openFirst ()
{
    const before = kept();

    if (before.code)
        engine.openCode (before.code);

    before.locks?.forEach ((isLocked, lane) => engine.run ("SetLock", lane, isLocked));

    if (before.length in tables.choices[rowOf ("pattern_length")].names)
        engine.run ("Choose", rowOf ("pattern_length"), before.length);

    return location.hash.length > 1 ? openCode (location.hash) : undefined;
}

async function start ()
{
    engine = await loadEngine();
    tables = engine.tables;
    player = new Player (engine.module, () => { showPlaying (false); say ("The song is over."); });
    addControls();
    const why = openFirst();

    at ("loading").remove();
    at ("page").hidden = false;
    complain (why);
    refresh();
    say (newest());

    addEventListener ("hashchange", () => act (() => openCode (location.hash)));
    new ResizeObserver (() => draw (at ("strokes"), state.pattern, tables.lanes)).observe (at ("grid"));
}

start().catch ((error) => { at ("loading").remove(); complain (error.message); });
