// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The engine that makes the music, with its answers as JavaScript's own values.

import { imports, started } from "./wasm.js";

/** @throws Error  with a sentence for people */
async function compiled ()
{
    if (typeof WebAssembly !== "object")
        throw new Error ("This browser has no WebAssembly, so there is no music.");

    const response = await fetch ("engine.wasm");

    if (! response.ok)
        throw new Error (`The engine could not be loaded: ${response.status} ${response.statusText}.`);

    try
    {
        return await WebAssembly.compile (await response.arrayBuffer());
    }
    catch (error)
    {
        throw new Error (`This browser's WebAssembly is too old; it needs vectors and exceptions. (${error.message})`);
    }
}

export async function loadEngine ()
{
    const module = await compiled();
    return new Engine (module, started (await WebAssembly.instantiate (module, imports)));
}

class Engine
{
    #calls;

    constructor (module, calls)
    {
        this.module = module; // for the audio thread's own instance
        this.#calls = calls;
        this.run ("Open");
        this.tables = JSON.parse (this.#text ("Tables"));
    }

    /** Calls what changes the music or the choices. @returns the reason when it is refused, else nothing */
    run (name, ...numbers)
    {
        return this.#calls["page" + name] (...numbers) ? undefined : new TextDecoder().decode (this.#output());
    }

    /** All that the page shows. */
    state ()
    {
        return JSON.parse (this.#text ("State"));
    }

    openCode (code)
    {
        this.#give (code);
        return this.run ("OpenCode");
    }

    music ()            { return this.#bytes ("Music"); }
    midi (isSong)       { return this.#bytes ("Midi", isSong); }

    /** @returns { bytes } or { why } there are none */
    preset (name)
    {
        this.#give (name);
        const why = this.run ("Preset");
        return why ? { why } : { bytes: this.#output().slice() };
    }

    #give (text)
    {
        const bytes = new TextEncoder().encode (text);
        new Uint8Array (this.#calls.memory.buffer, this.#calls.pageInput (bytes.length), bytes.length).set (bytes);
    }

    #bytes (name, ...numbers)
    {
        this.run (name, ...numbers);
        return this.#output().slice();
    }

    #text (name)
    {
        this.run (name);
        return new TextDecoder().decode (this.#output());
    }

    #output ()
    {
        return new Uint8Array (this.#calls.memory.buffer, this.#calls.pageOutput(), this.#calls.pageOutputSize());
    }
}
