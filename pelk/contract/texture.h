#pragma once

#include "pelk/base/color.h"
#include "pelk/base/vector.h"
#include "pelk/contract/plugin_base.h"

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
    virtual AColor getTexColor(PelkContext& context) = 0;
    /// The texture's own bump at the hit, as an offset of the normal.
    virtual Vector getTexBump(PelkContext& context) = 0;
};

/// A number at the hit.
class PELK_API TextureFloatInterface : public PluginInterface {
public:
    static constexpr InterfaceID<TextureFloatInterface> kInterfaceID{0x7782F8E5,
                                                                     "EXT_TEXTURE_FLOAT"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    virtual float getTexFloat(PelkContext& context) = 0;
    virtual Vector getTexBump(PelkContext& context) = 0;
};

/// An integer, an id for instance, at the hit.
class PELK_API TextureIntInterface : public PluginInterface {
public:
    static constexpr InterfaceID<TextureIntInterface> kInterfaceID{0x7782F8E6, "EXT_TEXTURE_INT"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    virtual int getTexInt(PelkContext& context) = 0;
};

/// A texture that can describe itself in the descriptor text of a material.
class PELK_API RTTexInterface : public PluginInterface {
public:
    static constexpr InterfaceID<RTTexInterface> kInterfaceID{0x77CFFFA6, "EXT_RTTEX"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    virtual int writeTexSource(const char* type, const char* name, const char* kind,
                               ShaderSource& source, OCLData& data) = 0;

    /// Has the plug-in behind a texture's face write its text; nothing is written, and the answer
    /// is 0, if the plug-in offers no EXT_RTTEX. `type` is "float" or "color".
    static int getRTTexSource(PluginInterface* texture, const char* type, const char* name,
                              const char* kind, ShaderSource& source, OCLData& data);
};

/// Turns a place on a surface into texture coordinates.
class PELK_API UVWGenInterface : public PluginInterface {
public:
    static constexpr InterfaceID<UVWGenInterface> kInterfaceID{0x780B88A9, "EXT_UVWGEN"};
    u64 getInterfaceID() const override { return kInterfaceID; }
    const char* getInterfaceName() const override { return kInterfaceID.name; }
    /// Texture coordinates at the hit.
    virtual Vector getUVW(PelkContext& context) = 0;
    /// The map from the world to texture coordinates, as SurfaceFrameInterface gives it; `valid`
    /// becomes 0 if there is none at the hit.
    virtual Transform getTangentFrame(PelkContext& context, int& valid) = 0;
};

}  // namespace Tarnkit
