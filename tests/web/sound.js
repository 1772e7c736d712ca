// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Runs in the page. The engine in the audio thread of a context without a device, against the command line's sound.

const [code, done] = arguments, { drumsIn } = await import ("./player.js");
const engine = await (await import ("./engine.js")).loadEngine(), state = (engine.openCode (code), engine.state());
const wanted = new Float32Array ((await (await fetch ("sound.wav", { cache: "no-store" })).arrayBuffer()).slice (58)), frames = wanted.length / 2;
const context = new OfflineAudioContext (2, frames, 48000);
const kit = state.choices[engine.tables.choices.findIndex ((row) => row.id === "sound_kit")];
await drumsIn (context, engine.module, { kit, tempo: state.tempo, music: engine.music(), run: 1 });
const heard = await context.startRendering(), sides = [heard.getChannelData (0), heard.getChannelData (1)];
let farthest = 0, loudest = 0;
for (let i = 0; i < wanted.length; ++i) {
    farthest = Math.max (farthest, Math.abs (sides[i % 2][i >> 1] - wanted[i]));
    loudest = Math.max (loudest, Math.abs (wanted[i]));
}
done ({ frames, farthest, loudest });
