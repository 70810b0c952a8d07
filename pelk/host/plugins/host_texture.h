#pragma once

#include "pelk/contract/desc_of.h"
#include "pelk/contract/texture.h"

namespace Tarnkit {

/// Base of the textures of this host. Derived classes write getTexColor, whose colour is linear and
/// premultiplied by alpha; read as a float a texture is the mean of the components, as an integer
/// that rounded. As a height field it has a bump of its own. Looked up on all render threads at
/// once.
class HostTexture : public PluginOffering<TextureInterface, TextureFloatInterface,
                                          TextureIntInterface, RTTexInterface> {
public:
    using PluginOffering::PluginOffering;

    float getTexFloat(PelkContext& context) override;
    int getTexInt(PelkContext& context) override;
    /// Minus the gradient of getTexFloat along the surface, by finite differences of one pixel's
    /// width: so for every texture that goes by the place of the hit, whether through texture
    /// coordinates or not. Those that don't, such as one constant colour, answer with zeros.
    Vector getTexBump(PelkContext& context) override;
    /// Writes the texture in the section "MaterialDescriptor" and answers 1; else 0.
    int writeTexSource(const char* type, const char* name, const char* kind, ShaderSource& source,
                       OCLData& data) final;

protected:
    /// Writes the texture as one line of the material's descriptor.
    virtual void describe(ShaderSource& source) = 0;
};

/// The nearest integer, clamped to the range of int; 0 for NaN.
int nearestInt(float x);

/// Texture coordinates at the hit: of the generator, or without one (null) ownCoordinates.
Vector textureCoordinates(PelkContext& context, UVWGenInterface* uvwgen);

/// Texture coordinates without a generator: set `uvSet` of the mesh, from 0. A lookup for the
/// backplate, which has no hit, gets the pixel's place on the picture, 0 to 1 from the lower left
/// corner; any other without a hit, that of the ray's direction on a longitude-latitude image.
Vector ownCoordinates(PelkContext& context, int uvSet);

}  // namespace Tarnkit
