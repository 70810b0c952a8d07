#include "pelk/host/plugins/light_dome.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "pelk/contract/param_table.h"
#include "pelk/contract/renderer.h"
#include "pelk/host/plugins/direction_map.h"
#include "pelk/host/trace/placement.h"
#include "pelk/host/trace/render_context.h"

namespace Tarnkit {

namespace {

constexpr float kPi = std::numbers::pi_v<float>;

constexpr ParamTable kParams{
    textureParam("texture", &LightDomeParams::texture,
                 "What surrounds the scene, an image longitude by latitude; white without one"),
    colorParam("rotate", &LightDomeParams::rotate, Color(0),
               "Rotation of the texture in degrees about X, then Y, then Z"),
};

constexpr std::size_t kMaxNodes = std::size_t{1} << 25;
/// Cells for a texture that is no image, and look-ups on each side of one.
constexpr int kColumns = 1024, kRows = 512, kProbes = 2;
/// SkyMap::finish where look-ups may find what the table doesn't know.
constexpr float kLeastDensity = 0.05f;

/// The rotation as a matrix. Rounded to floats it is still as good as orthonormal.
Matrix rotationOf(Color degrees) {
    const Placement place(Color(1), degrees, Color(0));
    return {{place.direction({1, 0, 0}), place.direction({0, 1, 0}), place.direction({0, 0, 1})}};
}

/// What is importance-sampled: how bright a colour is, even if it takes light away. Black if it
/// isn't finite.
Color magnitude(Color c) {
    return isFinite(c) ? Color(std::fabs(c.r), std::fabs(c.g), std::fabs(c.b)) : Color(0);
}

/// Pixels of an image that can't be light.
struct BadPixels {
    std::size_t negative = 0, notFinite = 0;
    float lowest = 0.0f;

