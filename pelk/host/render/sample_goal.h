#pragma once

#include <atomic>
#include <chrono>
#include <optional>
#include <vector>

#include "pelk/base/types.h"
#include "pelk/host/render/render_workers.h"

namespace Tarnkit {

/// When a run of samples is to end early. Asked by one render thread every few samples, so that one
/// pixel with thousands of slow ones does not hold up who waits for the end.
class StopTest {
public:
    using Deadline = std::optional<std::chrono::steady_clock::time_point>;

    /// Never.
    StopTest() = default;
    /// As soon as `flag` is set, the run of `thread` is to end, or the deadline is over. Both live
    /// longer than this.
    StopTest(const std::atomic<bool>& flag, const Worker& thread, const Deadline& until)
        : stop(&flag), worker(&thread), deadline(until) {}

    bool isDue() const {
        if (!stop)
            return false;
        return stop->load(std::memory_order_relaxed) || worker->mustStop() ||
               (deadline && std::chrono::steady_clock::now() >= *deadline);
    }

private:
    const std::atomic<bool>* stop = nullptr;
    const Worker* worker = nullptr;
    Deadline deadline;
};

/// How many samples the pixels of a tile are to have by the end of a pass.
struct SampleGoal {
    u32 samples = 0;
};

/// Where the pass ends in which a pixel gets its sample number `taken`, counted from 0: at 1, 2, 4,
/// 8, 16, 32, and from there on in steps of a half and a third: 48, 64, 96, 128, 192, ... Passes
/// that grow cost next to nothing beside their samples; the finer steps are there for renders that
/// end by their noise, which would take up to twice the samples that they need.
constexpr u32 passEnd(u32 taken) {
    constexpr u32 kFirstFine = 32;
    u32 end = 1;
    while (end <= taken)
        end *= 2;
    const u32 between = end / 4 * 3;
    return end > kFirstFine && between > taken ? between : end;
}

}  // namespace Tarnkit
