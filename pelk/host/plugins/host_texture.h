#pragma once

#include "pelk/contract/desc_of.h"
#include "pelk/contract/texture.h"

namespace Tarnkit {

/// Base of the textures of this host. A texture gives a colour, multiplied by its alpha already;
/// as a number it is the mean of the channels, as an integer the nearest one to that. None has a
/// bump or a tangent frame of its own.
class HostTexture : public PluginOffering<TextureInterface, TextureFloatInterface,
                                          TextureIntInterface, RTTexInterface> {
public:
    using PluginOffering::PluginOffering;

    float getTexFloat(PelkContext& context) override;
    int getTexInt(PelkContext& context) override;
    Vector getTexBump(PelkContext&) override { return {}; }
    /// Writes the texture in the section "MaterialDescriptor" and answers 1; else 0.
    int writeTexSource(const char* type, const char* name, const char* kind, ShaderSource& source,
                       OCLData& data) final;

protected:
    virtual void describe(ShaderSource& source) = 0;
};

/// The nearest integer, within its limits; 0 for what is no number.
int nearestInt(float x);

/// Texture coordinates at the hit: by the generator, or those of the surface without one. What is
/// read as the background of the picture covers the picture.
Vector textureCoordinates(PelkContext& context, UVWGenInterface* uvwgen);

}  // namespace Tarnkit
