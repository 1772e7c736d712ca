// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Native controls, made of the engine's tables.

/** An element with properties and children. */
export function made (tag, properties = {}, ...children)
{
    const element = Object.assign (document.createElement (tag), properties);
    element.append (...children);
    return element;
}

function help (id, text)
{
    return made ("small", { id: id + "-help", textContent: text });
}

function described (control)
{
    control.setAttribute ("aria-describedby", control.id + "-help");
    return control;
}

/** Fills the place that the page has for a choice. @param choose  called with the chosen index */
export function addChoice (row, choose)
{
    const place = document.querySelector (`[data-choice="${row.id}"]`);
    const options = row.names.map ((name, i) => made ("option", { value: i, textContent: name }));
    const box = described (made ("select", { id: row.id, onchange: () => choose (box.selectedIndex) }, ...options));

    place.className = "field";
    place.append (made ("label", { htmlFor: row.id, textContent: row.name }), box, help (row.id, row.help));
    return box;
}

/** A percentage. @param move  called with a value from 0 to 1 */
export function addPercentage (place, row, move)
{
    const number = made ("output", { htmlFor: row.id });
    const slider = described (made ("input", { id: row.id, type: "range", min: 0, max: 100, step: 1 }));
    const show = (percent) =>
    {
        number.textContent = percent + " %";
        slider.setAttribute ("aria-valuetext", number.textContent);
    };

    slider.oninput = () => { show (slider.value); move (slider.value / 100); };
    place.append (made ("div", { className: "field" },
                        made ("label", { htmlFor: row.id, textContent: row.name }), number, slider, help (row.id, row.help)));

    return (value) => { slider.value = Math.round (value * 100); show (slider.value); };
}

/** @param turn  called with whether it is on */
export function addSwitch (place, id, text, turn)
{
    const box = made ("input", { id, type: "checkbox", onchange: () => turn (box.checked) });
    place.append (made ("div", { className: "switch" }, box, made ("label", { htmlFor: id, textContent: text })));
    return box;
}

/** A file behind a link, made when somebody reaches for it. @param make  gives its bytes; nothing when there is no file now */
export function offer (link, make, type)
{
    const placeholder = "#"; // a link without an address is out of the keyboard's reach

    if (link.href.startsWith ("blob:"))
        URL.revokeObjectURL (link.href);

    make ? link.href = placeholder : link.removeAttribute ("href");
    link.onpointerdown = link.onclick = () =>
    {
        if (make && ! link.href.startsWith ("blob:"))
            link.href = URL.createObjectURL (new Blob ([make()], { type }));
    };

    // Chromium makes a file of this when the link is dragged out of the window.
    link.ondragstart = (event) => event.dataTransfer.setData ("DownloadURL", `${type}:${link.download}:${link.href}`);
}
