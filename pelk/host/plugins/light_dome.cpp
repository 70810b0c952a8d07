#include "pelk/host/plugins/light_dome.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "pelk/contract/param_table.h"
#include "pelk/host/plugins/direction_map.h"
#include "pelk/host/trace/render_context.h"

namespace Tarnkit {

namespace {

constexpr float kPi = std::numbers::pi_v<float>;

constexpr ParamTable kParams{
    textureParam("texture", &LightDomeParams::texture,
                 "What surrounds the scene, read along directions; white without one"),
};

// Cells of the importance-sampling table; each spans 0.7 degrees.
constexpr int kColumns = 512, kRows = 256;

/// Samples a cell in proportion to its weight, by inverting the cumulative sums[0 .. count).
/// `random`, in [0, 1), is reused: it becomes the place inside the cell, again in [0, 1).
int chooseCell(const float* sums, int count, float& random) {
    const float target = random * sums[count - 1];
    const int cell = std::min<int>(
        static_cast<int>(std::upper_bound(sums, sums + count, target) - sums), count - 1);
    const float below = cell > 0 ? sums[cell - 1] : 0.0f;
    random = std::clamp((target - below) / (sums[cell] - below), 0.0f, 0x1.fffffep-1f);
    return cell;
}

}  // namespace

ParamRows<LightDomeParams> LightDomeParams::table() {
    return kParams;
}

bool LightDome::prepare(const SceneBounds&, std::string&) {
    cellSums.clear();
    rowSums.clear();
    if (params.texture)
        tabulate();
    return true;
}

Color LightDome::radianceAlong(const Vector& direction) const {
    if (!params.texture)
        return emission();
    RenderContext context;
    context.rayDir = context.rayDir2 = direction;
    context.rayMaxT = kRayFar;
    return emission() * params.texture->getTexColor(context).color;
}

void LightDome::tabulate() {
    std::vector<float> brightness(std::size_t{kColumns} * kRows);
    double total = 0.0;
    for (int row = 0; row < kRows; ++row) {
        for (int column = 0; column < kColumns; ++column) {
            const Color c =
                radianceAlong(mapToDirection({(column + 0.5f) / kColumns, (row + 0.5f) / kRows}));
            const float b = isFinite(c) ? std::fmax(0.0f, mean(c)) : 0.0f;
            brightness[static_cast<std::size_t>(row) * kColumns + column] = b;
            total += b;
        }
    }
    // A cell that is black at its centre may still hold light, and a density of 0 there would be
    // biased: each cell keeps a small probability.
    const float least = static_cast<float>(total / brightness.size()) * 0.05f + 1e-6f;
    cellSums.resize(brightness.size());
    rowSums.resize(kRows);
    double rows = 0.0;
    for (int row = 0; row < kRows; ++row) {
        const double sine = std::sin((row + 0.5) / kRows * std::numbers::pi);
        double cells = 0.0;
        for (int column = 0; column < kColumns; ++column) {
            const std::size_t i = static_cast<std::size_t>(row) * kColumns + column;
            cells += (brightness[i] + least) * sine;
            cellSums[i] = static_cast<float>(cells);
        }
        rows += cells;
        rowSums[row] = static_cast<float>(rows);
    }
}

float LightDome::densityAlong(const Vector& direction) const {
    if (cellSums.empty())
        return 1.0f / (4.0f * kPi);
    const UV map = directionToMap(direction);
    const int column = std::clamp(static_cast<int>(map.u * kColumns), 0, kColumns - 1);
    const int row = std::clamp(static_cast<int>(map.v * kRows), 0, kRows - 1);
    const float* cells = &cellSums[static_cast<std::size_t>(row) * kColumns];
    const float weight = cells[column] - (column > 0 ? cells[column - 1] : 0.0f);
    const float perMap = weight / rowSums.back() * (kColumns * kRows);
    const float sine = std::sqrt(std::fmax(1e-8f, 1.0f - direction.y * direction.y));
    return perMap / (2.0f * kPi * kPi * sine);
}

bool LightDome::sample(PelkContext&, float random1, float random2, LightSample& out) {
    if (cellSums.empty()) {
        const float y = 1.0f - 2.0f * random1;
        const float sine = std::sqrt(std::fmax(0.0f, 1.0f - y * y));
        const float phi = 2.0f * kPi * random2;
        out.direction = {sine * std::cos(phi), y, sine * std::sin(phi)};
    } else {
        const int row = chooseCell(rowSums.data(), kRows, random1);
        const int column =
            chooseCell(&cellSums[static_cast<std::size_t>(row) * kColumns], kColumns, random2);
        out.direction = mapToDirection({(column + random2) / kColumns, (row + random1) / kRows});
    }
    out.distance = kRayFar;
    out.radiance = radianceAlong(out.direction);
    out.density = densityAlong(out.direction);
    return true;
}

bool LightDome::intersect(const Point&, const Vector& direction, double, double maxT,
                          LightHit& out) {
    if (maxT < kRayFar)
        return false;
    out.distance = kRayFar;
    out.radiance = radianceAlong(direction);
    out.density = densityAlong(direction);
    return true;
}

}  // namespace Tarnkit
