// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The audio thread: an instance of the engine of its own, which never waits for the page.

import { imports, started } from "./wasm.js";

const samplesBetweenReports = 2048;

class Drums extends AudioWorkletProcessor
{
    #engine;
    #kit = 0;
    #run = 0; // counts the starts, for the page to tell an old report from a new one
    #sinceReport = 0;

    constructor ({ processorOptions })
    {
        super();
        this.#engine = started (new WebAssembly.Instance (processorOptions.module, imports));
        this.#engine.soundPrepare (sampleRate);
        this.#follow (processorOptions);
        this.port.onmessage = ({ data }) => this.#follow (data);
    }

    /** Any of what the page may say. */
    #follow ({ kit, tempo, music, run })
    {
        this.#kit = kit ?? this.#kit;

        if (tempo !== undefined)
            this.#engine.soundSetTempo (tempo);

        if (music !== undefined)
            this.#take (music);

        if (run !== undefined)
            this.#play (run);
    }

    /** @param run  the number of a start, or 0 to stop */
    #play (run)
    {
        this.#run = run;
        run ? this.#engine.soundStart() : this.#engine.soundStop();
    }

    #take (music)
    {
        const place = this.#engine.soundParcel (music.length);
        new Uint8Array (this.#engine.memory.buffer, place, music.length).set (music);
        this.#engine.soundTakeParcel();
    }

    process (_, [[left, right]])
    {
        const numSamples = left.length;
        const place = this.#engine.soundRender (numSamples, this.#kit);
        const samples = new Float32Array (this.#engine.memory.buffer, place, 2 * numSamples);
        left.set (samples.subarray (0, numSamples));
        right.set (samples.subarray (numSamples));
        this.#report (numSamples);
        return true;
    }

    #report (numSamples)
    {
        this.#sinceReport += numSamples;

        if (this.#sinceReport < samplesBetweenReports)
            return;

        this.#sinceReport = 0;
        this.port.postMessage ({
            run: this.#run,
            isPlaying: this.#engine.soundIsPlaying() === 1,
            beat: this.#engine.soundBeat(),
            time: currentTime + numSamples / sampleRate
        });
    }
}

registerProcessor ("drums", Drums);
