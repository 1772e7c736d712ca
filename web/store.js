// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// What the browser keeps of the page until the next visit.

const key = "pulsewright";

/** What was kept, or {}. */
export function kept ()
{
    try
    {
        return JSON.parse (localStorage.getItem (key)) ?? {};
    }
    catch
    {
        return {};
    }
}

/** @returns whether the browser has let us */
export function keep (what)
{
    try
    {
        localStorage.setItem (key, JSON.stringify (what));
        return true;
    }
    catch
    {
        return false;
    }
}
