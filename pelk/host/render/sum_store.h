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
    /// Without any samples; a tile takes memory from its first commit on.
    SumStore(const TileGrid& grid_, bool hasFragments_)
        : grid(grid_), hasFragments(hasFragments_), tiles(static_cast<std::size_t>(grid.size())) {}

    const TileGrid& getGrid() const { return grid; }

    /// Copies the sums of a tile. Any thread.
    void load(int tile, TileSums& sums);
    /// Replaces the sums of a tile. Any thread, though one thread works on a tile at a time.
    void commit(int tile, const TileSums& sums);
    /// The samples of the pixels of all tiles.
    SampleRange getRange();

private:
    struct Tile {
        std::mutex mutex;
        TileSums sums;
        SampleRange range{0, 0};
    };

    const TileGrid grid;
    const bool hasFragments;
    std::vector<Tile> tiles;
};

}  // namespace Tarnkit
