#include "pelk/host/trace/intersector.h"

#include <cassert>
#include <cmath>
#include <limits>

#include <embree3/rtcore.h>

#include "pelk/host/trace/render_context.h"

namespace Tarnkit {

namespace {

// The thread sanitizer does not see the locks between Embree's own threads.
#ifdef __SANITIZE_THREAD__
constexpr const char* kDeviceSettings = "threads=1";
#else
constexpr const char* kDeviceSettings = nullptr;
#endif

/// What the filter functions of one ray need to know. Embree passes them a pointer to `context`,
/// which is the first member so that the query can be had from it.
struct Query {
    RTCIntersectContext context;
    u32 skipObject, skipTriangle;
    ShadowVisitor* visitor;
    HiddenObjects hidden;
};

/// Intersection filter of every geometry: rejects the triangle that the ray leaves. Rays are traced
/// one at a time (rtcIntersect1), so there is one ray and one hit to look at.
void dropOwnTriangle(const RTCFilterFunctionNArguments* args) {
    const Query& query = *reinterpret_cast<const Query*>(args->context);
    const RTCHit& hit = *reinterpret_cast<const RTCHit*>(args->hit);
    if (hit.primID == query.skipTriangle && hit.geomID == query.skipObject)
        args->valid[0] = 0;
}

/// The filter of a ray to which objects are hidden. The exclude tables hold render ids; geometry
/// ids are the same numbers, as RenderSetup::buildObjects sees to.
void dropHidden(const RTCFilterFunctionNArguments* args) {
    const Query& query = *reinterpret_cast<const Query*>(args->context);
    const RTCHit& hit = *reinterpret_cast<const RTCHit*>(args->hit);
    if (query.hidden.contains(static_cast<int>(hit.geomID)))
        args->valid[0] = 0;
}

void initQuery(Query& query, u32 skipObject, u32 skipTriangle, ShadowVisitor* visitor,
               HiddenObjects hidden) {
    rtcInitIntersectContext(&query.context);
    query.skipObject = skipObject;
    query.skipTriangle = skipTriangle;
    query.visitor = visitor;
    query.hidden = hidden;
    if (hidden.table)
        query.context.filter = dropHidden;
}

/// Occlusion filter of every geometry: rejecting a hit lets the shadow ray go on behind it.
void visitShadowHit(const RTCFilterFunctionNArguments* args) {
    const Query& query = *reinterpret_cast<const Query*>(args->context);
    const RTCHit& hit = *reinterpret_cast<const RTCHit*>(args->hit);
    const RTCRay& ray = *reinterpret_cast<const RTCRay*>(args->ray);
    const bool own = hit.primID == query.skipTriangle && hit.geomID == query.skipObject;
    if (own || query.visitor->visit(hit.geomID, hit.primID, hit.u, hit.v, ray.tfar))
        args->valid[0] = 0;
}

/// The start of a ray's interval, as Embree takes it: `minT` and an epsilon against
/// self-intersection. Embree has the origin in single precision, so the epsilon grows with the
/// coordinates, by a few of their rounding steps.
float nearBound(const Point& origin, double minT) {
    const float size =
        static_cast<float>(std::fabs(origin.x) + std::fabs(origin.y) + std::fabs(origin.z));
    return static_cast<float>(minT) + 4e-7f * size;
}

void fillRay(RTCRay& ray, const Point& origin, const Vector& direction, double minT, double maxT) {
    ray.org_x = static_cast<float>(origin.x);
    ray.org_y = static_cast<float>(origin.y);
    ray.org_z = static_cast<float>(origin.z);
    ray.tnear = nearBound(origin, minT);
    ray.dir_x = direction.x;
    ray.dir_y = direction.y;
    ray.dir_z = direction.z;
    ray.time = 0.0f;
    ray.tfar = maxT < kRayFar ? static_cast<float>(maxT) : std::numeric_limits<float>::infinity();
    ray.mask = ~0u;
    ray.id = 0;
    ray.flags = 0;
}

/// A committed geometry of the mesh's triangles. Without memory for them it is empty, and the
/// device's error callback has been called.
RTCGeometry newGeometry(RTCDevice device, const Mesh& mesh) {
    RTCGeometry geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_TRIANGLE);
    // Embree reads 16 bytes at each vertex, so it gets a padded copy of its own.
    auto* positions = static_cast<float*>(
        rtcSetNewGeometryBuffer(geometry, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3,
                                3 * sizeof(float), mesh.positions.size()));
    auto* triangles = static_cast<u32*>(rtcSetNewGeometryBuffer(geometry, RTC_BUFFER_TYPE_INDEX, 0,
                                                                RTC_FORMAT_UINT3, 3 * sizeof(u32),
                                                                mesh.triangles.size()));
    if (positions && triangles) {
        for (const Vector& p : mesh.positions) {
            *positions++ = p.x;
            *positions++ = p.y;
            *positions++ = p.z;
        }
        for (const auto& triangle : mesh.triangles) {
            for (u32 corner : triangle)
                *triangles++ = corner;
        }
    }
    rtcSetGeometryIntersectFilterFunction(geometry, dropOwnTriangle);
    rtcSetGeometryOccludedFilterFunction(geometry, visitShadowHit);
    rtcCommitGeometry(geometry);
    return geometry;
}

/// Error callback of a device; `text` is the std::string that build reports.
void keepDeviceError(void* text, RTCError, const char* message) {
    *static_cast<std::string*>(text) = message ? message : "unknown error";
}

}  // namespace

