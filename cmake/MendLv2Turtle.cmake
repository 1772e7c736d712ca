# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only

# Mends what JUCE 8.0.6 writes about the LV2, so that LV2's own validator has nothing to say. Run after every build of
# it: cmake -DBUNDLE=... -DLICENCE=... -DHOMEPAGE=... -P MendLv2Turtle.cmake

# Replaces a text that has to be there.
function (mend file from to)
    file (READ "${BUNDLE}/${file}" text)
    string (REPLACE "${from}" "${to}" mended "${text}")

    if (mended STREQUAL text)
        message (FATAL_ERROR "${file} no longer has what is to be mended: ${from}")
    endif()

    file (WRITE "${BUNDLE}/${file}" "${mended}")
endfunction()

# A maintainer and a release are a project's; a licence is missing.
mend (dsp.ttl "\ta lv2:InstrumentPlugin ;" "\ta lv2:InstrumentPlugin , lv2:Plugin , doap:Project ;\n\tdoap:license <${LICENCE}> ;")
mend (dsp.ttl "foaf:homepage <> ;\n\t\tfoaf:mbox <> ;" "foaf:homepage <${HOMEPAGE}> ;")

# An enumeration is a port's property, and hosts want it of a parameter before they show its names.
file (READ "${BUNDLE}/dsp.ttl" text)
string (REGEX REPLACE "plug:([a-z_]+)\n\ta lv2:Parameter ;\n(\trdfs:label (\"[^\n]*\") ;\n[^.]*lv2:enumeration ;)"
                      "plug:\\1\n\ta lv2:Parameter , lv2:Port ;\n\tlv2:symbol \"\\1\" ;\n\tlv2:name \\3 ;\n\\2" text "${text}")
file (WRITE "${BUNDLE}/dsp.ttl" "${text}")

# JUCE declares room for some 400 events; a dense block with a controller has more, and what does not fit is lost.
mend (dsp.ttl "rsz:minimumSize 9488" "rsz:minimumSize 131072")

# The options are an interface, and the window may be resized.
mend (ui.ttl "\t\tui:noUserResize ,\n\t\tui:resize ;" "\t\tui:resize ;")
mend (ui.ttl "\t\tui:resize ,\n\t\topts:interface ,\n\t\topts:options ;" "\t\tui:resize ,\n\t\topts:options ;")

# The one program is the plug-in as it opens; it has no name and needs no preset.
file (READ "${BUNDLE}/manifest.ttl" text)
string (REGEX REPLACE "<[^>]*:preset1>.*\\] \\.\n" "" text "${text}")
file (WRITE "${BUNDLE}/manifest.ttl" "${text}")
