// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "ComparisonTable.h"

#include <algorithm>
#include <cstdio>

namespace pulsewright
{

namespace
{
    double median (std::vector<double> values)
    {
        const auto middle = values.begin() + static_cast<std::ptrdiff_t> (values.size() / 2);
        std::nth_element (values.begin(), middle, values.end());
        return *middle;
    }

    std::string asTime (double nanoseconds)
    {
        char text[32];

        if (nanoseconds < 1e3)
            std::snprintf (text, sizeof (text), "%.2f ns", nanoseconds);
        else if (nanoseconds < 1e6)
            std::snprintf (text, sizeof (text), "%.2f us", nanoseconds / 1e3);
        else
            std::snprintf (text, sizeof (text), "%.2f ms", nanoseconds / 1e6);

        return text;
    }
} // namespace

bool ComparisonTable::ReportContext (const Context&)
{
    return true;
}

void ComparisonTable::ReportRuns (const std::vector<Run>& runs)
{
    for (const auto& run : runs)
    {
        if (run.run_type != Run::RT_Iteration)
            continue;

        const auto name  = run.run_name.function_name;
        const auto slash = name.rfind ('/');
        const auto per   = run.counters.find ("per");
        const auto time  = run.real_accumulated_time / static_cast<double> (run.iterations) * 1e9;

        auto found = std::find_if (results.begin(), results.end(), [&] (const Result& r) { return r.row + "/" + r.variant == name; });

        if (found == results.end())
            found = results.insert (results.end(), { run.family_index, name.substr (0, slash), name.substr (slash + 1), {}, {} });

        found->nanoseconds.push_back (per != run.counters.end() ? time / per->second.value : time);
        found->remark = run.error_occurred ? run.error_message : run.report_label;
    }
}

void ComparisonTable::Finalize()
{
    std::sort (results.begin(), results.end(), [] (const Result& a, const Result& b) { return a.order < b.order; });
    std::printf ("\n%-34s %-16s %12s %12s  %s\n", "what", "how", "median", "times faster", "");

    const Result* yardstick = nullptr;

    for (const auto& result : results)
    {
        const bool isFirst = yardstick == nullptr || yardstick->row != result.row;

        if (isFirst)
            yardstick = &result;

        const double time = median (result.nanoseconds);
        std::printf ("%-34s %-16s %12s", isFirst ? result.row.c_str() : "", result.variant.c_str(), asTime (time).c_str());

        if (isFirst)
            std::printf (" %12s", "");
        else
            std::printf (" %12.2f", median (yardstick->nanoseconds) / time);

        std::printf ("  %s\n", result.remark.c_str());
    }
}

} // namespace pulsewright
