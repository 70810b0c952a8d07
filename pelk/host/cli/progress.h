#pragma once

#include <optional>
#include <string>

#include "pelk/host/cli/status_line.h"
#include "pelk/host/render/render_job.h"

namespace Tarnkit {

/// "1.25 M" for 1,250,000: three digits and a letter for the thousands.
std::string shortNumber(double value);

/// Hours, minutes and seconds, such as "1:02:03" or "0:07".
std::string clockTime(double seconds);

/// Tells on a terminal how far a render has come, how fast it goes and how long it will still take,
/// if the samples to come are as fast as those done.
class TerminalProgress final : public RenderProgress {
public:
    explicit TerminalProgress(StatusLine& statusLine) : status(statusLine) {}
    void update(long long done, long long total, double seconds) override;

private:
    StatusLine& status;
};

/// The same for programs that watch a render: JSON objects on standard output, one a line, with the
/// key "event" being "progress".
class JsonProgress final : public RenderProgress {
public:
    /// `frame`: its number goes into each line, if there is one.
    explicit JsonProgress(std::optional<int> frameNumber) : frame(frameNumber) {}
    void update(long long done, long long total, double seconds) override;

private:
    std::optional<int> frame;
};

}  // namespace Tarnkit
