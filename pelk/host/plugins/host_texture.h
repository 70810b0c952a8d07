#pragma once

#include "pelk/contract/pelk_plugin.h"
#include "pelk/contract/texture.h"

namespace Tarnkit {

/// Base of the textures of this host. A texture gives a colour, multiplied by its alpha already;
/// as a number it is the mean of the channels, as an integer the nearest one to that. None has a
/// bump or a tangent frame of its own.
class HostTexture : public PelkPlugin,
                    public TextureInterface,
                    public TextureFloatInterface,
                    public TextureIntInterface,
                    public RTTexInterface {
public:
    explicit HostTexture(PelkPluginDesc* pluginDesc) : PelkPlugin(pluginDesc) {}

    using Offered =
        InterfaceList<TextureInterface, TextureFloatInterface, TextureIntInterface, RTTexInterface>;

    PluginInterface* getInterface(u64 id) override;
    PluginBase* getPlugin() override { return this; }

    float getTexFloat(PelkContext& context) override;
    int getTexInt(PelkContext& context) override;
    Vector getTexBump(PelkContext&) override { return {}; }
    /// Writes the texture in the section "MaterialDescriptor" and answers 1; else 0.
    int writeTexSource(const char* type, const char* name, const char* kind, ShaderSource& source,
                       OCLData& data) final;

protected:
    virtual void describe(ShaderSource& source) = 0;
};

/// The same colour everywhere.
class TexConstant final : public HostTexture {
public:
    struct Params {
        Color color;
        float alpha = 1.0f;
    };

    static constexpr const char* kName = "TexConstant";
    static constexpr u32 kID = 0x7E100031;

    explicit TexConstant(PelkPluginDesc* pluginDesc);
    static void addParameters(PelkParameterListDesc& list);

    AColor getTexColor(PelkContext& context) override;

private:
    void describe(ShaderSource& source) override;

    Params params;
};

/// Squares of two colours in turn. As an integer it is 0 where the first colour is, else 1.
class TexChecker final : public HostTexture {
public:
    struct Params {
        Color color1, color2;
        float squares = 8.0f;  ///< along one unit of u and of v
        PluginBase* uvwgen = nullptr;
    };

    static constexpr const char* kName = "TexChecker";
    static constexpr u32 kID = 0x7E100032;

    explicit TexChecker(PelkPluginDesc* pluginDesc);
    static void addParameters(PelkParameterListDesc& list);

    void frameBegin(PelkRenderer& renderer) override;
    AColor getTexColor(PelkContext& context) override;
    int getTexInt(PelkContext& context) override;

private:
    void describe(ShaderSource& source) override;

    Params params;
    UVWGenInterface* uvwgen = nullptr;  // set in frameBegin
};

/// The texture coordinates of the surface: scaled, turned about their origin, and moved.
class UVWGenMap final : public PelkPlugin, public UVWGenInterface {
public:
    struct Params {
        Color scale;
        float rotation = 0.0f;  ///< degrees, from u towards v
        Color offset;
        int uv_set = 0;
    };

    static constexpr const char* kName = "UVWGenMap";
    static constexpr u32 kID = 0x7E100012;
    using Offered = InterfaceList<UVWGenInterface>;

    explicit UVWGenMap(PelkPluginDesc* pluginDesc);
    static void addParameters(PelkParameterListDesc& list);

    PluginInterface* getInterface(u64 id) override;
    PluginBase* getPlugin() override { return this; }

    void frameBegin(PelkRenderer& renderer) override;
    Vector getUVW(PelkContext& context) override;
    Transform getTangentFrame(PelkContext& context, int& valid) override;

private:
    Params params;
    float sine = 0.0f, cosine = 1.0f;  // set in frameBegin
};

/// The nearest integer, within its limits; 0 for what is no number.
int nearestInt(float x);

/// Texture coordinates at the hit: by the generator, or those of the surface without one. What is
/// read as the background of the picture covers the picture.
Vector textureCoordinates(PelkContext& context, UVWGenInterface* uvwgen);

}  // namespace Tarnkit
