#include "bare_path_tracer.h"

#include <chrono>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>

#include <embree3/rtcore.h>

#include "pelk/base/color.h"
#include "pelk/base/vector.h"

namespace bench {

using Tarnkit::Color;
using Tarnkit::Vector;

namespace {

constexpr float kPi = std::numbers::pi_v<float>;
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr int kSurfaces = 5;  // at which a path gathers light

// The light: a square of side 0.5 that looks down.
constexpr float kLightY = 1.98f, kLightHalf = 0.25f, kLightArea = 0.25f, kLightRadiance = 17.0f;

enum Surface : unsigned { kWhite, kRed, kGreen, kMirror };

constexpr Color kColors[] = {
    {0.73f, 0.73f, 0.73f}, {0.65f, 0.05f, 0.05f}, {0.12f, 0.45f, 0.15f}, {1.0f, 1.0f, 1.0f}};

/// PCG of 32 bits (O'Neill, 2014).
struct Random {
    std::uint64_t state;

    float next() {
        state = state * 6364136223846793005ull + 1442695040888963407ull;
        const auto x = static_cast<std::uint32_t>(((state >> 18) ^ state) >> 27);
        const auto turn = static_cast<std::uint32_t>(state >> 59);
        return static_cast<float>(((x >> turn) | (x << (-turn & 31))) >> 8) * 0x1p-24f;
    }
};

struct Triangles {
    std::vector<Vector> corners;  // three each

    void quad(Vector a, Vector b, Vector c, Vector d) {
        corners.insert(corners.end(), {a, b, c, a, c, d});
    }

    void box(float x, float z, float width, float height, float degrees) {
        const float t = degrees * kPi / 180.0f, ct = std::cos(t), st = std::sin(t);
        const float h = width * 0.5f;
        const auto corner = [&](float cx, float cz, float y) {
            return Vector(x + cx * ct + cz * st, y, z - cx * st + cz * ct);
        };
        const float across[4][2] = {{-h, h}, {h, h}, {h, -h}, {-h, -h}};
        Vector low[4], high[4];
        for (int i = 0; i < 4; ++i) {
            low[i] = corner(across[i][0], across[i][1], 0.0f);
            high[i] = corner(across[i][0], across[i][1], height);
        }
        quad(high[0], high[1], high[2], high[3]);
        for (int i = 0; i < 4; ++i)
            quad(low[i], low[(i + 1) & 3], high[(i + 1) & 3], high[i]);
    }
};

Vector normalized(Vector v) {
    return v * (1.0f / Tarnkit::length(v));
}

void setRay(RTCRay& ray, Vector origin, Vector direction, float end) {
    ray.org_x = origin.x;
    ray.org_y = origin.y;
    ray.org_z = origin.z;
    ray.tnear = 0.0f;
    ray.dir_x = direction.x;
    ray.dir_y = direction.y;
    ray.dir_z = direction.z;
    ray.time = 0.0f;
    ray.tfar = end;
    ray.mask = ~0u;
    ray.id = 0;
    ray.flags = 0;
}

float powerShare(float own, float other) {
    return own * own / (own * own + other * other);
}

}  // namespace

struct BarePathTracer::Impl {
    RTCDevice device;
    RTCScene scene;

    void add(unsigned id, const Triangles& triangles) {
        RTCGeometry geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_TRIANGLE);
        const std::size_t count = triangles.corners.size();
        auto* vertices = static_cast<Vector*>(rtcSetNewGeometryBuffer(
            geometry, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3, sizeof(Vector), count));
        auto* indices = static_cast<unsigned*>(rtcSetNewGeometryBuffer(
            geometry, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3, 3 * sizeof(unsigned), count / 3));
        for (std::size_t i = 0; i < count; ++i) {
            vertices[i] = triangles.corners[i];
            indices[i] = static_cast<unsigned>(i);
        }
        rtcCommitGeometry(geometry);
        rtcAttachGeometryByID(scene, geometry, id);
        rtcReleaseGeometry(geometry);
    }

    Color path(Random& random, Vector origin, Vector direction, long long& rays) const;
};

BarePathTracer::BarePathTracer() : impl(new Impl) {
    impl->device = rtcNewDevice("threads=1");
    impl->scene = rtcNewScene(impl->device);
    Triangles white, red, green, mirror;
    white.quad({-1, 0, 1}, {1, 0, 1}, {1, 0, -1}, {-1, 0, -1});
    white.quad({-1, 2, -1}, {1, 2, -1}, {1, 2, 1}, {-1, 2, 1});
    white.quad({-1, 0, -1}, {1, 0, -1}, {1, 2, -1}, {-1, 2, -1});
    red.quad({-1, 0, 1}, {-1, 0, -1}, {-1, 2, -1}, {-1, 2, 1});
    green.quad({1, 0, -1}, {1, 0, 1}, {1, 2, 1}, {1, 2, -1});
    mirror.box(-0.35f, -0.30f, 0.6f, 1.2f, 30.0f);
    white.box(0.35f, 0.35f, 0.6f, 0.6f, -17.0f);
    impl->add(kWhite, white);
    impl->add(kRed, red);
    impl->add(kGreen, green);
    impl->add(kMirror, mirror);
    rtcCommitScene(impl->scene);
}

