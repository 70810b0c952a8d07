#pragma once

#include <vector>

#include "pelk/contract/pelk_plugin.h"
#include "pelk/contract/texture.h"
#include "pelk/host/trace/interfaces.h"

namespace Tarnkit {

/// What all lights have: colour and brightness, and which rays see them.
struct LightParams {
    Color color;
    float intensity = 1.0f;      ///< scales the colour; units as each light tells
    int visible = 1;             ///< camera rays see the light itself
    int reflection_visible = 1;  ///< reflected and refracted rays see it
    int shadows = 1;             ///< geometry stands in its way
    int affect_specular = 1;     ///< surfaces show highlights of it
};

/// Base of the lights of this host. A class that derives from it registers and binds the
/// parameters of LightParams in front of its own.
class HostLight : public PelkPlugin, public LightInterface {
public:
    explicit HostLight(PelkPluginDesc* pluginDesc);

    using Offered = InterfaceList<LightInterface>;
    static void addParameters(PelkParameterListDesc& list);

    PluginInterface* getInterface(u64 id) override;
    PluginBase* getPlugin() override { return this; }

    bool isVisibleTo(u32 rayType, int traceDepth) const override;
    bool hasExtent() const override { return true; }
    bool castsShadows() const override { return light.shadows != 0; }
    bool affectsSpecular() const override { return light.affect_specular != 0; }

protected:
    Color emission() const { return light.color * light.intensity; }

    LightParams light;
};

/// A rectangle that shines from its front. `intensity` is radiance.
class LightArea final : public HostLight {
public:
    struct Params {
        Color position;   ///< centre
        Color direction;  ///< to which the front looks, of any length
        Color up;         ///< the side of length `height` lies in the plane of this and `direction`
        float width = 1.0f, height = 1.0f;
    };

    static constexpr const char* kName = "LightArea";
    static constexpr u32 kID = 0x7E100001;

    explicit LightArea(PelkPluginDesc* pluginDesc);
    static void addParameters(PelkParameterListDesc& list);

    bool prepare(const SceneBounds& bounds, std::string& error) override;
    bool sample(PelkContext& context, float random1, float random2, LightSample& out) override;
    bool intersect(const Point& origin, const Vector& direction, double minT, double maxT,
                   LightHit& out) override;

private:
    Params params;
    Point centre;
    Vector normal, edgeU, edgeV;  // unit normal; whole edges
    Vector inverseU, inverseV;    // edges over their squared length
    float area = 1.0f;
};

/// A ball that shines to all sides. `intensity` is radiance.
class LightSphere final : public HostLight {
public:
    struct Params {
        Color position;
        float radius = 1.0f;
    };

    static constexpr const char* kName = "LightSphere";
    static constexpr u32 kID = 0x7E100002;

    explicit LightSphere(PelkPluginDesc* pluginDesc);
    static void addParameters(PelkParameterListDesc& list);

    bool prepare(const SceneBounds& bounds, std::string& error) override;
    bool sample(PelkContext& context, float random1, float random2, LightSample& out) override;
    bool intersect(const Point& origin, const Vector& direction, double minT, double maxT,
                   LightHit& out) override;

private:
    Params params;
    Point centre;
};

/// Light from one direction, or from a small disc of the sky. A white surface that faces it gets
/// the brightness `intensity`.
class LightSun final : public HostLight {
public:
    struct Params {
        Color direction;      ///< in which the light travels
        float angle = 0.53f;  ///< diameter of the disc in degrees; 0 is a light without extent
    };

    static constexpr const char* kName = "LightSun";
    static constexpr u32 kID = 0x7E100003;

    explicit LightSun(PelkPluginDesc* pluginDesc);
    static void addParameters(PelkParameterListDesc& list);

    bool isInfinite() const override { return true; }
    bool hasExtent() const override { return params.angle > 0.0f; }
    bool prepare(const SceneBounds& bounds, std::string& error) override;
    bool sample(PelkContext& context, float random1, float random2, LightSample& out) override;
    bool intersect(const Point& origin, const Vector& direction, double minT, double maxT,
                   LightHit& out) override;

private:
    Params params;
    Vector toSun, tangent, bitangent;
    float cosRadius = 1.0f;
    float density = 0.0f;
    Color radiance;
};

/// The surroundings. `intensity` scales a colour or a texture, which is read along directions.
/// Bright parts of a texture are sampled more often.
class LightDome final : public HostLight {
public:
    struct Params {
        TextureInterface* texture = nullptr;
    };

    static constexpr const char* kName = "LightDome";
    static constexpr u32 kID = 0x7E100004;

    explicit LightDome(PelkPluginDesc* pluginDesc);
    static void addParameters(PelkParameterListDesc& list);

    bool isInfinite() const override { return true; }
    bool isDome() const override { return true; }
    bool prepare(const SceneBounds& bounds, std::string& error) override;
    bool sample(PelkContext& context, float random1, float random2, LightSample& out) override;
    bool intersect(const Point& origin, const Vector& direction, double minT, double maxT,
                   LightHit& out) override;

private:
    Color radianceAlong(const Vector& direction) const;
    float densityAlong(const Vector& direction) const;
    void tabulate();

    Params params;
    // Sums over the cells of a longitude-latitude map, rows from the top: of each row's cells, and
    // of the rows. Empty without a texture.
    std::vector<float> cellSums, rowSums;
};

/// Texture coordinates by direction: a map of the surroundings whose width goes once around. The
/// middle of the map lies at -Z, the top at +Y.
class UVWGenEnvironment final : public PelkPlugin, public UVWGenInterface {
public:
    struct Params {
        float rotation = 0.0f;  ///< about +Y, in degrees; turns the surroundings to the right
    };

    static constexpr const char* kName = "UVWGenEnvironment";
    static constexpr u32 kID = 0x7E100011;
    using Offered = InterfaceList<UVWGenInterface>;

    explicit UVWGenEnvironment(PelkPluginDesc* pluginDesc);
    static void addParameters(PelkParameterListDesc& list);

    PluginInterface* getInterface(u64 id) override;
    PluginBase* getPlugin() override { return this; }
    Vector getUVW(PelkContext& context) override;
    Transform getTangentFrame(PelkContext& context, int& valid) override;

private:
    Params params;
};

}  // namespace Tarnkit
