#pragma once

#include "pelk/contract/texture.h"
#include "pelk/host/plugins/host_light.h"
#include "pelk/host/plugins/sky_image.h"
#include "pelk/host/plugins/sky_map.h"
#include "pelk/shading_math/matrix.h"

namespace Tarnkit {

/// Parameters of LightDome, as the host refreshes them at each frameBegin.
struct LightDomeParams {
    TextureInterface* texture = nullptr;  ///< factor of the colour by direction; null: none
    Color rotate;                         ///< degrees about X, then Y, then Z, as of geometry

    static ParamRows<LightDomeParams> table();
};

/// Environment light: an infinite sphere around the scene with the radiance of a colour, times that
/// of a texture. An image lies around the scene longitude by latitude, its middle at -Z and its top
/// edge at +Y; any other texture is asked along directions, with hitPoint on the unit sphere and no
/// hit object. Both turn with `rotate`. A plain colour is sampled uniformly.
///
/// `prepare` takes an image over pixel by pixel (SkyMap): it is importance-sampled by just what a
/// look-up gives, at 16.3 bytes a pixel, 137 MB for 4096 x 2048. An image of more than 2^25 pixels
/// is sampled by the means of its blocks instead, and looked up in the texture, so that no table is
/// larger than 547 MB. So are textures that are no images, by 1024 x 512 cells with four look-ups
/// each, in 9 MB; what these miss is found by a twentieth of the mean brightness everywhere.
class LightDome final : public WithParams<LightDomeParams, HostLight> {
public:
    static constexpr const char* kName = "LightDome";
    static constexpr u32 kID = 0x7E100004;

    using WithParams::WithParams;

    void frameBegin(PelkRenderer& renderer) override;
    bool isInfinite() const override { return true; }
    bool isDome() const override { return true; }
    /// Warns of pixels of an image that are negative or not finite.
    bool prepare(const SceneBounds& bounds, std::string& error) override;
    bool sample(PelkContext& context, float random1, float random2, LightSample& out) override;
    bool intersect(const Point& origin, const Vector& direction, double minT, double maxT,
                   LightHit& out) override;

private:
    void takeImage(const SkyImageInterface& image, const SkyLayout& layout);
    void takeBlocks(const SkyImageInterface& image, const SkyLayout& layout, int block);
    void probeTexture();
    /// Radiance of the texture along a unit direction of the dome's own space.
    Color textureAlong(const Vector& direction) const;
    /// Radiance, and density per solid angle, along such a direction, which is at `map`.
    SkyMap::Look look(UV map, const Vector& direction) const;

    MessageLog* log = nullptr;  // of the frame; may be null
    Matrix toWorld, toDome;     // these and the others: set in prepare
    SkyMap sky;                 // empty without a texture
    bool skyIsImage = false;    // its nodes are the image itself, so the texture needn't be asked
};

}  // namespace Tarnkit
