#pragma once

#include <cstddef>
#include <span>
#include <utility>
#include <vector>

#include "pelk/base/color.h"
#include "pelk/base/types.h"
#include "pelk/host/trace/mesh.h"

namespace Tarnkit {

/// Distributions over cells, one on each line, that are sampled by inverting running sums of their
/// probability. A guide says where to start, so a choice reads a few neighbouring sums and doesn't
/// search the whole line. Chen and Asau, "On Generating Random Variates from an Empirical
/// Distribution", AIIE Transactions 6(2), 1974.
class CellChooser {
public:
    /// Makes `lines` of `cells` each, at least 1.
    void resize(int lines, int cells);
    bool isEmpty() const { return sums.empty(); }
    /// Sets a line from running sums of weights, the last of them above 0. A line that isn't set
    /// must not be asked.
    void set(int line, std::span<const double> running);
    /// A cell of the line, in proportion to its weight. `random`, in [0, 1), is reused: it becomes
    /// the place inside the cell, again in [0, 1).
    int choose(int line, float& random) const;

private:
    std::size_t cells = 0, guides = 0;  // of a line; guides are a power of two, so they cut exactly
    std::vector<float> sums;            // the last of a line is 1
    std::vector<u32> guide;             // the first cell whose sum lies above i / guides
};

/// Radiance on the longitude-latitude map of environments (direction_map.h), with importance
/// sampling in proportion to its brightness: the mean of the magnitudes of its channels.
///
/// Colours stand at nodes, the middles of cells, and are interpolated bilinearly: around the map in
/// longitude, held constant from the outermost rows to the poles. The brightness of what a look-up
/// gives is thus a sum of tents, one on each node, and so is the density: `sample` picks a node
/// with the probability of its tent and a place under that. Wherever a look-up sees light the
/// density is above 0 and in proportion to it, but for the channels' differences and for the sine
/// of the latitude, which is taken at the nodes. No cell is too coarse for a sun.
///
/// Nodes lie in tiles of 4 x 4: one is chosen with two steps of a small table and one read of the
/// tile, from which the look-up that follows is served too, as a large map is never in the cache.
/// Takes 16.3 bytes a node. Filled on one thread; once finished, asked on all threads at once.
class SkyMap {
public:
    /// What stands at a place of the map: the colour, and in place of its alpha the density of
    /// `sample`. That is per solid angle times the sine of the angle from the pole, so the caller
    /// divides by the sine, which it has from the direction.
    using Look = AColor;

    /// Makes a map of black nodes, each side at least 1.
    void resize(int width, int height);
    /// Gives the memory back. Such a map is black.
    void clear() { *this = SkyMap(); }
    int getWidth() const { return width; }
    int getHeight() const { return height; }
    /// The colour of a node, counted from the left end of the top row; to be set before `finish`.
    Color& color(int x, int y) { return node(x, y).color; }
    /// Takes nodes that aren't finite for black and makes the densities. `least`: share of the mean
    /// brightness that is added to each node's for sampling alone, where nodes stand for light that
    /// may lie between them. A black map of that kind is sampled evenly.
    void finish(float least);

    /// Whether there is nothing to sample.
    bool isBlack() const { return rowChooser.isEmpty(); }
    /// The interpolated colour and density at a place of the map.
    Look at(UV map) const;
    /// A place of the map, by two random numbers in [0, 1). Not of a black map.
    UV sample(float random1, float random2) const;

private:
    static constexpr int kSide = 4;
    /// Row by row; what lies beyond the map is black. Each row is a line of the cache.
    struct alignas(64) Tile {
        AColor nodes[kSide][kSide];
    };

    const AColor& node(int x, int y) const {
        const Tile& tile = tiles[static_cast<std::size_t>(y / kSide) * columns +
                                 static_cast<std::size_t>(x / kSide)];
        return tile.nodes[y % kSide][x % kSide];
    }
    AColor& node(int x, int y) { return const_cast<AColor&>(std::as_const(*this).node(x, y)); }
    float meanBrightness();
    double weighRow(int y, float added);
    void makeChoosers();

    int width = 0, height = 0;
    std::size_t columns = 0;  // of tiles
    std::vector<Tile> tiles;
    CellChooser rowChooser, tileChooser;  // a row of tiles, and a tile in it
};

}  // namespace Tarnkit
