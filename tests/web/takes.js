// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Runs in the page. A hundred takes of all kinds, with their files.

const [done] = arguments, engine = await (await import ("./engine.js")).loadEngine(), takes = [];
let dice = 1;
const draw = (below) => (dice = dice * 48271 % 2147483647) % below;
const text = (bytes) => bytes && btoa (String.fromCharCode (...bytes));
for (let i = 0; i < 100; ++i) {
    engine.tables.choices.forEach ((row, index) => engine.run ("Choose", index, draw (row.names.length)));
    engine.tables.settings.forEach ((row, index) => engine.run ("SetValue", index, draw (1001) / 1000));
    if (i % 2) engine.run ("SetTempo", 30 + draw (271));
    engine.run (i % 3 ? "Generate" : "BuildSong", draw (2));
    if (i % 3 == 2) engine.run ("SelectSection", draw (4));
    const code = engine.state().code;
    engine.openCode (code);
    takes.push ({ code, groove: text (engine.midi (false)), song: text (engine.midi (true)), ...engine.preset ("A name") });
    takes[i].bytes = text (takes[i].bytes);
}
done (takes);