Intersector::Intersector() : device(rtcNewDevice(kDeviceSettings)) {}

Intersector::~Intersector() {
    if (scene)
        rtcReleaseScene(scene);
    if (device)
        rtcReleaseDevice(device);
}

bool Intersector::build(const std::vector<std::unique_ptr<SceneObject>>& objects,
                        std::string& error) {
    if (!device) {
        error = "the ray library can't be started";
        return false;
    }
    if (scene)
        rtcReleaseScene(scene);
    std::string failure;
    rtcSetDeviceErrorFunction(device, keepDeviceError, &failure);
    scene = rtcNewScene(device);
    // Robust: without it rays leak through the edges that triangles share, a few in a million.
    rtcSetSceneFlags(scene, RTC_SCENE_FLAG_CONTEXT_FILTER_FUNCTION | RTC_SCENE_FLAG_ROBUST);
    // Not high quality: its spatial splits put a triangle into several leaves, and a transparent
    // one would attenuate a shadow ray more than once.
    rtcSetSceneBuildQuality(scene, RTC_BUILD_QUALITY_MEDIUM);
    for (const auto& object : objects) {
        RTCGeometry geometry = newGeometry(device, object->mesh);
        // A hit brings back the geometry id alone: the number of the object, and its render id.
        assert(objects[object->index] == object);
        rtcAttachGeometryByID(scene, geometry, object->index);
        rtcReleaseGeometry(geometry);
    }
    rtcCommitScene(scene);
    rtcSetDeviceErrorFunction(device, nullptr, nullptr);
    error = failure;
    return failure.empty();
}

SceneBounds Intersector::bounds() const {
    RTCBounds box;
    rtcGetSceneBounds(scene, &box);
    SceneBounds out;
    if (!(box.lower_x <= box.upper_x))
        return out;  // no geometry
    out.centre = {(box.lower_x + box.upper_x) * 0.5, (box.lower_y + box.upper_y) * 0.5,
                  (box.lower_z + box.upper_z) * 0.5};
    out.radius = 0.5 * std::hypot(static_cast<double>(box.upper_x) - box.lower_x,
                                  static_cast<double>(box.upper_y) - box.lower_y,
                                  static_cast<double>(box.upper_z) - box.lower_z);
    return out;
}

float Intersector::closest(const RenderContext& ray, u32& object, RenderContext& hit) const {
    Query query;
    initQuery(query, ray.skipObject, ray.skipTriangle, nullptr, ray.hidden);
    alignas(16) RTCRayHit rayHit;
    fillRay(rayHit.ray, ray.rayOrigin, ray.rayDir, ray.rayMinT, ray.rayMaxT);
    rayHit.hit.geomID = rayHit.hit.instID[0] = RTC_INVALID_GEOMETRY_ID;
    rtcIntersect1(scene, &query.context, &rayHit);
    if (rayHit.hit.geomID == RTC_INVALID_GEOMETRY_ID && !ray.isIndirectDiffuse) {
        // The edges of a closed mesh are closed, but right at a corner rounding may put a ray
        // outside of all triangles around it. A hair beside it there are edges alone. Cameras and
        // mirrors may aim at a corner; to the last bit random directions never do.
        constexpr float kHair = 1e-6f;
        Vector aside, across;
        makeBasis(ray.rayDir, aside, across);
        rayHit.ray.dir_x += kHair * aside.x;
        rayHit.ray.dir_y += kHair * aside.y;
        rayHit.ray.dir_z += kHair * aside.z;
        rtcIntersect1(scene, &query.context, &rayHit);
    }
    if (rayHit.hit.geomID == RTC_INVALID_GEOMETRY_ID)
        return -1.0f;
    object = rayHit.hit.geomID;
    hit.triangle = rayHit.hit.primID;
    hit.baryU = rayHit.hit.u;
    hit.baryV = rayHit.hit.v;
    return rayHit.ray.tfar;
}

bool Intersector::walkShadow(const Point& origin, const Vector& direction, double distance,
                             u32 skipObject, u32 skipTriangle, ShadowVisitor& visitor) const {
    Query query;
    initQuery(query, skipObject, skipTriangle, &visitor, {});
    alignas(16) RTCRay ray;
    // Ends just before the light, so that a surface that it lies on doesn't shadow it.
    const double end = distance < kRayFar ? distance * 0.9999 : distance;
    fillRay(ray, origin, direction, 0.0, end);
    rtcOccluded1(scene, &query.context, &ray);
    return ray.tfar >= 0.0f;
}

}  // namespace Tarnkit
