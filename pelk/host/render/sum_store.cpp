#include "pelk/host/render/sum_store.h"

namespace Tarnkit {

SumStore::SumStore(const TileGrid& grid_, std::size_t packedFragment)
    : grid(grid_), fragmentSize(packedFragment), tiles(static_cast<std::size_t>(grid.size())) {
    int index = 0;
    for (Tile& tile : tiles) {
        const auto pixels = static_cast<std::size_t>(grid.at(index++).numPixels());
        tile.sums.pixels.reserve(pixels);
        if (fragmentSize > 0)
            tile.sums.fragmentBytes.reserve(pixels);
    }
}

void SumStore::load(int index, TileSums& sums) {
    Tile& tile = tiles[static_cast<std::size_t>(index)];
    const std::lock_guard lock(tile.mutex);
    if (tile.sums.pixels.empty())
        sums = TileSums(grid.at(index), fragmentSize > 0);
    else
        sums = tile.sums;
}

void SumStore::commit(int index, const TileSums& sums) {
    Tile& tile = tiles[static_cast<std::size_t>(index)];
    const std::lock_guard lock(tile.mutex);
    tile.sums = sums;
    tile.range = sums.getRange();
}

SampleRange SumStore::getRange() {
    SampleRange range;
    for (Tile& tile : tiles) {
        const std::lock_guard lock(tile.mutex);
        range.add(tile.range);
    }
    return range;
}

long long SumStore::numSamples() {
    long long sum = 0;
    for (Tile& tile : tiles) {
        const std::lock_guard lock(tile.mutex);
        sum += tile.sums.numSamples();
    }
    return sum;
}

}  // namespace Tarnkit