    void count(Color c) {
        if (!isFinite(c)) {
            ++notFinite;
            return;
        }
        const float least = std::min({c.r, c.g, c.b});
        negative += least < 0.0f;
        lowest = std::min(lowest, least);
    }
    void tell(MessageLog& log, const char* dome, const char* file) const {
        if (negative > 0)
            log.warning(
                "[LightDome] \"%s\": %zu pixels of \"%s\" are negative, down to %g, and "
                "take light away; expected 0 or more\n",
                dome, negative, file, static_cast<double>(lowest));
        if (notFinite > 0)
            log.warning(
                "[LightDome] \"%s\": %zu pixels of \"%s\" are not finite and count as "
                "black\n",
                dome, notFinite, file);
    }
};

/// Calls `use` with the place and the colour of each pixel.
template <class Use>
BadPixels eachPixel(const SkyImageInterface& image, const SkyLayout& layout, const Use& use) {
    BadPixels bad;
    std::vector<AColor> row(static_cast<std::size_t>(layout.width));
    for (int y = 0; y < layout.height; ++y) {
        image.readSkyRow(y, row);
        for (int x = 0; x < layout.width; ++x) {
            const Color c = row[static_cast<std::size_t>(x)].color;
            bad.count(c);
            use(x, y, c);
        }
    }
    return bad;
}

}  // namespace

ParamRows<LightDomeParams> LightDomeParams::table() {
    return kParams;
}

void LightDome::frameBegin(PelkRenderer& renderer) {
    HostLight::frameBegin(renderer);
    log = renderer.sequenceData.log;
}

bool LightDome::prepare(const SceneBounds&, std::string& error) {
    sky.clear();
    if (!isFinite(params.rotate)) {
        error = "\"rotate\" must have three numbers that are finite";
        return false;
    }
    toWorld = rotationOf(params.rotate);
    skyIsImage = false;
    if (params.texture) {
        SkyLayout layout;
        const auto* const image = findInterface<SkyImageInterface>(params.texture->getPlugin());
        if (image && image->getSkyLayout(layout))
            takeImage(*image, layout);
        else
            probeTexture();
    }
    toDome = transposed(toWorld);
    return true;
}

void LightDome::takeImage(const SkyImageInterface& image, const SkyLayout& layout) {
    int block = 1;
    while (std::size_t(std::max(1, layout.width / block)) *
               std::size_t(std::max(1, layout.height / block)) >
           kMaxNodes)
        ++block;
    if (block > 1)
        return takeBlocks(image, layout, block);
    sky.resize(layout.width, layout.height);
    const BadPixels bad =
        eachPixel(image, layout, [&](int x, int y, Color c) { sky.color(x, y) = c * emission(); });
    sky.finish(0.0f);
    skyIsImage = true;
    // To the right is a negative rotation about +Y, for who looks along -Z.
    toWorld = toWorld * rotationOf({0.0f, -layout.rotation, 0.0f});
    if (log)
        bad.tell(*log, getPluginNameOr(""), layout.file);
}

void LightDome::takeBlocks(const SkyImageInterface& image, const SkyLayout& layout, int block) {
    const int width = std::max(1, layout.width / block),
              height = std::max(1, layout.height / block);
    sky.resize(width, height);
    const BadPixels bad = eachPixel(image, layout, [&](int x, int y, Color c) {
        const double turned = (x + 0.5) / layout.width + layout.rotation / 360.0;
        const int column = static_cast<int>((turned - std::floor(turned)) * width);
        const int row = static_cast<int>((y + 0.5) / layout.height * height);
        sky.color(std::min(column, width - 1), row) += magnitude(c * emission());
    });
    sky.finish(kLeastDensity);
    if (log)
        bad.tell(*log, getPluginNameOr(""), layout.file);
}

void LightDome::probeTexture() {
    sky.resize(kColumns, kRows);
    for (int y = 0; y < kRows * kProbes; ++y) {
        for (int x = 0; x < kColumns * kProbes; ++x) {
            const float u = (static_cast<float>(x) + 0.5f) / (kColumns * kProbes),
                        v = (static_cast<float>(y) + 0.5f) / (kRows * kProbes);
            sky.color(x / kProbes, y / kProbes) += magnitude(textureAlong(mapToDirection({u, v})));
        }
    }
    sky.finish(kLeastDensity);
}

Color LightDome::textureAlong(const Vector& direction) const {
    RenderContext context;
    context.rayDir = context.rayDir2 = direction;
    context.rayMaxT = kRayFar;
    context.hitPoint = {direction.x, direction.y, direction.z};
    context.normal = context.geomNormal = -direction;
    return emission() * params.texture->getTexColor(context).color;
}

SkyMap::Look LightDome::look(UV map, const Vector& direction) const {
    if (sky.isBlack())
        return {};
    SkyMap::Look seen = sky.at(map);
    if (!skyIsImage)
        seen.color = textureAlong(direction);
    constexpr float kLeastSine = 1e-6f;
    seen.alpha /=
        std::fmax(std::sqrt(direction.x * direction.x + direction.z * direction.z), kLeastSine);
    return seen;
}

bool LightDome::sample(PelkContext&, float random1, float random2, LightSample& out) {
    out.distance = kRayFar;
    if (!params.texture) {
        const float y = 1.0f - 2.0f * random1;
        const float sine = std::sqrt(std::fmax(0.0f, 1.0f - y * y));
        const float phi = 2.0f * kPi * random2;
        out.direction = {sine * std::cos(phi), y, sine * std::sin(phi)};
        out.radiance = emission();
        out.density = 1.0f / (4.0f * kPi);
        return true;
    }
    if (sky.isBlack())
        return false;
    const UV map = sky.sample(random1, random2);
    const Vector direction = mapToDirection(map);
    const SkyMap::Look seen = look(map, direction);
    out.direction = toWorld * direction;
    out.radiance = seen.color;
    out.density = seen.alpha;
    return true;
}

bool LightDome::intersect(const Point&, const Vector& direction, double, double maxT,
                          LightHit& out) {
    if (maxT < kRayFar)
        return false;
    out.distance = kRayFar;
    if (!params.texture) {
        out.radiance = emission();
        out.density = 1.0f / (4.0f * kPi);
        return true;
    }
    const Vector own = toDome * direction;
    const SkyMap::Look seen = look(directionToMap(own), own);
    out.radiance = seen.color;
    out.density = seen.alpha;
    return true;
}

}  // namespace Tarnkit
