# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only

# Mends what JUCE 8.0.6 writes about the LV2, so that LV2's own validator has nothing to say. Run after every build of
# it: cmake -DBUNDLE=... -DLICENCE=... -P MendLv2Turtle.cmake

# Replaces what matches. Another JUCE may write something else: then that complaint stays, and the build says so.
function (mend file pattern replacement)
    file (READ "${BUNDLE}/${file}" text)
    string (REGEX REPLACE "${pattern}" "${replacement}" mended "${text}")

    if (mended STREQUAL text)
        message (WARNING "${file} has nothing that looks like this, and is left as it is: ${pattern}")
    endif()

    file (WRITE "${BUNDLE}/${file}" "${mended}")
endfunction()

# A maintainer and a release are a project's; a licence is missing.
mend (dsp.ttl "\ta lv2:InstrumentPlugin ;" "\ta lv2:InstrumentPlugin , lv2:Plugin , doap:Project ;\n\tdoap:license <${LICENCE}> ;")

# An enumeration is a port's property, and hosts want it of a parameter before they show its names.
mend (dsp.ttl "plug:([a-z_]+)\n\ta lv2:Parameter ;\n(\trdfs:label (\"[^\n]*\") ;\n[^.]*lv2:enumeration ;)"
              "plug:\\1\n\ta lv2:Parameter , lv2:Port ;\n\tlv2:symbol \"\\1\" ;\n\tlv2:name \\3 ;\n\\2")

# JUCE declares room for some 400 events; a dense block with a controller has more, and what does not fit is lost.
mend (dsp.ttl "rsz:minimumSize [0-9]+" "rsz:minimumSize 131072")

# The options are an interface, and the window may be resized.
mend (ui.ttl "\t\tui:noUserResize ,\n" "")
mend (ui.ttl "\t\topts:interface ,\n\t\topts:options ;" "\t\topts:options ;")

# The one program is the plug-in as it opens; it has no name and needs no preset.
mend (manifest.ttl "<[^>]*:preset1>.*\\] \\.\n" "")

# The presets set the plug-in's state, a property that JUCE uses and does not describe.
file (APPEND "${BUNDLE}/dsp.ttl" "
plug:StateString
	a rdf:Property ;
	rdfs:label \"State\" ;
	rdfs:comment \"What the plug-in saves, as text: its length, a dot, and its bytes in JUCE's variant of base64\" .
")
