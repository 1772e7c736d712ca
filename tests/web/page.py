#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only
"""Drives the built page in Chromium by roles and names, as people with and without a screen reader do, and holds its files
and its sound to the command line's. Exits with 77 where the page or the browser is missing. With a folder for pictures it
only looks at the widths and leaves a picture of each.

Usage: page.py PAGE-FOLDER PULSEWRIGHT-CLI AXE.JS [PICTURE-FOLDER]
"""

import base64
import functools
import http.server
import json
import pathlib
import subprocess
import sys
import tempfile
import threading
import time

FOLDER, CLI, AXE = (pathlib.Path(name) for name in sys.argv[1:4])
PICTURES = pathlib.Path(sys.argv[4]) if len(sys.argv) > 4 else None

try:
    from selenium import webdriver
    from selenium.webdriver.common.action_chains import ActionChains
    from selenium.webdriver.common.by import By
    from selenium.webdriver.common.keys import Keys
    from selenium.webdriver.support.ui import Select
except ImportError:
    sys.exit(77)

if not (FOLDER / "engine.wasm").exists() or not pathlib.Path("/usr/bin/chromedriver").exists():
    sys.exit(77)

SCRATCH = tempfile.TemporaryDirectory()
DOWNLOADS = pathlib.Path(SCRATCH.name)
ELEMENTS = {"button": "button", "link": "a", "combobox": "select", "slider": "[type=range]", "checkbox": "[type=checkbox]",
            "spinbutton": "[type=number]", "textbox": "[type=text]", "image": "canvas", "heading": "h2"}

# Listens to what goes to the loudspeaker, and notes when the first sample that is not silent came by.
LISTEN = """const connect = AudioNode.prototype.connect;
AudioNode.prototype.connect = function (to, ...rest) {
    if (to instanceof AudioDestinationNode && ! (this.context instanceof OfflineAudioContext)) {
        const ear = this.context.createAnalyser(), samples = new Float32Array (ear.fftSize);
        connect.call (this, ear);
        const listen = setInterval (() => { ear.getFloatTimeDomainData (samples);
            if (samples.some (Math.abs)) { window.firstSound = performance.now(); clearInterval (listen); } }, 1);
    }
    return connect.call (this, to, ...rest);
};"""
IN_PAGE = {name: (pathlib.Path(__file__).parent / f"{name}.js").read_text() for name in ("takes", "sound")}


def run_cli(*arguments):
    return subprocess.run([CLI, *arguments], stdout=subprocess.PIPE, check=True).stdout


def browser():
    options = webdriver.ChromeOptions()
    options.binary_location = "/usr/bin/chromium"
    for option in ("headless=new", "no-sandbox", "disable-gpu", "disable-quic", "no-first-run", "disable-background-networking",
                   "disable-component-update", "disable-sync", "hide-scrollbars", "disable-dev-shm-usage"):
        options.add_argument("--" + option)
    driver = webdriver.Chrome(service=webdriver.chrome.service.Service("/usr/bin/chromedriver"), options=options)
    driver.execute_cdp_cmd("Browser.setDownloadBehavior", {"behavior": "allow", "downloadPath": SCRATCH.name})
    driver.set_script_timeout(100)
    return driver


class Quiet(http.server.SimpleHTTPRequestHandler):
    def translate_path(self, path):
        return str(DOWNLOADS / "sound.wav") if path == "/sound.wav" else super().translate_path(path)

    def log_message(self, *_):
        pass


SERVER = http.server.ThreadingHTTPServer(("127.0.0.1", 8000 if PICTURES else 0), functools.partial(Quiet, directory=FOLDER))
threading.Thread(target=SERVER.serve_forever, daemon=True).start()
ORIGIN = f"http://127.0.0.1:{SERVER.server_port}/"
DRIVER = browser()


def check(holds, *what):
    if not holds:
        raise AssertionError(" ".join(map(str, what)))


def wait_for(condition, what):
    for _ in range(1000):
        if value := condition():
            return value
        time.sleep(0.01)
    raise AssertionError(f"in vain: {what}; problem: {text_of('problem')}, status: {text_of('status')}")


