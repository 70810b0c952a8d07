#include "pelk/host/plugins/sky_map.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>

namespace Tarnkit {

namespace {

constexpr float kBelowOne = 0x1.fffffep-1f;

/// Of the magnitudes: a negative texel takes light away and must be found like any other.
float brightness(Color c) {
    constexpr float kThird = 1.0f / 3.0f;
    return std::fabs(c.r) * kThird + std::fabs(c.g) * kThird + std::fabs(c.b) * kThird;
}

/// Samples one of four in proportion to their weights, not all 0. `random` is reused as by
/// CellChooser. What has no weight is never chosen, however the sums round.
int chooseOfFour(const float (&weights)[4], float& random) {
    const float target = random * (weights[0] + weights[1] + weights[2] + weights[3]);
    int chosen = 0;
    float below = 0.0f, sum = 0.0f;
    for (int i = 0; i < 4 && sum <= target; ++i) {
        if (!(weights[i] > 0.0f))
            continue;
        chosen = i;
        below = sum;
        sum += weights[i];
    }
    random = std::clamp((target - below) / weights[chosen], 0.0f, kBelowOne);
    return chosen;
}

/// A number of the tent over (-1, 1), by a random number in [0, 1).
float sampleTent(float random) {
    return random < 0.5f ? std::sqrt(2.0f * random) - 1.0f
                         : 1.0f - std::sqrt(2.0f * (1.0f - random));
}

}  // namespace

void CellChooser::resize(int lines, int cellsOfLine) {
    cells = static_cast<std::size_t>(cellsOfLine);
    guides = std::bit_floor(std::max(cells / 8, std::size_t{1}));
    sums.resize(static_cast<std::size_t>(lines) * cells);
    guide.resize(static_cast<std::size_t>(lines) * guides);
}

void CellChooser::set(int line, std::span<const double> running) {
    const auto row = std::span(sums).subspan(static_cast<std::size_t>(line) * cells, cells);
    for (std::size_t i = 0; i < cells; ++i)
        row[i] = static_cast<float>(running[i] / running.back());
    std::size_t cell = 0;
    for (std::size_t i = 0; i < guides; ++i) {
        while (row[cell] <= static_cast<float>(i) / static_cast<float>(guides))
            ++cell;
        guide[static_cast<std::size_t>(line) * guides + i] = static_cast<u32>(cell);
    }
}

int CellChooser::choose(int line, float& random) const {
    const float* const row = &sums[static_cast<std::size_t>(line) * cells];
    const auto part = static_cast<std::size_t>(random * static_cast<float>(guides));
    const u32* const at = &guide[static_cast<std::size_t>(line) * guides + part];
    const float* const end = row + (part + 1 < guides ? at[1] : cells - 1);
    const float* const found = std::upper_bound(row + at[0], end, random);
    const float below = found == row ? 0.0f : found[-1];
    random = std::clamp((random - below) / (*found - below), 0.0f, kBelowOne);
    return static_cast<int>(found - row);
}

void SkyMap::resize(int newWidth, int newHeight) {
    clear();
    width = newWidth;
    height = newHeight;
    columns = static_cast<std::size_t>((width + kSide - 1) / kSide);
    tiles.resize(columns * static_cast<std::size_t>((height + kSide - 1) / kSide));
}

float SkyMap::meanBrightness() {
    double sum = 0.0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            Color& c = color(x, y);
            c = isFinite(c) ? c : Color(0);
            sum += brightness(c);
        }
    }
    return static_cast<float>(sum / width / height);
}

/// Writes the weights of a row's nodes and returns their sum.
double SkyMap::weighRow(int y, float added) {
    const double sine = std::sin((y + 0.5) / height * std::numbers::pi);
    double total = 0.0;
    for (int x = 0; x < width; ++x) {
        AColor& at = node(x, y);
        at.alpha = static_cast<float>((brightness(at.color) + added) * sine);
        total += at.alpha;
    }
    return total;
}

