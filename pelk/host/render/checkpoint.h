#pragma once

#include <string>

#include "pelk/host/picture/file_envelope.h"
#include "pelk/host/render/sum_store.h"

namespace Tarnkit {

/// Where a render keeps what it has, so that it can go on another time.
struct CheckpointOptions {
    std::string file;
    double seconds = 0.0;  ///< between two; 0: only when the render ends, early or not
    /// Goes on with what the file has. A file that isn't there yet is none to go on with, so the
    /// same command serves for the first time and for every other.
    bool resume = false;
    /// Noise decides, so that the render has whole blocks of pixels, beyond those that are shown.
    bool inBlocks = false;
    /// What a file must agree in for a render to go on with it, fingerprint and size of the
    /// picture, and what is written about the scene and the program.
    FileHeader header;
};

/// What is known of the samples in a store beside the sums.
struct SamplingTotals {
    double seconds = 0.0;   ///< of tracing rays
    long long dropped = 0;  ///< samples, as RenderResult counts them
    std::string droppedBy;  ///< an instance that made one of them
};

/// Writes all that a render has to a checkpoint, tile after tile, while threads may go on adding
/// samples: each tile is as of one moment. The file appears whole or not at all; on failure `error`
/// names it and says why.
bool writeCheckpoint(const CheckpointOptions& options, SumStore& store,
                     const SamplingTotals& totals, std::string& error);

/// Whether there is a checkpoint to go on with.
bool hasCheckpoint(const CheckpointOptions& options);

/// Reads a checkpoint into a store that has no samples yet, of the same pixels, whatever the size
/// of its tiles. False with an `error` that names the file if it is damaged or of another render,
/// or if a pixel has more than `mostSamples` already; `systemFault` tells whether it was the system
/// that failed. The store is then of no use.
bool readCheckpoint(const CheckpointOptions& options, u32 mostSamples, SumStore& store,
                    SamplingTotals& totals, std::string& error, bool& systemFault);

}  // namespace Tarnkit