def text_of(name):
    return "".join(element.text for element in DRIVER.find_elements(By.ID, name))


def open_page(fragment="", before=""):
    """@param before: a script that runs before the page's own"""
    DRIVER.get("about:blank")
    script = DRIVER.execute_cdp_cmd("Page.addScriptToEvaluateOnNewDocument", {"source": before})["identifier"]
    DRIVER.get(ORIGIN + fragment)
    wait_for(lambda: not DRIVER.find_elements(By.ID, "loading"), "the page")
    DRIVER.execute_cdp_cmd("Page.removeScriptToEvaluateOnNewDocument", {"identifier": script})


def get(role, name):
    found = [element for element in DRIVER.find_elements(By.CSS_SELECTOR, ELEMENTS[role])
             if element.accessible_name.startswith(name) and element.aria_role == role]
    check(len(found) == 1, len(found), role, name)
    return found[0]


def press(role, name, says=""):
    get(role, name).click()
    check(says in text_of("status"), name, "says:", text_of("status"))


def downloaded(name):
    file = DOWNLOADS / name
    wait_for(lambda: file.exists() and file.stat().st_size, name)  # Chromium makes it empty, then moves the whole one there
    data = file.read_bytes()
    file.unlink()
    return data


def code():
    return DRIVER.current_url.partition("#")[2]


def run_module(script, *arguments):
    """A script that may wait; its last argument is the function that takes the result."""
    return DRIVER.execute_async_script("(async (...arguments) => {" + script + "}) (...arguments);", *arguments)


#===============================================================================
def test_first_sound():
    open_page(before=LISTEN)
    ready = DRIVER.execute_script("return performance.now()")
    press("button", "Play")
    sound = wait_for(lambda: DRIVER.execute_script("return window.firstSound"), "a sound")
    wait_for(lambda: "Bar 2 of 2" in text_of("place"), "the second bar")
    press("button", "Stop", "Stopped.")
    weights = DRIVER.execute_script("return performance.getEntriesByType ('resource').map ((entry) => entry.name)")
    check(all(name.startswith(ORIGIN) for name in weights), "a request elsewhere:", weights)
    return f"usable before {ready:.0f} ms, first sound {sound:.0f} ms after opening, driver's click included"


def test_everything_by_role_and_name():
    Select(get("combobox", "Style")).select_by_visible_text("Trap")
    check("Trap" in text_of("status") and "140" == get("spinbutton", "Tempo").get_attribute("value"), text_of("status"))
    Select(get("combobox", "Pattern length")).select_by_visible_text("4 bars")
    press("button", "Generate groove", "Trap groove, 4 bars")
    check(get("image", "Trap Verse, 4 bars").accessible_name.count(",") == 5, "the picture's name")
    press("button", "New fill", "Trap fill, 4 bars")
    get("checkbox", "Lock Kick").click()
    press("button", "Mutate", "Trap mutation")
    check(code() == "" and "mutation" in text_of("preset-why"), "a mutation has a code")
    Select(get("combobox", "Song structure")).select_by_visible_text("Club")
    press("button", "Build", "Trap song")
    press("button", "Section Drop A", "Drop A is the pattern now")
    Select(get("combobox", "Playback")).select_by_visible_text("Full song")
    press("button", "Play", "Playing the song")
    wait_for(lambda: "Bar 1 of" in text_of("place"), "the song's first bar")
    get("spinbutton", "Tempo").send_keys(Keys.CONTROL, "a", Keys.NULL, "300", Keys.TAB)
    Select(get("combobox", "Kit")).select_by_visible_text("Dusty")
    wait_for(lambda: "Bar 3 of" in text_of("place"), "the bar after a change of tempo")
    press("button", "Stop", "Stopped.")
    before = code()
    get("slider", "Density").send_keys(Keys.RIGHT)
    wait_for(lambda: code() != before, "the music of another density")
    Select(get("combobox", "Earlier takes")).select_by_visible_text("Take 3: Trap fill, 4 bars")
    press("button", "Bring back", "is back")
    check("Fill" in get("heading", "").text, "the fill is not back")
    get("spinbutton", "Tempo").send_keys(Keys.CONTROL, "a", Keys.NULL, "20", Keys.TAB)
    check("30 to 300" in text_of("problem"), "20 BPM:", text_of("problem"))


