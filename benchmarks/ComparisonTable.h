// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Prints results beside their yardsticks: on a noisy machine a ratio of one run says more than a time.

#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <vector>

namespace pulsewright
{

/** Benchmarks are named "row/variant"; the variant that a row registers first is its yardstick. A counter
    "per" divides the time: so many things were done in one iteration. Shows medians.
*/
class ComparisonTable final : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext (const Context& context) override;
    void ReportRuns (const std::vector<Run>& runs) override;
    void Finalize() override;

private:
    struct Result
    {
        std::int64_t order; // of registration: runs come shuffled
        std::string row, variant;
        std::vector<double> nanoseconds; // a repetition each
        std::string remark;
    };

    std::vector<Result> results;
};

} // namespace pulsewright
