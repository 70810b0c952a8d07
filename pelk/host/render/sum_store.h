#pragma once

#include <mutex>
#include <vector>

#include "pelk/host/render/tile_sums.h"

namespace Tarnkit {

/// The sums of all tiles of a picture, for passes that come back to a tile and for checkpoints.
/// Threads work on copies and hand them in whole, under a lock for each tile: whatever is read here
/// at any time is a picture that a render could have stopped with.
class SumStore {
public:
    /// Without any samples. Asks for the memory of all sums, so that there is enough or it fails
    /// now and not amid the render; that of fragments, whose number nobody knows, comes with the
    /// commits. `packedFragment`: bytes of one, 0 if fragments are not kept.
    SumStore(const TileGrid& grid_, std::size_t packedFragment);

    const TileGrid& getGrid() const { return grid; }
    std::size_t getFragmentSize() const { return fragmentSize; }

    /// Copies the sums of a tile. Any thread.
    void load(int tile, TileSums& sums);
    /// Replaces the sums of a tile. Any thread, though one thread works on a tile at a time.
    void commit(int tile, const TileSums& sums);
    /// The samples of the pixels of all tiles.
    SampleRange getRange();
    long long numSamples();

private:
    struct Tile {
        std::mutex mutex;
        TileSums sums;
        SampleRange range{0, 0};
    };

    const TileGrid grid;
    const std::size_t fragmentSize;
    std::vector<Tile> tiles;
};

}  // namespace Tarnkit
