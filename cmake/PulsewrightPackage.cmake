# SPDX-FileCopyrightText: 2026 Tolm
# SPDX-License-Identifier: AGPL-3.0-only

# What is installed where, and the packages that CPack makes of it: `./dev package`. The same commit gives the same
# bytes: SOURCE_DATE_EPOCH, which the script sets, is the time of everything.

set (CMAKE_INSTALL_DOCDIR share/doc/pulsewright CACHE STRING "Where the documents go")
include (GNUInstallDirs)

# Both are SOURCE_DATE_EPOCH's.
string (TIMESTAMP PULSEWRIGHT_RELEASE_DATE "%Y-%m-%d" UTC)
string (TIMESTAMP PULSEWRIGHT_PACKAGE_TIME "%a, %d %b %Y %H:%M:%S +0000" UTC)

set (CPACK_PACKAGE_CONTACT "Tolm <${PULSEWRIGHT_EMAIL}>")
set (packaging "${CMAKE_CURRENT_SOURCE_DIR}/packaging")
set (packaged "${CMAKE_CURRENT_BINARY_DIR}/packaging")

# The plug-ins, where hosts look for them.
get_target_property (vst3_bundle Pulsewright_VST3 JUCE_PLUGIN_ARTEFACT_FILE)
get_target_property (lv2_bundle Pulsewright_LV2 JUCE_PLUGIN_ARTEFACT_FILE)
install (DIRECTORY "${vst3_bundle}" DESTINATION lib/vst3)
install (DIRECTORY "${lv2_bundle}" DESTINATION lib/lv2)
install (DIRECTORY "${PROJECT_BINARY_DIR}/presets/" DESTINATION share/vst3/presets/Tolm/Pulsewright)

