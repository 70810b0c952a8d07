#pragma once

#include "pelk/contract/material.h"

namespace Tarnkit {

/// What a bump map holds, and so how it moves the shading normal: the values of the parameter
/// `map_type`. Above kBumpNone, and below 0, a map is read as one in world space.
enum BumpForm : int {
    /// A height over the surface (Blinn, "Simulation of Wrinkled Surfaces", SIGGRAPH 1978): the
    /// normal follows the slope between neighbouring places.
    kBumpHeight = 0,
    kBumpTangentSpace = 1,  ///< a normal map about the axes of texture coordinates and the normal
    kBumpObjectSpace = 2,   ///< a normal map in the space of the object
    kBumpCameraSpace = 3,   ///< a normal map by right, up and towards the camera
    kBumpWorldSpace = 4,    ///< a normal map in world space
    kBumpOfTexture = 5,     ///< the texture's own bump, TextureInterface::getTexBump
    kBumpExplicit = 6,      ///< the texture's colour is the normal itself, negative channels too
    kBumpNone = 7,          ///< the normal stays; also that of a hit where no bump is wanted
};

/// Parameters of MtlBump, as the host refreshes them at each frameBegin. Written there, and only
/// read by the render threads.
struct BumpParams {
    PluginBase* baseMtl = nullptr;              ///< what shades, with the moved normal
    TextureInterface* colorTex = nullptr;       ///< the map; goes before `floatTex`
    TextureFloatInterface* floatTex = nullptr;  ///< a height map of numbers; no normal map
    /// How much the map counts. Of a height map the height of white in scene units, negative for
    /// dents; of a normal map the share of the way to the map's normal, 1 for all of it.
    float bumpMult = 1.0f;
    TextureFloatInterface* multTex = nullptr;  ///< a factor of `bumpMult` at each hit; may be null
    PluginBase* bumpTexPlugin = nullptr;       ///< an older way to name the map; wins if it is set
    int bumpShadows = 0;        ///< not 0: a height map raises the hit point too, so lights see it
    float deltaScale = 1.0f;    ///< width of the slope of a height map, in pixels; above 0
    int mayaCompatible = 0;     ///< not 0: normal maps in tangent space keep to the viewer's side
    int mapType = kBumpHeight;  ///< a BumpForm
    PluginBase* normalUvwgen = nullptr;  ///< axes of a map in tangent space; null: the surface's
    int bumpForShadows = 1;  ///< 0: shadow rays, which ask for transparency alone, read no map

    static ParamRows<BumpParams> table();
};

/// The bump of a hit: what it does to the normal, for applyBump, and by how much the hit point is
/// raised. Reads the textures, so it is called once a hit however many lights there are, on the
/// render thread of the hit. The context is as before when it returns or throws; it throws what
/// textures throw.
///
/// Overwrites both vectors. False if the hit gets no bump: on shadow rays, where `bumpForShadows`
/// is 0, and behind a diffuse bounce, where bump costs more than it shows, unless the ray has
/// kRayGiBump. Nothing is read then.
bool computeBump(const BumpParams& params, PelkContext& context, Vector& bump, Vector& offset);

/// `normal` with a bump of computeBump. `mode`: the map's BumpForm, kBumpNone if computeBump
/// answered false. `flippedSide`: that of the context; a bump belongs to the surface's own normal
/// and turns over with it.
///
/// A height map keeps the length of the normal, an explicit normal has that of the map, and all
/// other forms give a unit vector; a zero sum of normal and bump stays zero.
Vector applyBump(Vector normal, int mode, Vector bump, int flippedSide);

}  // namespace Tarnkit
