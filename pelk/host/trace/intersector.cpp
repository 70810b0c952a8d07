#include "pelk/host/trace/intersector.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <exception>
#include <limits>
#include <numeric>

#include <embree3/rtcore.h>

#include "pelk/base/exception_msg.h"
#include "pelk/host/trace/render_context.h"
#include "pelk/host/trace/triangle_rim.h"
#include "pelk/platform/memory_shortage.h"

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

/// Of a shadow ray.
struct ShadowQuery : Query {
    std::exception_ptr thrown;  ///< by the visitor; Embree's own frames can't be left so
};

/// The number of the object that was hit. An instance is one; other geometry stands in the scene by
/// itself. The ids of both are numbers of objects, which are render ids too.
u32 objectOf(const RTCHit& hit) {
    return hit.instID[0] == RTC_INVALID_GEOMETRY_ID ? hit.geomID : hit.instID[0];
}

/// What filter functions have in hand. Rays are traced one at a time (rtcIntersect1), so there is
/// one ray and one hit to look at.
struct Candidate {
    const Query& query;
    const RTCHit& hit;
    const RTCRay& ray;  ///< within an instance in its space, as is the mesh
    const Mesh& mesh;

    explicit Candidate(const RTCFilterFunctionNArguments* args)
        : query(*reinterpret_cast<const Query*>(args->context)),
          hit(*reinterpret_cast<const RTCHit*>(args->hit)),
          ray(*reinterpret_cast<const RTCRay*>(args->ray)),
          mesh(*static_cast<const Mesh*>(args->geometryUserPtr)) {}

    /// Whether it is no hit: on the triangle that the ray leaves, or on the rim beside a triangle.
    bool isVoid() const {
        if (hit.primID == query.skipTriangle && objectOf(hit) == query.skipObject)
            return true;
        return isNearRim(hit.u, hit.v) &&
               !meetsTriangle(mesh, hit.primID, {ray.org_x, ray.org_y, ray.org_z},
                              {ray.dir_x, ray.dir_y, ray.dir_z});
    }
};

/// Intersection filter of every geometry.
void dropVoidHit(const RTCFilterFunctionNArguments* args) {
    if (Candidate(args).isVoid())
        args->valid[0] = 0;
}

/// The filter of a ray to which objects are hidden.
void dropHidden(const RTCFilterFunctionNArguments* args) {
    const Candidate candidate(args);
    if (candidate.query.hidden.contains(static_cast<int>(objectOf(candidate.hit))))
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
    const Candidate c(args);
    try {
        if (c.isVoid() || c.query.visitor->visit(objectOf(c.hit), c.hit.primID, withoutRim(c.hit.u),
                                                 withoutRim(c.hit.v), c.ray.tfar))
            args->valid[0] = 0;
    } catch (...) {
        // And the hit, which stands, ends the ray.
        static_cast<ShadowQuery&>(*reinterpret_cast<Query*>(args->context)).thrown =
            std::current_exception();
    }
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

/// A committed geometry of the mesh's triangles, each grown by its rim; `numbers` holds those
/// from 0 on, as many as the corners at least. Without memory for them it is empty, and the
/// device's error callback has been called.
RTCGeometry newTriangles(RTCDevice device, const Mesh& mesh, const std::vector<u32>& numbers) {
    RTCGeometry geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_TRIANGLE);
    const u32 count = static_cast<u32>(mesh.triangles.size());
    // Embree reads 16 bytes at each vertex, so it gets a padded buffer of its own.
    auto* corner = static_cast<Vector*>(rtcSetNewGeometryBuffer(geometry, RTC_BUFFER_TYPE_VERTEX, 0,
                                                                RTC_FORMAT_FLOAT3, sizeof(Vector),
                                                                std::size_t{3} * count));
    if (corner) {
        for (u32 triangle = 0; triangle < count; ++triangle) {
            for (const Vector& grown : grownTriangle(mesh, triangle))
                *corner++ = grown;
        }
        rtcSetSharedGeometryBuffer(geometry, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3,
                                   numbers.data(), 0, 3 * sizeof(u32), count);
    }
    rtcSetGeometryUserData(geometry, const_cast<Mesh*>(&mesh));  // read only, by Candidate
    rtcSetGeometryIntersectFilterFunction(geometry, dropVoidHit);
    rtcSetGeometryOccludedFilterFunction(geometry, visitShadowHit);
    rtcCommitGeometry(geometry);
    return geometry;
}

/// A committed geometry that places the triangles of another scene.
RTCGeometry newInstance(RTCDevice device, RTCScene shape, const Placement& place) {
    RTCGeometry geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_INSTANCE);
    const std::array<Vector, 4> columns = place.columns();
    static_assert(sizeof columns == 12 * sizeof(float));
    rtcSetGeometryInstancedScene(geometry, shape);
    rtcSetGeometryTransform(geometry, 0, RTC_FORMAT_FLOAT3X4_COLUMN_MAJOR, columns.data());
    rtcCommitGeometry(geometry);
    return geometry;
}