BarePathTracer::~BarePathTracer() {
    rtcReleaseScene(impl->scene);
    rtcReleaseDevice(impl->device);
    delete impl;
}

Color BarePathTracer::Impl::path(Random& random, Vector o, Vector d, long long& rays) const {
    Color light, weight(1);
    float density = -1.0f;  // of the direction; below 0: nothing else could have found the light
    RTCIntersectContext context;
    rtcInitIntersectContext(&context);
    for (int surface = 0;; ++surface) {
        alignas(16) RTCRayHit query;
        setRay(query.ray, o, d, kInfinity);
        query.hit.geomID = query.hit.instID[0] = RTC_INVALID_GEOMETRY_ID;
        rtcIntersect1(scene, &context, &query);
        ++rays;
        if (d.y > 0.0f) {
            const float t = (kLightY - o.y) / d.y;
            if (t > 0.0f && t < query.ray.tfar && std::fabs(o.x + t * d.x) < kLightHalf &&
                std::fabs(o.z + t * d.z) < kLightHalf) {
                const float share =
                    density < 0.0f ? 1.0f : powerShare(density, t * t / (d.y * kLightArea));
                return light + weight * (kLightRadiance * share);
            }
        }
        if (query.hit.geomID == RTC_INVALID_GEOMETRY_ID || surface == kSurfaces)
            return light;
        Vector n = normalized({query.hit.Ng_x, query.hit.Ng_y, query.hit.Ng_z});
        if (dot(n, d) > 0.0f)
            n = -n;
        o = o + d * query.ray.tfar + n * 1e-4f;
        weight *= kColors[query.hit.geomID];
        if (query.hit.geomID == kMirror) {
            d = d - n * (2.0f * dot(n, d));
            density = -1.0f;
            continue;
        }
        const Vector way =
            Vector((random.next() - 0.5f) * 0.5f, kLightY, (random.next() - 0.5f) * 0.5f) -
            Vector(o.x, o.y, o.z);
        const float squared = dot(way, way), distance = std::sqrt(squared);
        const float cosine = dot(way, n) / distance, lightCosine = way.y / distance;
        if (cosine > 0.0f && lightCosine > 0.0f) {
            alignas(16) RTCRay shadow;
            setRay(shadow, o, way, 0.9999f);
            rtcOccluded1(scene, &context, &shadow);
            ++rays;
            if (shadow.tfar >= 0.0f) {
                const float sampled = squared / (lightCosine * kLightArea);
                const float scattered = cosine * (1.0f / kPi);
                light += weight *
                         (kLightRadiance * scattered / sampled * powerShare(sampled, scattered));
            }
        }
        const float phi = 2.0f * kPi * random.next();
        const float u = random.next(), r = std::sqrt(u), z = std::sqrt(1.0f - u);
        const Vector t =
            normalized(cross(n, std::fabs(n.x) > 0.5f ? Vector(0, 1, 0) : Vector(1, 0, 0)));
        d = t * (r * std::cos(phi)) + cross(n, t) * (r * std::sin(phi)) + n * z;
        density = z * (1.0f / kPi);
    }
}

BareResult BarePathTracer::render(int size, int samples, unsigned seed) const {
    BareResult result;
    std::vector<Color> picture(static_cast<std::size_t>(size) * static_cast<std::size_t>(size));
    const float half = std::tan(20.0f * kPi / 180.0f);
    const auto start = std::chrono::steady_clock::now();
    for (std::size_t i = 0; i < picture.size(); ++i) {
        Random random{(i + 1) * 0x9E3779B97F4A7C15ull + seed * 0xD1B54A32D192ED03ull};
        const auto x = static_cast<float>(i % static_cast<std::size_t>(size));
        const auto y = static_cast<float>(i / static_cast<std::size_t>(size));
        const float scale = 2.0f / static_cast<float>(size);
        for (int s = 0; s < samples; ++s) {
            const float px = ((x + random.next()) * scale - 1.0f) * half;
            const float py = (1.0f - (y + random.next()) * scale) * half;
            picture[i] +=
                impl->path(random, {0, 1, 3.7f}, normalized({px, py, -1.0f}), result.rays);
        }
    }
    result.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    for (const Color& c : picture) {
        result.mean[0] += c.r;
        result.mean[1] += c.g;
        result.mean[2] += c.b;
    }
    for (double& mean : result.mean)
        mean /= static_cast<double>(picture.size()) * samples;
    return result;
}

}  // namespace bench