# The programs.
install (PROGRAMS "$<TARGET_FILE:Pulsewright_Standalone>" DESTINATION "${CMAKE_INSTALL_BINDIR}" RENAME pulsewright)
install (TARGETS pulsewright-window RUNTIME DESTINATION lib/pulsewright)
install (TARGETS pulsewright-cli RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")

# What shells complete the command line with: the tool prints it.
function (install_completions shell file)
    set (script "${packaged}/completions/${file}")
    get_filename_component (folder "${script}" DIRECTORY)
    add_custom_command (OUTPUT "${script}"
        COMMAND ${CMAKE_COMMAND} -E make_directory "${folder}"
        COMMAND pulsewright-cli --completions ${shell} > "${script}"
        DEPENDS pulsewright-cli)
    add_custom_target (completions_${shell} ALL DEPENDS "${script}")
    get_filename_component (destination "${CMAKE_INSTALL_DATADIR}/${file}" DIRECTORY)
    install (FILES "${script}" DESTINATION "${destination}")
endfunction()

install_completions (bash bash-completion/completions/pulsewright-cli)
install_completions (zsh zsh/vendor-completions/_pulsewright-cli)
install_completions (fish fish/vendor_completions.d/pulsewright-cli.fish)

# What a desktop shows.
configure_file ("${packaging}/com.tolm.pulsewright.metainfo.xml.in" "${packaged}/com.tolm.pulsewright.metainfo.xml" @ONLY)
install (FILES "${packaging}/pulsewright.desktop" DESTINATION "${CMAKE_INSTALL_DATADIR}/applications")
install (FILES "${packaging}/pulsewright.svg" DESTINATION "${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps")
install (FILES "${packaged}/com.tolm.pulsewright.metainfo.xml" DESTINATION "${CMAKE_INSTALL_DATADIR}/metainfo")

# What a reader finds. Manual pages and the changelog are compressed, as Debian has them.
function (install_compressed file destination)
    get_filename_component (name "${file}" NAME)
    add_custom_command (OUTPUT "${packaged}/${name}.gz"
        COMMAND gzip -9nc "${file}" > "${packaged}/${name}.gz"
        DEPENDS "${file}")
    add_custom_target (compress_${name} ALL DEPENDS "${packaged}/${name}.gz")
    install (FILES "${packaged}/${name}.gz" DESTINATION "${destination}")
endfunction()

foreach (page pulsewright.1 pulsewright-cli.1)
    configure_file ("${packaging}/${page}.in" "${packaged}/${page}" @ONLY)
    install_compressed ("${packaged}/${page}" "${CMAKE_INSTALL_MANDIR}/man1")
endforeach()

configure_file (CHANGELOG.md "${packaged}/changelog" COPYONLY)
install_compressed ("${packaged}/changelog" "${CMAKE_INSTALL_DOCDIR}")
configure_file ("${packaging}/changelog.Debian.in" "${packaged}/changelog.Debian" @ONLY)
install_compressed ("${packaged}/changelog.Debian" "${CMAKE_INSTALL_DOCDIR}")

install (FILES debian/copyright DESTINATION "${CMAKE_INSTALL_DOCDIR}")

# The documents and their pictures. Links to what is elsewhere in the sources lead to where it is installed.
set (documents manual.md troubles.md takes.md window.md take-code.md third-party.md)
set (pictures window-1120x840 boxes sections knobs lanes grid styles export)
list (TRANSFORM pictures REPLACE "(.+)" "pictures/\\1.png")

foreach (document ${documents})
    file (READ "docs/${document}" text)
    string (REPLACE "](../CHANGELOG.md" "](changelog.gz" text "${text}")
    string (REPLACE "](../LICENSE" "](copyright" text "${text}")
    file (WRITE "${packaged}/${document}" "${text}")
    install (FILES "${packaged}/${document}" DESTINATION "${CMAKE_INSTALL_DOCDIR}")

    string (REPLACE "](" "\nlink:" links "${text}")
    string (REGEX MATCHALL "\nlink:[^)#\n]+" links "${links}")
    list (TRANSFORM links REPLACE "\nlink:" "")
    list (FILTER links EXCLUDE REGEX "^https:")
    list (REMOVE_ITEM links ${documents} ${pictures} pictures changelog.gz copyright)

    if (links)
        message (FATAL_ERROR "docs/${document} is installed, and what it links to is not: ${links}")
    endif()
endforeach()

foreach (picture ${pictures})
    install (FILES "docs/${picture}" DESTINATION "${CMAKE_INSTALL_DOCDIR}/pictures")
endforeach()

#===============================================================================
set (CPACK_GENERATOR DEB TGZ)
set (CPACK_PACKAGE_NAME pulsewright)
set (CPACK_PACKAGE_VENDOR Tolm)
set (CPACK_PACKAGE_HOMEPAGE_URL "${PROJECT_HOMEPAGE_URL}")
set (CPACK_PACKAGE_DESCRIPTION_SUMMARY "genre-aware drum song generator")
set (CPACK_PACKAGE_DESCRIPTION "Pulsewright generates drum grooves and whole songs in seven styles from a
seed, plays them in time with the host, sounds them with its own kit or drives
others with MIDI, and writes MIDI files. As an app, as VST3 and LV2 plug-ins,
and on the command line.")
set (CPACK_PACKAGE_FILE_NAME "pulsewright-${PROJECT_VERSION}-linux-${CMAKE_SYSTEM_PROCESSOR}")
set (CPACK_VERBATIM_VARIABLES ON)
set (CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set (CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set (CPACK_DEBIAN_PACKAGE_RELEASE 1)
set (CPACK_DEBIAN_PACKAGE_SECTION sound)
set (CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# JUCE opens these when there is a window to draw; nothing is linked to them.
set (CPACK_DEBIAN_PACKAGE_DEPENDS "libx11-6, libxcursor1, libxext6, libxinerama1, libxrandr2, libxrender1, fonts-dejavu-core | fonts-liberation2 | fonts-noto-core")
set (CPACK_DEBIAN_PACKAGE_RECOMMENDS "zenity | kdialog, libjack-jackd2-0 | libjack-0.125")
set (CPACK_DEBIAN_PACKAGE_SUGGESTS "ardour")

include (CPack)
