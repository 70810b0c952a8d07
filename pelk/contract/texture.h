#pragma once

#include "pelk/base/color.h"
#include "pelk/base/vector.h"
#include "pelk/contract/plugin_base.h"

// Textures: values that differ from hit to hit. A plug-in offers the interfaces of the kinds of
// values that it can give; most textures give all three. A material binds a texture parameter to
// one of the interfaces and finds null there while the scene connects none; a plain value that the
// scene sets comes as a texture too (ConstantTexture in plugin_parameters.h).
//
// The operations are called at hits, on all render threads at once, with the context of the hit:
// no lock, no memory from the heap, nothing written to the context that isn't put back. `hitObject`
// may be null: textures that paint the surroundings are asked along `rayDir`, by a UVW generator
// that maps directions, and backplates (kShadeBackgroundLookup in shadeFlags) at the pixel
// `screenX`, `screenY`. They may throw an ExceptionMsg for lack of memory and fail in no other way:
// a texture without its file answers a fixed value.

namespace Tarnkit {

class PelkContext;
class ShaderSource;
struct OCLData;

/// A colour at the hit.
class PELK_API TextureInterface : public PluginInterface {
public:
    static constexpr InterfaceID<TextureInterface> kInterfaceID{0x77780002, "EXT_TEXTURE"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    /// The colour, linear (a texture decodes the curve of its file itself), and premultiplied by
    /// its alpha, the share of what lies below that it covers. Neither is limited: an environment
    /// is brighter than 1, and whoever needs a reflectance or a coverage clamps.
    virtual AColor getTexColor(PelkContext& context) = 0;
    /// The texture's own bump: a vector in world space that is added to the unit shading normal,
    /// which is made unit after that. For a height field over the surface it is minus the gradient
    /// of the height along the surface, height and surface measured in the scene's unit. Zeros for
    /// a texture without. Those of `pelk` take the gradient of the mean of their channels, by
    /// getAutoBump.
    virtual Vector getTexBump(PelkContext& context) = 0;
};

/// A number at the hit: a roughness, a weight, a height.
class PELK_API TextureFloatInterface : public PluginInterface {
public:
    static constexpr InterfaceID<TextureFloatInterface> kInterfaceID{0x7782F8E5,
                                                                     "EXT_TEXTURE_FLOAT"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    /// The number, in the unit of the parameter that the texture stands for, and not limited. The
    /// textures of `pelk` give the mean of the channels of their colour.
    virtual float getTexFloat(PelkContext& context) = 0;
    /// As TextureInterface::getTexBump.
    virtual Vector getTexBump(PelkContext& context) = 0;
};

/// An integer, a material id for instance, at the hit.
class PELK_API TextureIntInterface : public PluginInterface {
public:
    static constexpr InterfaceID<TextureIntInterface> kInterfaceID{0x7782F8E6, "EXT_TEXTURE_INT"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    /// Any integer. Never a blend of neighbours, which would be the id of something else: an image
    /// answers the nearest pixel as its file holds it, without decoding a curve.
    virtual int getTexInt(PelkContext& context) = 0;
};

/// A texture that can describe itself in the descriptor text of a material. Called where materials
/// describe themselves (RTMtlInterface), outside of hits.
class PELK_API RTTexInterface : public PluginInterface {
public:
    static constexpr InterfaceID<RTTexInterface> kInterfaceID{0x77CFFFA6, "EXT_RTTEX"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    /// Appends the texture's lines for the section `kind` to `source`. `type` is "float" or
    /// "color", what the material reads from it; `name` is the text that the material was given and
    /// may be empty or null; `data` is passed through. Returns 1 if the texture handled the
    /// section, else 0, with nothing written. Those of `pelk` write one line in
    /// "MaterialDescriptor", as "color 1.000000 0.500000 0.000000", and nothing in other sections.
    /// Throws only for lack of memory.
    virtual int writeTexSource(const char* type, const char* name, const char* kind,
                               ShaderSource& source, OCLData& data) = 0;

    /// Has the plug-in behind a texture's interface write its lines, as writeTexSource. Nothing is
    /// written, and the answer is 0, if `texture` is null or its plug-in offers no EXT_RTTEX, as a
    /// plain value doesn't.
    static int getRTTexSource(PluginInterface* texture, const char* type, const char* name,
                              const char* kind, ShaderSource& source, OCLData& data);
};

/// Turns a place on a surface, or a direction, into texture coordinates. Textures have one as a
/// parameter and take the surface's own coordinates where it is null. Called at hits like the
/// textures themselves.
class PELK_API UVWGenInterface : public PluginInterface {
public:
    static constexpr InterfaceID<UVWGenInterface> kInterfaceID{0x780B88A9, "EXT_UVWGEN"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    /// Texture coordinates u, v, w at the hit. An image fills 0 to 1 in u and v, with v upward from
    /// its last row; values outside are the texture's to repeat or to clamp.
    virtual Vector getUVW(PelkContext& context) = 0;
    /// The tangent frame of the coordinates, as SurfaceFrameInterface::getSurfaceFrame gives it for
    /// a surface: the linear map from world space to (u, v, distance along the surface's normal).
    /// The columns of its inverse are the tangent and the bitangent, the directions in world space
    /// in which u and v grow, and the normal. Its offset isn't used. Writes 1 to `valid`, or 0 if
    /// the coordinates don't run along the surface, as those of an environment; the map means
    /// nothing then, and a normal map in tangent space is taken for one in world space.
    virtual Transform getTangentFrame(PelkContext& context, int& valid) = 0;
};

/// The bump of a texture that is taken for a height field over the surface: the shading normal x
/// the gradient of the height along the surface, in scene units per scene unit. Called by bump
/// materials at a hit. A vector in world space, at right angles to the normal, by which a normal
/// leans downhill as in Blinn, "Simulation of Wrinkled Surfaces", SIGGRAPH 1978:
///
///     const Vector bump = getAutoBump(context, texture, 0, 1.0f);
///     const Vector bumped = normalizeGuarded(normal + cross(normal, bump));
///
/// A number is the height itself, of a colour its mean is. The gradient is taken by differences:
/// the texture is read at four places, half of `amount` pixel widths before and behind the hit in
/// two directions at right angles along the surface, with the context's hitPoint moved there and
/// nothing else of it changed. So a texture works that goes by hitPoint, or by coordinates that
/// follow it (SurfaceUVInterface); one that looks at the hit's number or at the ray alone has no
/// slope. By coordinates the slope is that of the face hit, with no step at its edges. The pixel's
/// width at the hit comes from the ray differentials, so that far-off detail finer than a pixel
/// doesn't glitter; without differentials it is a thousandth of the ray's length.
///
/// `texture`: not null. `mode`: 0; not read. `amount`: factor of the pixel's width, 1 as a rule;
/// larger smooths. Zeros if it isn't above 0, for a flat texture, and where heights aren't finite.
/// Throws what the texture throws; hitPoint is put back then too.
PELK_API Vector getAutoBump(PelkContext& context, TextureInterface* texture, int mode,
                            float amount);
PELK_API Vector getAutoBump(PelkContext& context, TextureFloatInterface* texture, int mode,
                            float amount);

}  // namespace Tarnkit
