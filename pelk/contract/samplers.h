#pragma once

#include "pelk/base/api.h"
#include "pelk/base/color.h"
#include "pelk/base/vector.h"

namespace Tarnkit {

class PelkContext;
class PelkVolume;
struct RenderChannelsInfo;

/// The side of a surface that a sampler is asked for.
enum BSDFSide : int { kFrontSide = 0, kBackSide = 1 };

/// Bit of the flags of getBSDF: the caller wants the sampler of a single-sided surface.
constexpr int kSingleSided = 0x1;

/// Bit of the flags of BRDFSampler::eval: the diffuse light of the surface is wanted.
constexpr int kEvalDiffuse = 0x1;
/// Bit of the flags of BRDFSampler::eval: the specular light of the surface is wanted.
constexpr int kEvalSpecular = 0x2;

/// Scatters light at one hit on one side of a surface. Used by one thread, between getBSDF and
/// releaseBSDF. The bodies here are those of a black surface.
class PELK_API BRDFSampler {
public:
    virtual ~BRDFSampler();

    /// What the surface diffusely sends back of light that comes evenly from all sides; what it
    /// lets through to layers below is left in `lightColor`.
    virtual Color getDiffuseColor(Color& lightColor);
    virtual Vector getDiffuseNormal(PelkContext& context);
    /// Like getDiffuseColor, for all that the surface takes out of the light.
    virtual Color getLightMult(Color& lightColor);
    /// Light from one sample of a light. `lightColor` comes with shadows, `origLightColor` without
    /// them; what passes on to layers below is left in both. `probLight` is 2 pi times the density
    /// per solid angle with which the direction was chosen, 1e18 for a light without extent. A
    /// white Lambert surface that faces a light of 1 gives 1.
    virtual Color eval(PelkContext& context, const Vector& direction, Color& lightColor,
                       Color& origLightColor, float probLight, int flags);
    /// Scales what eval has summed for the current light.
    virtual void multiplyLight(float factor);
    /// The samples of one light are done.
    virtual void lightFinished(int light);
    virtual int getUseIrradianceMap();
    /// Writes the four results of the context: what is traced and what glows, without the direct
    /// light. `doDiffuse` 0 leaves indirect diffuse light out.
    virtual void traceForward(PelkContext& context, int doDiffuse);
    /// The number of rays that getNewContext offers.
    virtual int getNumSamples(PelkContext& context, int doDiffuse);
    virtual Color getTransparency(PelkContext& context);
    virtual Color getColor(PelkContext& context, Color color);
    virtual Color getAlpha(PelkContext& context, Color alpha);
    /// A spawned context for the sampler's own ray, not yet set up, or null if it has none.
    virtual PelkContext* getNewContext(PelkContext& context, int& sampler, int doDiffuse);
    /// Points `newContext` along a scattered direction. Returns the weight of what it will see.
    virtual float setupContext(PelkContext& context, PelkContext& newContext, float random,
                               int sample);
    virtual RenderChannelsInfo* getRenderChannels();
    virtual int getNumSubBRDFs();
    virtual BRDFSampler* getSubBRDF(int index, Color& weight);
    virtual Color getSelfIllumination(PelkContext& context);
    virtual void evalPdfs(const Vector& direction, float& forward, float& backward, int flags);
    virtual BRDFSampler* chooseRandomSubBRDF(float& random, float& probability, Color& weight,
                                             int flags);
};

/// Stands for a surface at one hit: hands out what scatters on either side.
class PELK_API BSDFSampler {
public:
    virtual ~BSDFSampler();

    /// The scattering of one side, null if that side has none. Asked anew before each use.
    virtual BRDFSampler* getBRDF(BSDFSide side);
    /// Writes the four results: traceForward of the viewer's side and the sampler's own ray.
    virtual void traceBSDFForward(PelkContext& context, int doDiffuse);
    /// How much light passes straight through; white without a sampler on either side.
    virtual Color getBSDFTransparency(PelkContext& context);
    virtual PelkVolume* getVolume(PelkContext& context);
};

/// The face of a side, else that of the other side: a sampler that was made with a turned context
/// answers for the side that it was made for. Null if neither answers.
PELK_API BRDFSampler* resolveBRDF(BSDFSide side, BSDFSampler* bsdf);
/// The same for the viewer's side.
PELK_API BRDFSampler* resolveBRDF(PelkContext& context, BSDFSampler* bsdf);

}  // namespace Tarnkit
