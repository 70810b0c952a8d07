#include "pelk/host/render/sum_store.h"

namespace Tarnkit {

void SumStore::load(int index, TileSums& sums) {
    Tile& tile = tiles[static_cast<std::size_t>(index)];
    const std::lock_guard lock(tile.mutex);
    if (tile.sums.pixels.empty())
        sums = TileSums(grid.at(index), hasFragments);
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

}  // namespace Tarnkit
