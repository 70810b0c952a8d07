// Checkpoints: a render goes on with all of a file or nothing, whatever the size of its tiles.

#include "pelk/host/render/checkpoint.h"

#include "fuzz/sealed_file.h"

using namespace Tarnkit;

namespace {

constexpr u32 kMostSamples = 1u << 20;

/// The samples that the store has after reading; -1 if it can't be read.
long long readWithTiles(const CheckpointOptions& options, int tileSize, std::size_t fragment) {
    SumStore store(TileGrid(options.header.rect, tileSize), fragment);
    SamplingTotals totals;
    std::string error;
    bool systemFault = false;
    const bool read = readCheckpoint(options, kMostSamples, store, totals, error, systemFault);
    require(read == error.empty(), "a refusal has words");
    return read ? store.numSamples() : -1;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::uint8_t> bytes = sealedFile(data, size);
    const MemoryFile memory(bytes.data(), bytes.size());
    CheckpointOptions options;
    options.file = memory.name();
    options.resume = true;
    EnvelopeReader file(options.file);
    if (!file.readHeader(FileKind::Checkpoint) || file.getHeader().rect.numPixels() > 1 << 14)
        return 0;
    options.header = file.getHeader();
    for (const std::size_t fragment : {std::size_t{0}, packedFragmentSize(16)}) {
        const long long samples = readWithTiles(options, 16, fragment);
        require(samples == readWithTiles(options, 5, fragment),
                "tiles of any size read the same samples");
    }
    return 0;
}