void SkyMap::makeChoosers() {
    const std::size_t lines = tiles.size() / columns;
    rowChooser.resize(1, static_cast<int>(lines));
    tileChooser.resize(static_cast<int>(lines), static_cast<int>(columns));
    std::vector<double> rowSums, tileSums;
    double total = 0.0;
    for (std::size_t line = 0; line < lines; ++line) {
        double sum = 0.0;
        tileSums.clear();
        for (const Tile& tile : std::span(tiles).subspan(line * columns, columns)) {
            for (const auto& row : tile.nodes)
                sum += row[0].alpha + row[1].alpha + row[2].alpha + row[3].alpha;
            tileSums.push_back(sum);
        }
        if (sum > 0.0)
            tileChooser.set(static_cast<int>(line), tileSums);
        rowSums.push_back(total += sum);
    }
    rowChooser.set(0, rowSums);
}

void SkyMap::finish(float least) {
    const float middle = meanBrightness();
    if (!(middle > 0.0f || least > 0.0f))
        return;
    double total = 0.0;
    for (int y = 0; y < height; ++y)
        total += weighRow(y, middle > 0.0f ? middle * least : 1.0f);
    makeChoosers();
    // A tent covers as much of the map as a cell, and the map 2 pi^2 of the sine's integral.
    const double perWeight =
        static_cast<double>(width) * height / (total * 2.0 * std::numbers::pi * std::numbers::pi);
    for (Tile& tile : tiles) {
        for (auto& row : tile.nodes) {
            for (AColor& at : row)
                at.alpha = static_cast<float>(at.alpha * perWeight);
        }
    }
}

SkyMap::Look SkyMap::at(UV map) const {
    const float w = static_cast<float>(width), h = static_cast<float>(height);
    // The limits also keep what rounding, or a direction that is NaN, would lead off the map.
    const float x = std::fmin(std::fmax(map.u * w - 0.5f, -0.5f), w - 0.5f);
    const float y = std::fmin(std::fmax(map.v * h - 0.5f, 0.0f), h - 1.0f);
    const int left = static_cast<int>(std::floor(x)), top = static_cast<int>(y);
    const int xs[2] = {left < 0 ? width - 1 : left, left + 1 == width ? 0 : left + 1};
    const int ys[2] = {top, std::min(top + 1, height - 1)};
    const float fx = x - static_cast<float>(left), fy = y - static_cast<float>(top);
    Look look;
    for (int i = 0; i < 4; ++i) {
        const AColor& at = node(xs[i & 1], ys[i >> 1]);
        const float weight = (i & 1 ? fx : 1.0f - fx) * (i & 2 ? fy : 1.0f - fy);
        look.color += at.color * weight;
        look.alpha += at.alpha * weight;
    }
    return look;
}

UV SkyMap::sample(float random1, float random2) const {
    random1 = std::min(random1, kBelowOne);
    random2 = std::min(random2, kBelowOne);
    const int line = rowChooser.choose(0, random1), column = tileChooser.choose(line, random2);
    const Tile& tile =
        tiles[static_cast<std::size_t>(line) * columns + static_cast<std::size_t>(column)];
    const auto sumOf = [&](int y) {
        const AColor* const row = tile.nodes[y];
        return row[0].alpha + row[1].alpha + row[2].alpha + row[3].alpha;
    };
    const int y = chooseOfFour({sumOf(0), sumOf(1), sumOf(2), sumOf(3)}, random1);
    const AColor* const row = tile.nodes[y];
    const int x = chooseOfFour({row[0].alpha, row[1].alpha, row[2].alpha, row[3].alpha}, random2);
    const float w = static_cast<float>(width), h = static_cast<float>(height);
    float u = static_cast<float>(column * kSide + x) + 0.5f + sampleTent(random2);
    u += u < 0.0f ? w : u >= w ? -w : 0.0f;
    // Half of the outermost tents would lie beyond a pole: folded back it is the constant part.
    float v = std::fabs(static_cast<float>(line * kSide + y) + 0.5f + sampleTent(random1));
    v = v > h ? 2.0f * h - v : v;
    return {u / w, v / h};
}

}  // namespace Tarnkit
