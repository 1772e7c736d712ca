// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Sound: the page's side of the audio thread.

const noWorklet = "There is no sound here: this browser has no AudioWorklet, or the page came neither over https nor from this machine. "
                + "Everything else works.";

const tailSeconds = 3; // after a stop the last strokes end by themselves; then the sound device may rest

/** The audio thread's node in any context. @param start  what it begins with: { kit, tempo, music, run } */
export async function drumsIn (context, module, start)
{
    if (! context.audioWorklet)
        throw new Error (noWorklet);

    await context.audioWorklet.addModule ("worklet.js");
    const node = new AudioWorkletNode (context, "drums", { numberOfInputs: 0, outputChannelCount: [2], processorOptions: { module, ...start } });
    node.connect (context.destination);
    return node;
}

export class Player
{
    #module;
    #context;
    #node;
    #opening;
    #tempo = 120;
    #run = 0; // the number of the last start
    #last; // what the audio thread has said last
    #resting;

    /** @param onEnd  called when a song is over */
    constructor (module, onEnd)
    {
        this.#module = module;
        this.onEnd = onEnd;
        this.isPlaying = false;
    }

    /** Says what is played from now on; without a sound yet it says nothing. @param change  { kit, tempo, music } or a part */
    change (change)
    {
        this.#tempo = change.tempo ?? this.#tempo;
        this.#node?.port.postMessage (change, change.music ? [change.music.buffer] : []);
    }

    /** From the first beat. Called by a click, or browsers keep silent. @throws Error  with a sentence for people */
    async start (what)
    {
        clearTimeout (this.#resting);
        this.isPlaying = true;
        this.#last = undefined;
        const run = ++this.#run;

        try
        {
            await (this.#opening ??= this.#open());
            this.#context.resume(); // without waiting: where there is no device it never comes
        }
        catch (error)
        {
            this.isPlaying = false;
            this.#opening = undefined;
            throw error;
        }

        if (this.isPlaying && run === this.#run) // no stop has come meanwhile
            this.change ({ ...what, run });
    }

    stop ()
    {
        this.isPlaying = false;
        this.#node?.port.postMessage ({ run: 0 });
        this.#rest();
    }

    /** Where the playback is, in beats since the start, as it is heard; nothing while it stands. */
    beat ()
    {
        if (! this.isPlaying || this.#last === undefined)
            return undefined;

        const heard = this.#context.currentTime - (this.#context.outputLatency || 0);
        return Math.max (0, this.#last.beat + (heard - this.#last.time) * this.#tempo / 60);
    }

    async #open ()
    {
        if (typeof AudioContext !== "function")
            throw new Error (noWorklet);

        this.#context ??= new AudioContext ({ latencyHint: "interactive" });
        this.#context.resume();
        this.#node = await drumsIn (this.#context, this.#module, {});
        this.#node.port.onmessage = ({ data }) => this.#hear (data);
    }

    #hear (said)
    {
        if (! this.isPlaying || said.run !== this.#run)
            return;

        this.#last = said;

        if (! said.isPlaying)
        {
            this.isPlaying = false;
            this.#rest();
            this.onEnd();
        }
    }

    #rest ()
    {
        clearTimeout (this.#resting);
        this.#resting = setTimeout (() => this.#context?.suspend(), tailSeconds * 1000);
    }
}