RTCScene newScene(RTCDevice device) {
    const RTCScene scene = rtcNewScene(device);
    rtcSetSceneFlags(scene, RTC_SCENE_FLAG_CONTEXT_FILTER_FUNCTION);
    // Not high quality: its spatial splits put a triangle into several leaves, and a
    // transparent one would attenuate a shadow ray more than once.
    rtcSetSceneBuildQuality(scene, RTC_BUILD_QUALITY_MEDIUM);
    return scene;
}

void attach(RTCScene scene, RTCGeometry geometry, u32 id) {
    rtcAttachGeometryByID(scene, geometry, id);
    rtcReleaseGeometry(geometry);
}

/// What the device complained of last.
struct DeviceFailure {
    RTCError code = RTC_ERROR_NONE;
    std::string text;
};

/// Error callback of a device; `failure` is a DeviceFailure.
void keepDeviceError(void* failure, RTCError code, const char* message) {
    *static_cast<DeviceFailure*>(failure) = {code, message ? message : "unknown error"};
}

/// What is built has been checked, so what fails is the system: memory, or threads.
[[noreturn]] void throwShortage(const char* text) {
    platform::noteMemoryShortage();
    throw ExceptionMsg("No memory or threads for tracing rays: %s", text);
}

}  // namespace

Intersector::Intersector() : device(rtcNewDevice(kDeviceSettings)) {}

Intersector::~Intersector() {
    // What was given up half built takes memory to take down, and ends the program without.
    if (!isWhole)
        return;
    clear();
    if (device)
        rtcReleaseDevice(device);
}

void Intersector::clear() {
    if (scene)
        rtcReleaseScene(scene);
    for (const auto& [shape, shared] : shapeScenes)
        rtcReleaseScene(shared);
    scene = nullptr;
    shapeScenes.clear();
}

bool Intersector::build(const std::vector<std::unique_ptr<SceneObject>>& objects,
                        std::string& error) {
    if (!device && rtcGetDeviceError(nullptr) != RTC_ERROR_UNSUPPORTED_CPU)
        throwShortage("the ray library can't be started");
    if (!device) {
        error = "the ray library can't use this processor";
        return false;
    }
    clear();
    isWhole = false;
    DeviceFailure failure;
    rtcSetDeviceErrorFunction(device, keepDeviceError, &failure);
    std::size_t most = 0;
    for (const auto& object : objects)
        most = std::max(most, object->shape->mesh.triangles.size());
    numbers.resize(3 * most + 4);  // Embree may read 16 bytes at the last triangle
    std::iota(numbers.begin(), numbers.end(), 0u);
    scene = newScene(device);
    for (const auto& object : objects) {
        // A hit brings back this id alone: the number of the object, and its render id.
        assert(objects[object->index] == object);
        attach(scene, newGeometry(*object), object->index);
    }
    rtcCommitScene(scene);
    rtcSetDeviceErrorFunction(device, nullptr, nullptr);
    isWhole = failure.code == RTC_ERROR_NONE;
    if (!isWhole)
        throwShortage(failure.text.c_str());
    return true;
}

RTCGeometryTy* Intersector::newGeometry(const SceneObject& object) {
    const Mesh& mesh = object.shape->mesh;
    if (!object.place)
        return newTriangles(device, mesh, numbers);
    RTCScene& shared = shapeScenes[object.shape];
    if (!shared) {
        shared = newScene(device);
        attach(shared, newTriangles(device, mesh, numbers), 0);
        rtcCommitScene(shared);
    }
    return newInstance(device, shared, *object.place);
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
    if (rayHit.hit.geomID == RTC_INVALID_GEOMETRY_ID)
        return -1.0f;
    object = objectOf(rayHit.hit);
    hit.triangle = rayHit.hit.primID;
    hit.baryU = withoutRim(rayHit.hit.u);
    hit.baryV = withoutRim(rayHit.hit.v);
    return rayHit.ray.tfar;
}

bool Intersector::walkShadow(const Point& origin, const Vector& direction, double distance,
                             u32 skipObject, u32 skipTriangle, ShadowVisitor& visitor) const {
    ShadowQuery query;
    initQuery(query, skipObject, skipTriangle, &visitor, {});
    alignas(16) RTCRay ray;
    // Ends just before the light, so that a surface that it lies on doesn't shadow it.
    const double end = distance < kRayFar ? distance * 0.9999 : distance;
    fillRay(ray, origin, direction, 0.0, end);
    rtcOccluded1(scene, &query.context, &ray);
    if (query.thrown) [[unlikely]]
        std::rethrow_exception(query.thrown);
    return ray.tfar >= 0.0f;
}

}  // namespace Tarnkit
