// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The page in Firefox: its files and its sound against the command line's, its live sound through a sound server that
// nobody hears, axe-core. page.py has the rest. Usage: firefox.mjs PAGE-FOLDER PULSEWRIGHT-CLI NODE-MODULES

import { execFileSync, spawn } from "node:child_process";
import { existsSync, mkdtempSync, readFileSync, rmSync } from "node:fs";
import { createServer } from "node:http";
import { createRequire } from "node:module";
import { tmpdir } from "node:os";
import { extname, join, resolve } from "node:path";

const [folder, cli, modules] = process.argv.slice (2).map ((path) => resolve (path));
const puppeteer = createRequire (modules + "/") ("puppeteer-core").default;
const scratch = mkdtempSync (join (tmpdir(), "firefox-"));
const inPage = (name) => readFileSync (new URL (name, import.meta.url), "utf8");
const run = (...options) => execFileSync (cli, options, { maxBuffer: 1 << 24 });
const types = { ".html": "text/html", ".js": "text/javascript", ".css": "text/css", ".svg": "image/svg+xml" };

function check (holds, ...what)
{
    if (! holds)
        throw new Error (what.join (" "));
}

const server = createServer (({ url }, response) =>
{
    const file = url === "/sound.wav" ? join (scratch, "sound.wav") : join (folder, url === "/" ? "index.html" : url);
    response.writeHead (existsSync (file) ? 200 : 404, { "content-type": types[extname (file)] ?? "application/octet-stream" });
    response.end (existsSync (file) ? readFileSync (file) : "");
}).listen (0, "127.0.0.1");

const env = { ...process.env, HOME: scratch, XDG_RUNTIME_DIR: scratch };
const pulse = spawn ("pulseaudio", ["-n", "--daemonize=no", "--exit-idle-time=-1", "--load=module-null-sink", "--load=module-native-protocol-unix"],
                     { env, stdio: "ignore" });
const browser = await puppeteer.launch ({ browser: "firefox", executablePath: "/usr/bin/firefox-esr", headless: true, env });

try
{
    const page = await browser.newPage();
    const text = (id) => page.$eval ("#" + id, (element) => element.textContent);
    const press = (name) => page.locator (`::-p-aria([name="${name}"][role="button"])`).click();
    const wait = (script, ...values) => page.evaluate (`new Promise ((done) => (async (...arguments) => {${script}}) (...${JSON.stringify (values)}, done))`);

    await page.goto (`http://127.0.0.1:${server.address().port}/`);
    await press ("Generate groove");
    check ((await text ("status")).startsWith ("Take 1: Boom Bap groove"), await text ("status"));

    const takes = await wait (inPage ("takes.js"));
    for (const { code, groove, song } of takes)
        for (const [command, midi] of [["pattern", groove], ["song", song]])
            check (Buffer.from (midi, "base64").equals (run (command, "--code", code, "--midi", "-")), command, code);

    let farthest = 0;
    for (const kit of ["Studio", "808", "Dusty", "Electronic"])
    {
        const take = JSON.parse (run ("song", "--bars", "16", "--kit", kit, "--wav", join (scratch, "sound.wav"), "--json", "-"));
        farthest = Math.max (farthest, (await wait (inPage ("sound.js"), take.code)).farthest);
    }
    check (farthest <= 1.2e-7, "sound", farthest);

    await press ("Play");
    await page.waitForFunction (() => document.getElementById ("place").textContent.includes ("Bar 2 of 2"), { timeout: 20000 });
    await press ("Stop");

    await page.evaluate (readFileSync (join (modules, "axe-core/axe.min.js"), "utf8"));
    const { violations } = await page.evaluate (() => axe.run());
    check (violations.length === 0, JSON.stringify (violations));
    console.log (`${await browser.version()}: ${takes.length} codes equal, sound at most ${farthest} away, heard live, axe-core finds nothing`);
}
finally
{
    await browser.close();
    pulse.kill();
    server.close();
    rmSync (scratch, { recursive: true, force: true });
}
