// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "TakeSearch.h"

#include "TakeBound.h"

#include <algorithm>
#include <array>
#include <bit>
#include <chrono>
#include <condition_variable>
#include <limits>
#include <memory>
#include <mutex>
#include <thread>
#include <tuple>

namespace pulsewright
{

namespace
{
    constexpr auto streams = TakeKernels::streams;

    //==============================================================================
    /** The nearest so far, in order, each groove once. */
    class Nearest
    {
    public:
        explicit Nearest (const TakeQuery& queryToAnswer) : query (queryToAnswer) { takes.reserve (query.top + 1); }

        /** The farthest that is still worth a look. */
        Distance limit() const noexcept { return takes.size() < query.top ? std::numeric_limits<Distance>::max() : takes.back().distance; }

        bool wouldTake (Distance distance, std::size_t settings, std::uint32_t take) const noexcept
        {
            return takes.size() < query.top || keyOf (distance, settings, take) < keyOf (takes.back());
        }

        void add (FoundTake found)
        {
            if (const auto same = std::ranges::find (takes, found.pattern.hits, hitsOf); same != takes.end())
            {
                if (keyOf (*same) <= keyOf (found))
                    return;

                takes.erase (same);
            }

            const auto place = std::ranges::upper_bound (takes, keyOf (found), {}, [this] (const FoundTake& other) { return keyOf (other); });
            takes.insert (place, std::move (found));

            if (takes.size() > query.top)
                takes.pop_back();
        }

        std::vector<FoundTake> takes;

    private:
        static const std::vector<DrumHit>& hitsOf (const FoundTake& found) noexcept { return found.pattern.hits; }

        std::tuple<Distance, Genre, std::uint32_t, std::size_t> keyOf (Distance distance, std::size_t settings, std::uint32_t take) const noexcept
        {
            return { distance, query.settings[settings].genre, take, settings };
        }

        std::tuple<Distance, Genre, std::uint32_t, std::size_t> keyOf (const FoundTake& found) const noexcept
        {
            return keyOf (found.distance, found.settings, found.take);
        }

        const TakeQuery& query;
    };

    //==============================================================================
    /** What is the same for all takes of one of the query's settings. */
    struct Candidate
    {
        Candidate (const GenerationSettings& settings, SectionType section, const GrooveTarget& target)
            : plan (settings, section, target.bars()), bound (plan, target)
        {}

        GroovePlan plan;
        TakeBound bound;
    };

    /** What the jobs share. */
    struct Work
    {
        Work (const TakeQuery& queryToAnswer, const GrooveTarget& targetToReach, const std::atomic<bool>& stopToObey, const TakeKernels& kernelsToUse)
            : query (queryToAnswer), target (targetToReach), stop (stopToObey), kernels (kernelsToUse)
        {
            for (const auto& settings : query.settings)
            {
                candidates.emplace_back (settings, query.section, target);
                mostDraws = std::max (mostDraws, candidates.back().plan.mostDraws());
            }
        }

        static constexpr std::uint64_t groupsOfABlock = 16, takesOfABlock = groupsOfABlock * streams;

        std::uint64_t numTakes() const noexcept { return std::uint64_t { query.lastTake } - query.firstTake + 1; }
        std::uint64_t numBlocks() const noexcept { return (numTakes() + takesOfABlock - 1) / takesOfABlock; }

        const TakeQuery& query;
        const GrooveTarget& target;
        const std::atomic<bool>& stop;
        const TakeKernels& kernels;
        std::vector<Candidate> candidates;
        std::size_t mostDraws = 0;

        // under the mutex
        std::mutex mutex;
        std::condition_variable jobEnded;
        std::size_t jobsLeft = 0;

        // any job
        std::atomic<std::uint64_t> nextBlock { 0 }, searchedTakes { 0 };
        std::atomic<Distance> limit { std::numeric_limits<Distance>::max() }; // of the job that has come nearest
    };

    //==============================================================================
    /** One thread's share, with all the memory that it needs. */
    class Job
    {
    public:
        explicit Job (Work& workToShare)
            : nearest (workToShare.query),
              work (workToShare),
              state (streams * TakeKernels::stateSize),
              numbers (streams * std::max<std::size_t> (1, workToShare.mostDraws))
        {
            pattern.sectionType = work.query.section;
            pattern.bars        = work.target.bars();
            pattern.hits.reserve (GroovePlan::mostStrokesOfABar * static_cast<std::size_t> (pattern.bars));
        }

        void run()
        {
            for (std::uint64_t block; ! work.stop && (block = work.nextBlock++) < work.numBlocks();)
                searchBlock (block * Work::takesOfABlock);

            const std::lock_guard lock (work.mutex);
            --work.jobsLeft;
            work.jobEnded.notify_one();
        }

        Nearest nearest;