def test_files_are_the_command_lines():
    Select(get("combobox", "Playback")).select_by_visible_text("Full song")
    press("button", "Build")
    Select(get("combobox", "Style")).select_by_visible_text("Dub")
    for link, name, command in (("Song as MIDI", "Pulsewright Song.mid", ["song", "--code", code(), "--midi", "-"]),
                                ("Groove as MIDI", "Pulsewright Pattern.mid", ["pattern", "--code", code(), "--midi", "-"]),
                                ("VST3 preset", "Pulsewright take.vstpreset",
                                 ["preset", code(), "--name", "Pulsewright take", "--vstpreset", "-"])):
        get("link", link).click()
        check(downloaded(name) == run_cli(*command), link)

    dragged = DRIVER.execute_script("""const link = arguments[0], dataTransfer = new DataTransfer();
        link.dispatchEvent (new PointerEvent ("pointerdown"));
        link.dispatchEvent (new DragEvent ("dragstart", { dataTransfer }));
        return dataTransfer.getData ("DownloadURL");""", get("link", "Song as MIDI"))
    check(dragged.startswith(f"audio/midi:Pulsewright Song.mid:blob:{ORIGIN}"), "dragged out:", dragged)

    takes = run_module(IN_PAGE["takes"])
    presets = 0
    for take in takes:
        for kind, command in (("groove", "pattern"), ("song", "song")):
            wanted = run_cli(command, "--code", take["code"], "--midi", "-")
            check(base64.b64decode(take[kind]) == wanted, kind, take["code"])
        if take["bytes"]:
            presets += 1
            wanted = run_cli("preset", take["code"], "--name", "A name", "--vstpreset", "-")
            check(base64.b64decode(take["bytes"]) == wanted, "preset", take["code"])
    check(len({take["code"] for take in takes}) == 100 and presets > 5, presets, "presets")
    return f"{len(takes)} codes, 200 MIDI files and {presets} presets equal"


def test_links():
    Select(get("combobox", "Playback")).select_by_visible_text("Pattern loop")
    shown = "return document.getElementById ('words').textContent"
    for name in ("Generate groove", "Build"):
        press("button", name)
        before, link, strokes = code(), "#" + code(), DRIVER.execute_script(shown)
        open_page()
        check(code() == before, "the last take is not kept")
        open_page("#PW1-Q8SFZ-XJZ69-0PUZS-RW050-50505-PQYQQ-8SQQQ-QQQQQ-MZVZRL")
        check(DRIVER.execute_script(shown) != strokes, "another link, the same music")
        DRIVER.execute_script("location.hash = arguments[0]", link)
        wait_for(lambda: DRIVER.execute_script(shown) == strokes, "the link's music")

    for wrong in ("PW1-Q8SFZ", before[:-1] + ("Q" if before[-1] != "Q" else "P"), "hello"):
        refusal = subprocess.run([CLI, "pattern", "--code", wrong], stderr=subprocess.PIPE, text=True, check=False).stderr
        open_page("#" + wrong)
        check(text_of("problem") and refusal.strip().endswith(text_of("problem")), wrong, ":", text_of("problem"), "/", refusal)


def test_sound_is_the_command_lines():
    heard = []
    for kit, genre, tempo in (("Studio", "boom bap", "90"), ("808", "trap", "141"), ("Dusty", "dub", "73"), ("Electronic", "drum & bass", "177")):
        options = ["song", "--genre", genre, "--tempo", tempo, "--kit", kit, "--bars", "16", "--take", "5"]
        take = json.loads(run_cli(*options, "--wav", DOWNLOADS / "sound.wav", "--json", "-"))
        heard.append(run_module(IN_PAGE["sound"], take["code"]))
        check(heard[-1]["loudest"] > 0.1 and heard[-1]["farthest"] <= 1.2e-7, kit, heard[-1])
    return f"{sum(each['frames'] for each in heard)} frames of four kits, at most {max(each['farthest'] for each in heard):.1e} away"


