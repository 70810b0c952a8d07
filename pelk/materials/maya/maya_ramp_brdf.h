#pragma once

#include "pelk/materials/maya/ramp.h"
#include "pelk/shading_math/matrix.h"

namespace Tarnkit {

/// What every sampler of one ramp material reads: the ramps, and what frameBegin has looked up.
/// Constant from frameBegin to frameEnd; all render threads read it.
struct MayaRampParams {
    ColorRamp colorRamp;            ///< diffuse colour, looked up as its `input` says
    ColorRamp transparencyRamp;     ///< share of what lies behind that shows; limited to 0 to 1
    ColorRamp incandescenceRamp;    ///< light that the surface emits, not scaled by its alpha
    ColorRamp specularRamp;         ///< colour of highlights
    ColorRamp environmentRamp;      ///< light from surroundings that aren't traced; counts squared
    FloatRamp specularRollOffRamp;  ///< reflectance of the highlight seen face on, 0 to 1
    FloatRamp reflectivityRamp;     ///< share of traced rays and environment, 0 to 1

    PelkVolume* volumeInterface = nullptr;  ///< the medium behind the surface; null for none
    float ior = 1.55f;         ///< index of refraction; the medium's own counts where there is one
    int reflectionLimit = 0;   ///< traceDepth from which on no reflection is traced
    int refractions = 0;       ///< not 0: refraction is traced
    int refractionLimit = -1;  ///< traceDepth from which on no refraction is traced

    // Positions of render channels for Fragment::setChannel, -1 where the render has none.
    int diffuseChannel = -1;           ///< surface colour
    int reflectionChannel = -1;        ///< what the reflected ray adds
    int rawReflectionChannel = -1;     ///< the same without the reflectivity
    int reflectionFilterChannel = -1;  ///< the reflectivity
    int refractionChannel = -1;        ///< what the refracted ray adds
    int rawRefractionChannel = -1;     ///< the same without its weight
    int refractionFilterChannel = -1;  ///< the weight of the refraction
    int selfIllumChannel = -1;         ///< incandescence
    int specularChannel = -1;          ///< the highlight of the light evaluated last
};

/// The ramp shading of one hit: a diffuse term whose colour is looked up by the angle or strength
/// of the light, a Blinn highlight, and one traced reflection and refraction.
///
/// It is a look, not a physical BRDF. Light colours enter the diffuse term twice, brightness ramps
/// aren't linear in light, and nothing keeps the sum of the parts below 1. So there is no density
/// to sample and no share in MIS: `probLight` isn't read, and getNewContext offers no ray, as
/// traceForward traces its own.
///
/// Pooled and not constructed anew: `init` writes every field at each hit.
class MayaRampBRDF : public BRDFSampler, public BSDFSampler {
public:
    /// Sets the sampler up for the hit. `rampParams` outlives it. `diffuseWeight`: scales the
    /// diffuse colour. `ambientColor`: light from everywhere, times the ramp's colour and alpha.
    /// `highlightWidth`: eccentricity of the highlight, 0 is a point, 1 covers all. `highlight`:
    /// its weight. Reads the transparency ramp, with the normal turned to the viewer's side, and
    /// leaves the context as it was. Throws what textures throw.
    void init(PelkContext& context, const MayaRampParams& rampParams, float diffuseWeight,
              const AColor& ambientColor, float highlightWidth, float highlight);

    /// This object for the side that was hit, null for the other.
    BRDFSampler* getBRDF(BSDFSide side) override;
    PelkVolume* getVolume(PelkContext&) override { return params->volumeInterface; }

    /// Black, so that no host gathers indirect diffuse light for it. `lightColor` becomes black.
    Color getDiffuseColor(Color& lightColor) override;
    /// White, and `lightColor` with it: in a stack of layers it lets all light pass.
    Color getLightMult(Color& lightColor) override;
    /// The diffuse term and the highlight. With a brightness ramp the diffuse term only notes how
    /// much light there is, as the ramp is read once for the sum of all lights, in traceForward: so
    /// the light loop has to come before it.
    Color eval(PelkContext& context, const Vector& direction, Color& lightColor,
               Color& origLightColor, float probLight, int flags) override;
    /// Writes the four results: traced rays, environment, ambient light, the colour of a brightness
    /// ramp, and incandescence. Everything but direct light.
    void traceForward(PelkContext& context, int doDiffuse) override;
    Color getTransparency(PelkContext&) override { return transparency; }

private:
    float colorPosition(const PelkContext& context, const Vector& direction, Color light) const;
    Color evalDiffuse(PelkContext& context, const Vector& direction, Color light);
    Color evalSpecular(PelkContext& context, const Vector& direction, Color light) const;
    float cosineToNormal(Vector v) const;

    void addTracedRays(PelkContext& context, float reflectivity);
    float addRefraction(PelkContext& context, float reflectivity, bool& isTotal);
    void addReflection(PelkContext& context, float share, float reflectivity);
    float relativeIOR(PelkContext& context) const;
    Color traceAlong(PelkContext& context, const Vector& direction, float weight, u32 rayFlag);
    void addEnvironment(PelkContext& context, float facing, float reflectivity) const;
    void addSurfaceColor(PelkContext& context) const;
    void addIncandescence(PelkContext& context, float facing) const;
    Color ambientTerm(PelkContext& context) const;

    const MayaRampParams* params = nullptr;
    float diffuse = 0.0f;
    Color transparency;  // each channel 0 to 1
    AColor ambient;
    float eccentricity = 0.0f, specularity = 0.0f;
    Matrix toNormalFrame;  // world to the frame whose z axis is the normal on the viewer's side
    int wasBackSide = 0;
    bool hasOpacity = false;       // something of the surface shows
    bool brightnessInput = false;  // the colour ramp is looked up by brightness
    // The ramp position gathered over the lights, with brightnessInput; else 1 once a light has
    // given a diffuse term.
    float lightInput = 0.0f;
    Vector refractDerivatives[2];  // of the refracted ray's direction along the pixel's x and y
};

}  // namespace Tarnkit