    private:
        void searchBlock (std::uint64_t first)
        {
            const auto end = std::min (work.numTakes(), first + Work::takesOfABlock);

            for (auto next = first; next < end && ! work.stop; next += streams)
            {
                const auto count = std::min<std::uint64_t> (streams, end - next);
                searchGroup (static_cast<std::uint32_t> (work.query.firstTake + next), count);
                work.searchedTakes += count;
            }
        }

        /** @param count  number of streams in use; the results of the others are ignored */
        void searchGroup (std::uint32_t firstTake, std::uint64_t count)
        {
            for (std::uint32_t stream = 0; stream < streams; ++stream)
                seeds[stream] = GroovePlan::mixedSeed (0, work.query.section, saltOf (firstTake + stream));

            work.kernels.draw (seeds.data(), work.mostDraws, state.data(), numbers.data());
            const auto counted = count < streams ? (std::uint64_t { 1 } << count) - 1 : ~std::uint64_t { 0 };

            for (std::size_t settings = 0; settings < work.candidates.size(); ++settings)
                for (auto isNear = weigh (work.candidates[settings].bound) & counted; isNear != 0; isNear &= isNear - 1)
                    measure (settings, firstTake, static_cast<std::uint32_t> (std::countr_zero (isNear)));
        }

        /** @returns a bit for each stream that may be near enough */
        std::uint64_t weigh (const TakeBound& bound)
        {
            const auto limit = std::min (nearest.limit(), work.limit.load (std::memory_order_relaxed)) >> TakeBound::shift;
            const auto most  = static_cast<std::int32_t> (std::min<Distance> (limit, std::numeric_limits<std::int32_t>::max()));
            auto isNear      = ~std::uint64_t { 0 };

            for (std::uint32_t stream = 0; stream < streams; ++stream)
                positions[stream] = static_cast<std::int32_t> (stream);

            sums.fill (bound.start());

            for (const auto& bar : bound.bars())
            {
                const auto mostNow =
                    static_cast<std::int32_t> (std::min<Distance> (Distance { most } - bar.bestLater, std::numeric_limits<std::int32_t>::max()));
                isNear = work.kernels.weigh (bar.strokes.data(), bar.strokes.size(), numbers.data(), positions.data(), sums.data(), mostNow);

                if (isNear == 0)
                    break;
            }

            return isNear;
        }

        void measure (std::size_t settings, std::uint32_t firstTake, std::uint32_t stream)
        {
            const auto least = Distance { sums[stream] } << TakeBound::shift;

            if (! nearest.wouldTake (least, settings, firstTake + stream))
                return;

            const auto* next = numbers.data() + stream;
            pattern.hits.clear();
            work.candidates[settings].plan.play (pattern.hits,
                                                 [&next]
                                                 {
                                                     const auto number = *next;
                                                     next += streams;
                                                     return number;
                                                 });
            normalise (pattern);

            const auto distance = work.target.distanceTo (pattern, scratch);

            if (! nearest.wouldTake (distance, settings, firstTake + stream))
                return;

            nearest.add ({ distance, settings, firstTake + stream, pattern });
            lower (nearest.limit());
        }

        void lower (Distance limit) noexcept
        {
            auto known = work.limit.load (std::memory_order_relaxed);

            while (limit < known && ! work.limit.compare_exchange_weak (known, limit, std::memory_order_relaxed))
            {}
        }

        Work& work;
        std::array<std::uint32_t, streams> seeds {};
        std::array<std::int32_t, streams> positions {}, sums {};
        std::vector<std::uint32_t> state, numbers;
        DrumPattern pattern;
        GrooveTarget::Scratch scratch;
    };

    void waitFor (Work& work, const std::function<void (double)>& onShare)
    {
        std::unique_lock lock (work.mutex);

        while (! work.jobEnded.wait_for (lock, std::chrono::milliseconds (50), [&work] { return work.jobsLeft == 0; }))
            onShare (static_cast<double> (work.searchedTakes) / static_cast<double> (work.numTakes()));
    }
} // namespace

TakesFound findTakes (const TakeQuery& query,
                      const GrooveTarget& target,
                      const std::atomic<bool>& stop,
                      const std::function<void (double)>& onShare,
                      const TakeKernels& kernels)
{
    Work work (query, target, stop, kernels);
    std::vector<std::unique_ptr<Job>> jobs;
    work.jobsLeft = query.jobs;

    for (std::size_t i = 0; i < query.jobs; ++i)
        jobs.push_back (std::make_unique<Job> (work));

    {
        std::vector<std::jthread> threads;
        threads.reserve (jobs.size());

        for (const auto& job : jobs)
            threads.emplace_back ([&job] { job->run(); });

        waitFor (work, onShare);
    }

    Nearest nearest (query);
    for (const auto& job : jobs)
        for (auto& found : job->nearest.takes)
            nearest.add (std::move (found));

    return { work.searchedTakes * query.settings.size(), work.searchedTakes == work.numTakes(), std::move (nearest.takes) };
}

} // namespace pulsewright
