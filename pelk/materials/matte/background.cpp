#include "pelk/materials/matte/background.h"

namespace {

Color readEnvironment(PelkContext& context) {
    context.renderer->evalEnvironment(context);
    return context.resultColor;
}

/// The hit in the space in which the camera stands.
Point hitBeforeCamera(const PelkContext& context) {
    const SequenceData& settings = context.renderer->sequenceData;
    Point point = context.hitPoint;
    if (settings.useWorldTransform)
        settings.worldTransform->transformPoint(point, context.hitPoint, context.time);
    return point;
}

/// The borders are inside. A position that is not a number is not.
bool isInPicture(ScreenPoint p, const FrameData& frame) {
    return p.x >= 0.0 && p.x <= frame.imageWidth && p.y >= 0.0 && p.y <= frame.imageHeight;
}

/// The background at a position of the picture, read along the ray that the camera has there.
Color readPicture(PelkContext& context, ScreenPoint p) {
    const Vector toCamera =
        normalizeGuarded(context.renderer->frameData.cameraPosition - context.hitPoint);
    const ScopedValue x(context.screenX, p.x);
    const ScopedValue y(context.screenY, p.y);
    const ScopedValue direction(context.rayDir, -toCamera);
    const ScopedValue flags(context.shadeFlags, context.shadeFlags | kShadeBackgroundLookup);
    return readEnvironment(context);
}

}  // namespace

Color lookUpBackground(PelkContext& context, bool projects) {
    PelkRenderer& renderer = *context.renderer;
    PelkCamera* camera = renderer.sequenceData.camera;
    if (!projects || context.traceDepth <= 0 || !camera)
        return readEnvironment(context);
    const ScopedValue hitPoint(context.hitPoint, hitBeforeCamera(context));
    ScreenPoint p{0.5, 0.5};
    float distance = 0.0f;
    const bool isMapped = camera->mapToScreen(context, p, &distance) != 0;
    return isMapped && isInPicture(p, renderer.frameData) ? readPicture(context, p)
                                                          : readEnvironment(context);
}
