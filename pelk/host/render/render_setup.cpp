#include "pelk/host/render/render_setup.h"

#include <cassert>

#include "pelk/host/render/shape_library.h"
#include "pelk/host/scene/scene.h"
#include "pelk/host/scene/scene_json.h"

namespace Tarnkit {

namespace {

/// The JSON pointer of the instance that offers an interface, as messages name places of a scene.
std::string placeOf(PluginInterface* offered) {
    return pointerTo("/plugins", instanceName(static_cast<Plugin*>(offered->getPlugin())));
}

void applySettings(const SceneSettings& settings, const RenderOptions& options, int threads,
                   MessageLog* log, HostRenderer& renderer) {
    SequenceData& sequence = renderer.sequenceData;
    sequence.log = log;
    sequence.numThreads = threads;
    sequence.maxRayDepth = settings.maxDepth;
    sequence.reflectiveGi = settings.reflectiveGi;
    sequence.reflectionsEnabled = settings.reflections;
    sequence.depthOverride = settings.depthOverride;
    renderer.gi.enabled = settings.gi;
    renderer.gi.bumpInGi = settings.giBump;
    renderer.background = settings.background;
    renderer.frameData.frameTime = settings.time;
    renderer.frameData.imageWidth = options.width;
    renderer.frameData.imageHeight = options.height;
}

}  // namespace

int RenderSetup::MaterialCamera::mapToScreen(PelkContext& context, ScreenPoint& point,
                                             float* distance) {
    return scene.camera->project(context.hitPoint, point, distance);
}

RenderSetup::RenderSetup(Scene& scene_, const RenderOptions& options_, int threads, MessageLog* log)
    : scene(scene_),
      options(options_),
      materialCamera(scene_),
      sceneOrigin(scene_.settings.origin),
      plugins(scene_, renderer) {
    applySettings(scene.settings, options, threads, log, renderer);
    renderer.backplate = scene.backplate;
    renderer.sequenceData.camera = &materialCamera;
    renderer.sequenceData.worldTransform = &sceneOrigin;
    renderer.sequenceData.useWorldTransform = sceneOrigin.offset != Vector();
    channels.setPlugin(&renderer.sequenceData);
    renderer.sequenceData.addInterface(&channels, 0);
}

bool RenderSetup::prepare(std::string& error) {
    if (!scene.camera) {
        error = "the scene has no camera";
        return false;
    }
    if (!channels.collect(scene, options.channels, error))
        return false;
    // Before the life cycle begins: materials ask in their frameBegin for the render ids of
    // objects.
    int renderID = 0;
    for (GeometryInterface* geometry : scene.collect<GeometryInterface>())
        geometry->setRenderID(renderID++);
    plugins.beginRender();
    plugins.beginFrameOfCamera();
    if (!prepareCamera(error))
        return false;
    plugins.beginFrame();
    return buildObjects(error) && prepareLights(error);
}

bool RenderSetup::buildObjects(std::string& error) {
    [[maybe_unused]] RenderContext noHit;  // the id of an object is the same all over it
    const std::vector<GeometryInterface*> geometries = scene.collect<GeometryInterface>();
    ShapeLibrary library(geometries, renderer.shapes);
    for (GeometryInterface* geometry : geometries) {
        auto object = std::make_unique<SceneObject>();
        if (!library.makeShape(renderer.objects.size(), *object, error)) {
            error = placeOf(geometry) + ": " + error;
            return false;
        }
        object->plugin = geometry->getPlugin();
        object->material = findInterface<MaterialInterface>(geometry->getMaterial());
        object->renderIDs = findInterface<GeomObjectInterface>(object->plugin);
        object->index = static_cast<u32>(renderer.objects.size());
        // A ray compares Embree's ids of objects, which are these, with the render ids in a
        // surface's exclude tables. Both number the same geometry in the same order.
        assert(!object->renderIDs ||
               object->renderIDs->getRenderID(noHit) == static_cast<int>(object->index));
        renderer.objects.push_back(std::move(object));
    }
    return renderer.intersector.build(renderer.objects, error);
}

bool RenderSetup::prepareLights(std::string& error) {
    std::vector<LightInterface*> lights = scene.collect<LightInterface>();
    const SceneBounds bounds = renderer.intersector.bounds();
    for (LightInterface* light : lights) {
        if (!light->prepare(bounds, error)) {
            error = placeOf(light) + ": " + error;
            return false;
        }
    }
    renderer.lightLoop.setLights(lights);
    return true;
}

/// Whether the rays through the corners of the picture can be traced, and so all others.
bool RenderSetup::canTraceFromCamera() const {
    RenderContext ray;
    for (const int x : {0, options.width}) {
        for (const int y : {0, options.height}) {
            makeRay(x, y, ray);
            if (!isTraceable(ray.rayOrigin, ray.rayDir, 0.0))
                return false;
        }
    }
    return true;
}

bool RenderSetup::prepareCamera(std::string& error) {
    if (!scene.camera->prepare(options.width, options.height, error)) {
        error = placeOf(scene.camera) + ": " + error;
        return false;
    }
    if (!canTraceFromCamera()) {
        error = placeOf(scene.camera) +
                ": its rays start beyond 1e18, where none are traced; expected less of its "
                "position, of its width or of /settings/origin";
        return false;
    }
    renderer.frameData.cameraPosition = scene.camera->getPosition();
    scene.camera->getAxes(renderer.frameData.cameraMatrix);
    return true;
}

}  // namespace Tarnkit
