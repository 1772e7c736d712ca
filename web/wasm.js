// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// What the module asks of whoever runs it: nothing that would do anything.

export const imports =
{
    env: { emscripten_notify_memory_growth () {} }, // views of the memory are made anew for each use
    wasi_snapshot_preview1: { proc_exit () {} }
};

/** The module's functions, ready to be called. */
export function started (instance)
{
    instance.exports._initialize();
    return instance.exports;
}
