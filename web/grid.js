// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The pattern as a picture, and in words.

const beatsPerBar = 4;
const barsInWords = 8; // of a longer pattern the rest is counted

const laneColours = ["--kick", "--snare", "--hats", "--perc"];

/** Where things lie, in CSS pixels. They grow with the page's letters: unit is 1 where those have their usual size. */
function geometryOf (canvas, numLanes)
{
    const { width, height } = canvas.getBoundingClientRect();
    const style = getComputedStyle (document.documentElement);
    const unit = parseFloat (style.fontSize) / 16;
    const left = unit * (width < 480 ? 52 : 66), right = 10 * unit, top = 8 * unit;
    const gridHeight = height - 2 * top;
    const colours = Object.fromEntries ([...laneColours, "--face", "--outline", "--muted"].map ((name) => [name, style.getPropertyValue (name)]));
    return { unit, width, height, left, top, gridWidth: width - left - right, gridHeight, rowHeight: gridHeight / numLanes, colours };
}

/** The share of the canvas's width that lies left of a beat. */
export function placeOf (canvas, beat, bars)
{
    const { width, left, gridWidth } = geometryOf (canvas, 1);
    return (left + beat / (bars * beatsPerBar) * gridWidth) / width;
}

export function draw (canvas, pattern, lanes)
{
    const geometry = geometryOf (canvas, lanes.length);
    const scale = devicePixelRatio || 1;
    canvas.width = Math.round (geometry.width * scale);
    canvas.height = Math.round (geometry.height * scale);

    const context = canvas.getContext ("2d");
    context.scale (scale, scale);
    drawRows (context, geometry, lanes);
    drawColumns (context, geometry, pattern.bars);
    drawHits (context, geometry, pattern);
}

function drawRows (context, { unit, left, top, gridWidth, rowHeight, colours }, lanes)
{
    context.font = `bold ${12 * unit}px system-ui, sans-serif`;
    context.textBaseline = "middle";

    lanes.forEach ((name, lane) =>
    {
        context.globalAlpha = lane % 2 === 0 ? 0.55 : 0.3;
        context.fillStyle = colours["--face"];
        context.fillRect (left, top + lane * rowHeight, gridWidth, rowHeight - 1);
        context.globalAlpha = 1;
        context.fillStyle = colours[laneColours[lane]];
        context.fillText (name, 8 * unit, top + (lane + 0.5) * rowHeight, left - 16 * unit);
    });
}

function drawColumns (context, { left, top, gridWidth, gridHeight, colours }, bars)
{
    const columns = bars * 16;
    const step = gridWidth / columns < 3 ? (gridWidth / bars < 12 ? 64 : 16) : 1; // many bars: no sixteenths

    for (let i = 0; i <= columns; i += step)
    {
        context.globalAlpha = i % 16 === 0 ? 0.48 : i % 4 === 0 ? 1 : 0.38;
        context.fillStyle = colours[i % 16 === 0 ? "--muted" : "--outline"];
        context.fillRect (Math.floor (left + i * gridWidth / columns), top, 1, gridHeight);
    }
}

function drawHits (context, { unit, left, top, gridWidth, rowHeight, colours }, { bars, hits })
{
    const narrow = Math.min (1, gridWidth / (bars * 16 * 7 * unit)); // long patterns get slimmer strokes

    for (const [beat, lane, velocity] of hits)
    {
        const loudness = velocity / 127;
        const size = (5 + 5 * loudness) * unit, width = Math.max (1.5, size * narrow);
        context.globalAlpha = 0.48 + 0.52 * loudness;
        context.fillStyle = colours[laneColours[lane]];
        context.fillRect (left + beat / (bars * beatsPerBar) * gridWidth - width / 2, top + (lane + 0.5) * rowHeight - size / 2, width, size);
    }

    context.globalAlpha = 1;
}

//==============================================================================
export const plural = (count, word) => `${count} ${word}${count === 1 ? "" : "s"}`;

/** For the picture's name: "2 bars, 35 strokes: Kick 7, Snare 4, Hats 20, Perc 4". */
export function summary ({ bars, hits }, lanes)
{
    const counts = lanes.map ((name, lane) => `${name} ${hits.filter ((hit) => hit[1] === lane).length}`);
    return `${plural (bars, "bar")}, ${plural (hits.length, "stroke")}: ${counts.join (", ")}`;
}

/** A sentence for each lane, with the strokes' beats counted from 1 in their bars. */
export function words ({ bars, hits }, lanes)
{
    return lanes.map ((name, lane) => `${name}: ${laneInWords (hits.filter ((hit) => hit[1] === lane), bars)}.`);
}

function laneInWords (hits, bars)
{
    if (hits.length === 0)
        return "no strokes";

    const told = [];

    for (let bar = 0; bar < Math.min (bars, barsInWords); ++bar)
        told.push (`bar ${bar + 1}: ${beatsOf (hits, bar)}`);

    const rest = hits.filter (([beat]) => beat >= barsInWords * beatsPerBar).length;
    return `${plural (hits.length, "stroke")}; ${told.join ("; ")}${rest ? `; and ${rest} more after bar ${barsInWords}` : ""}`;
}

function beatsOf (hits, bar)
{
    const inBar = hits.map (([beat]) => beat - bar * beatsPerBar).filter ((beat) => beat >= 0 && beat < beatsPerBar);
    return inBar.map ((beat) => +(beat + 1).toFixed (2)).join (", ") || "none";
}