def test_refusals_are_said():
    suspended = "globalThis.AudioContext = class extends AudioContext { constructor () { super(); this.suspend(); } resume () {} };"
    for before, says in (("delete BaseAudioContext.prototype.audioWorklet; delete AudioContext.prototype.audioWorklet;", "no AudioWorklet"),
                         (suspended, "no sound device"),
                         ("Storage.prototype.setItem = () => { throw new Error(); };", "keeps nothing"),
                         ("delete globalThis.WebAssembly;", "no WebAssembly")):
        open_page(before=before)
        for button in DRIVER.find_elements(By.ID, "play"):
            if "Audio" in before:
                button.click()
        wait_for(lambda says=says: says in text_of("problem"), says)


def test_accessibility_and_widths():
    for width in (320, 360, 768, 1440, 3840):
        groove, long_song = "#PW1-Z25TU-27Z6T-GPUZS-RW050-50505-PQYQQ-JPSQQ-QQJQQ-KXHXYW", "#PW1-N05FZ-XJZ69-0PUZS-RW050-505QQ-QQQRD-P6WU6-EGQQQ-77UJT2"
        open_page(long_song if width == 3840 else groove)
        DRIVER.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {"width": width, "height": 900, "deviceScaleFactor": 1, "mobile": False})
        check(DRIVER.execute_script("return document.documentElement.scrollWidth") <= width, "wider than", width)
        DRIVER.execute_script(AXE.read_text())
        found = run_module("const [done] = arguments; done (await axe.run());")
        check(not found["violations"], width, [(rule["id"], [node["html"] for node in rule["nodes"]]) for rule in found["violations"]])
        if PICTURES:
            picture = DRIVER.execute_cdp_cmd("Page.captureScreenshot", {"captureBeyondViewport": True})
            (PICTURES / f"page-{width}.png").write_bytes(base64.b64decode(picture["data"]))
    DRIVER.execute_cdp_cmd("Emulation.clearDeviceMetricsOverride", {})
    return f"axe-core: {len(found['passes'])} rules pass, none fails"


def test_keyboard_alone():
    open_page(before="localStorage.clear()")
    log = []

    def walk_to(name, *keys):
        for _ in range(60):
            ActionChains(DRIVER).send_keys(Keys.TAB).perform()
            focus = DRIVER.switch_to.active_element
            log.append(f"{focus.aria_role} {focus.accessible_name}")
            if focus.accessible_name.startswith(name):
                ActionChains(DRIVER).send_keys(*keys).perform()
                log[-1] += f", pressed {len(keys)}"
                return check(focus.value_of_css_property("outline-style") == "solid", name, "shows no focus")
        raise AssertionError(f"not reached by tab: {name}; {log}")

    walk_to("Play", " ")
    walk_to("Style", "H")
    walk_to("Generate groove", Keys.ENTER)
    walk_to("Density", Keys.RIGHT, Keys.RIGHT)
    walk_to("Lock Kick", " ")
    walk_to("Groove as MIDI", Keys.ENTER)
    check("House Verse" == get("heading", "").text and "Kick is kept" in text_of("status"), text_of("status"))
    check(downloaded("Pulsewright Pattern.mid") == run_cli("pattern", "--code", code(), "--midi", "-"), "by keyboard")
    return "\n    " + "\n    ".join(log)


FAILED = 0
for title, test in [(title, test) for title, test in globals().items() if title.startswith("test_accessibility" if PICTURES else "test_")]:
    started = time.time()
    try:
        result = test() or "as it should"
        print(f"{title[5:].replace('_', ' ')} ({time.time() - started:.1f} s): {result}", flush=True)
    except Exception as error:  # the other tests have something to say too
        FAILED += 1
        print(f"{title[5:].replace('_', ' ')}: FAILED: {type(error).__name__}: {error}", flush=True)
DRIVER.quit()
sys.exit(FAILED > 0)
