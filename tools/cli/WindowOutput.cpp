// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "Output.h"
#include "OutputFile.h"
#include "Program.h"

#include <array>
#include <cstdio>

namespace pulsewright::cli
{

namespace
{
    std::string digitsOf (const char* format, auto value)
    {
        std::array<char, 32> text {};
        std::snprintf (text.data(), text.size(), format, value);
        return text.data();
    }
} // namespace

void writeWindowPicture (const std::string& target, const WindowPicture& picture)
{
    const auto png = outputOfProgram ("pulsewright-window",
                                      { digitsOf ("%d", picture.width),
                                        digitsOf ("%d", picture.height),
                                        digitsOf ("%.9g", static_cast<double> (picture.scale)),
                                        digitsOf ("%d", picture.genre),
                                        digitsOf ("%u", picture.take) });
    writeOutput (target, png);
}

} // namespace pulsewright::cli
