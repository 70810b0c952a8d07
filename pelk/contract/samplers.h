#pragma once

#include "pelk/base/api.h"
#include "pelk/base/color.h"
#include "pelk/base/vector.h"

namespace Tarnkit {

class PelkContext;
class PelkVolume;
struct RenderChannelsInfo;

/// The side of a surface that a sampler is asked for. The front is the side to which the geometric
/// normal points; the viewer's side is the back where PelkContext::backSide is not 0.
enum BSDFSide : int { kFrontSide = 0, kBackSide = 1 };

/// Bit of the flags of BSDFInterface::getBSDF: the caller wants a single-sided surface, which has
/// no BRDF for its back and so is black there. The other bits have no meaning here; a material that
/// wraps another passes them on.
constexpr int kSingleSided = 0x1;

// Bits of the flags of BRDFSampler::eval. Light loops set both, or the second alone where they
// scale highlights apart from diffuse light, as for caustics.

/// The diffuse reflection is wanted.
constexpr int kEvalDiffuse = 0x1;
/// The specular (glossy) reflection is wanted, unless the ray has kRayNoSpecular.
constexpr int kEvalSpecular = 0x2;

// Values of `doDiffuse`, by which the caller of traceForward, traceBSDFForward and getNewContext
// says which indirect light it wants.

/// No indirect diffuse light, for a caller that has it from elsewhere or wants none. The sampler's
/// own rays (mirror, glossy lobe, refraction) are traced.
constexpr int kWithoutIndirectDiffuse = 0;
/// All indirect light: what the GI engine gathers, and the sampler's own rays.
constexpr int kAllIndirect = 1;
/// The indirect diffuse light without the sampler's own rays, for a caller that wants the light
/// which the host gathers and no mirrors: getNewContext then answers null.
constexpr int kWithoutOwnRays = 2;

/// The BRDF of one side of a surface at one hit: evaluates light samples (next-event estimation),
/// gathers indirect light, and samples rays of its own for lobes that lights can't be sampled for.
///
/// *Who makes it.* A material or BSDF plug-in, in getBSDF, from a pool at the thread's index: it
/// writes every field anew, or the last hit shows through. One thread uses it, from getBSDF to
/// releaseBSDF and with the context that getBSDF got. It stays the plug-in's.
///
/// *What is called at a hit*, in this order, by computeDirectLighting and traceBSDFForward:
///
/// 1. getTransparency of the viewer's side: resultTransparency holds it while lights are evaluated.
/// 2. For each light, for each of its samples: BSDFSampler::getBRDF for the side on which the light
///    lies, then, with the context's normal set to getDiffuseNormal, eval.
/// 3. After the samples of one light: multiplyLight(1 / number of samples), lightFinished(light).
/// 4. traceForward of the viewer's side: the four results but for direct light.
/// 5. getNewContext; if it gives a ray, setupContext, and PelkRenderer::traceRay.
///
/// On a shadow ray getTransparency alone is called. Layers and wrappers call the operations of what
/// they hold in the same order.
///
/// *Scale.* Values are pi times those of radiometry, so that a white Lambert surface facing a light
/// of 1 gives 1: eval returns pi * BRDF * cosine * `lightColor`, where the host passes radiance /
/// (pi * density per solid angle), or irradiance / pi of a light without extent. Densities are 2 pi
/// times those per solid angle: uniform over a hemisphere is 1, cosine-weighted is 2 * cosine.
///
/// *Multiple importance sampling.* The host's indirect rays, which are cosine-weighted, may hit a
/// light that the light loop samples too. Where DefaultGlobalLightManager::usesLightMis answers so,
/// the host weights what those rays see of lights by the power heuristic, and a diffuse sampler
/// must weight the other half itself, in eval:
///
///     p^2 / (p^2 + q^2),   p = probLight, q = 2 * cosine
///
/// (Veach, "Robust Monte Carlo Methods for Light Transport Simulation", 1997, eq. 9.13.) One that
/// forgets it counts the overlap twice and is too bright, silently: below the middle of a square
/// light that is half as wide again as it is high above the surface, by 18 %; under a uniform dome
/// by 82 %. The answer is asked for once, when the sampler is made, and kept. A sampler's own rays,
/// in contrast, see lights in full: a lobe is either evaluated for lights or traced, not both,
/// unless the host that traces it can weight the two.
///
/// *A minimal sampler*: a one-sided Lambert surface. Indirect light is left to traceForward here.
///
///     class LambertBSDF : public BSDFSampler, public BRDFSampler {
///     public:
///         Color albedo;      // these two are written in getBSDF, at each hit
///         int lightMis = 0;  // = context.renderer->sequenceData.giEngine->usesLightMis(context)
///
///         BRDFSampler* getBRDF(BSDFSide side) override {
///             return side == kFrontSide ? this : nullptr;
///         }
///         Color getDiffuseColor(Color& lightColor) override {
///             const Color reflected = lightColor * albedo;
///             lightColor = Color(0);  // nothing passes on to layers below
///             return reflected;
///         }
///         Color getLightMult(Color& lightColor) override { return getDiffuseColor(lightColor); }
///         Color eval(PelkContext& context, const Vector& direction, Color& lightColor,
///                    Color& origLightColor, float probLight, int flags) override {
///             float cosine = std::max(0.0f, dotDouble(context.normal, direction));
///             if (lightMis) {
///                 const float p = probLight, q = 2.0f * cosine, sum = p * p + q * q;
///                 cosine *= sum != 0.0f ? p * p / sum : 0.0f;
///             }
///             const Color light = lightColor * albedo * cosine;
///             lightColor = origLightColor = Color(0);
///             return flags & kEvalDiffuse ? light : Color(0);
///         }
///     };
///
/// *Failure.* Operations that take a context may throw an ExceptionMsg when memory runs out, as
/// textures and spawned contexts draw on it; the others must not. The caller gives the sampler back
/// all the same (ScopedSampler does). There are no other errors.
///
/// The bodies here are those of a black, opaque surface.
class PELK_API BRDFSampler {
public:
    virtual ~BRDFSampler();

    // What the surface does to light, whatever its direction

    /// Diffuse albedo times light: what the surface diffusely reflects of `lightColor`, which comes
    /// evenly from all sides. `lightColor` is replaced by what goes on to layers below, black for a
    /// surface that uses it up. Asked with white by hosts, to spare indirect rays where the answer
    /// is black, and by traceForward, as the factor of indirect light.
    virtual Color getDiffuseColor(Color& lightColor);
    /// The unit normal about which diffuse light is scattered, which a bump map may have moved; the
    /// context's normal here. The caller makes it the context's normal around eval, and the GI
    /// engine gathers about it.
    virtual Vector getDiffuseNormal(PelkContext& context);
    /// Like getDiffuseColor for all lobes together: what the surface takes out of the light, with
    /// what passes on left in `lightColor`. LayeredBSDF asks it once for each layer, with white, to
    /// weight what the layers below show.
    virtual Color getLightMult(Color& lightColor);

    // Direct light: called by light loops

    /// The light that one sample of a light brings to the viewer: pi * BRDF * cosine *
    /// `lightColor`. The caller sums the answers and divides by the number of samples.
    ///
    /// `direction`: unit, towards the light, in world space. It may point below the surface about
    /// the shading normal; the answer is black then. `lightColor`: the light with shadows,
    /// `origLightColor`: the same without, which mattes compare. Both are overwritten with what
    /// passes on to layers below: black, or what came times the transparency. `probLight`: 2 pi
    /// times the density per solid angle with which the direction was chosen, as the weight of MIS
    /// needs it; kDeltaDensity for a delta light and for one that indirect rays never meet, so that
    /// the heuristic gives such lights a weight of 1. `flags`: kEvalDiffuse, kEvalSpecular.
    ///
    /// May be called twice for one sample with different flags, on fresh copies of the colours.
    virtual Color eval(PelkContext& context, const Vector& direction, Color& lightColor,
                       Color& origLightColor, float probLight, int flags);
    /// Scales what eval has summed in the sampler itself for the current light. Called once after
    /// the light's samples, with 1 / their number. Only samplers that keep sums (mattes) care.
    virtual void multiplyLight(float factor);
    /// The samples of one light are done, and multiplyLight was called: sums of the light can be
    /// added to totals. `light`: the number of the light, from 0. For samplers whose result is not
    /// linear in light, such as the quotient of a matte.
    virtual void lightFinished(int light);
    /// Not 0 if indirect light may come from a cache over the surface; 0 asks for rays at each hit.
    /// For hosts with such a cache; `pelk` has none and doesn't ask.
    virtual int getUseIrradianceMap();

    // Indirect light and own rays: called by traceBSDFForward

    /// Writes the four results: all light but the direct light, which the caller adds, and but the
    /// sampler's own ray, unless the sampler traces it here and offers none in getNewContext.
    /// `doDiffuse` as in traceBSDFForward. The body here: self-illumination, and, unless
    /// `doDiffuse` is kWithoutIndirectDiffuse, irradiance times opacity times getDiffuseColor of
    /// white.
    virtual void traceForward(PelkContext& context, int doDiffuse);
    /// How many rays it takes to sample the sampler's own lobes well: 0 for none and for a mirror,
    /// 1 or more for lobes with a width. For hosts that split paths; tracing here takes the one ray
    /// that getNewContext offers, whatever the answer.
    virtual int getNumSamples(PelkContext& context, int doDiffuse);
    /// Share of what lies behind that shows straight through this side, per channel 0 to 1. On a
    /// shadow ray, known by rayType, the share of light that passes.
    virtual Color getTransparency(PelkContext& context);
    /// Lets the sampler change the colour that a host has found for the hit; unchanged here. Asked
    /// by nobody in this library.
    virtual Color getColor(PelkContext& context, Color color);
    /// The same for the alpha.
    virtual Color getAlpha(PelkContext& context, Color alpha);
    /// A context from newSpawnedContext for the sampler's own ray (mirror, glossy lobe,
    /// refraction), not yet set up; null if it offers none, always so if `doDiffuse` is
    /// kWithoutOwnRays. `sampler` becomes the number that setupContext gets, for samplers with
    /// several lobes; the caller passes 0. The caller releases the context. The weight that was
    /// handed to newSpawnedContext is the tint of the ray and must not be in the answer of
    /// setupContext too.
    virtual PelkContext* getNewContext(PelkContext& context, int& sampler, int doDiffuse);
    /// Samples the lobe: points `newContext`, from getNewContext, along a scattered direction and
    /// sets its rayOrigin, interval and ray differentials. `random`: 0 to 1, the caller's number
    /// for the choice; 0.5 where one ray is traced, so a lobe with a width draws its own. `sample`:
    /// what getNewContext left in `sampler`. Returns BRDF * cosine / density without the tint: what
    /// the ray sees counts by spawnWeight times this. 1 for a mirror. At 0 what the ray sees
    /// doesn't count; it is traced all the same.
    virtual float setupContext(PelkContext& context, PelkContext& newContext, float random,
                               int sample);

    // What a surface is made of: for hosts that sample it piece by piece

    /// The render channels that the sampler's light is to be entered in, as the host declares them;
    /// null here: those of the whole surface.
    virtual RenderChannelsInfo* getRenderChannels();
    /// Number of samplers that this one is made of; 0 for one that isn't made of others.
    virtual int getNumSubBRDFs();
    /// Sampler `index`, from 0 to below that number; null for one that has no BRDF. `weight`, the
    /// caller's throughput, is multiplied by what reaches it through those above. Stays valid as
    /// long as this one.
    virtual BRDFSampler* getSubBRDF(int index, Color& weight);
    /// Light that the surface emits towards the viewer; in the scale of resultColor.
    virtual Color getSelfIllumination(PelkContext& context);
    /// Writes the densities with which the sampler would choose `direction` (`forward`), and the
    /// view direction if light and view changed places (`backward`), in the scale of probLight; 0
    /// here. For bidirectional hosts; `pelk` doesn't ask, and `flags` has no bits yet.
    virtual void evalPdfs(const Vector& direction, float& forward, float& backward, int flags);
    /// Chooses one of the sub-samplers by the number `random`, 0 to 1, for hosts that follow one
    /// lobe of many; `probability` and `weight` take in those of the choice. A sampler that isn't
    /// made of others is the only choice, and a certain one: the body here answers with itself and
    /// changes nothing. `pelk` doesn't ask.
    virtual BRDFSampler* chooseRandomSubBRDF(float& random, float& probability, Color& weight,
                                             int flags);
};

/// The BSDF at one hit: what BSDFInterface::getBSDF hands out. Knows which BRDF each side of the
/// surface has, and traces the whole. A simple sampler derives from this class and from BRDFSampler
/// and answers getBRDF with itself. Ownership, threads and failure are those of BRDFSampler.
///
/// The bodies here suit every sampler whose sides do the work; one that overrides them is made of
/// other samplers, or traces in its own way.
class PELK_API BSDFSampler {
public:
    virtual ~BSDFSampler();

    /// The BRDF of a side, null if that side has none. Light loops ask for the side on which a
    /// light lies, the other bodies here for the viewer's. Asked anew before each use, as a wrapper
    /// is one object for both sides and remembers which of them was asked for last; so it must be
    /// cheap. Doesn't throw.
    virtual BRDFSampler* getBRDF(BSDFSide side);
    /// Writes the four results: all that the surface shows but direct light, which the caller has
    /// or adds. Called once a hit, after the lights, never for shadow rays. Here: traceForward of
    /// the viewer's side, then the one ray of its getNewContext, weighted by spawnWeight times the
    /// answer of setupContext and entered in the channels kAliasReflection or kAliasRefraction.
    /// Fully transparent without a BRDF.
    ///
    /// `doDiffuse`: kWithoutIndirectDiffuse, kAllIndirect or kWithoutOwnRays.
    virtual void traceBSDFForward(PelkContext& context, int doDiffuse);
    /// getTransparency of the viewer's side, white without a BRDF: what a shadow ray asks for, and
    /// all that it does.
    virtual Color getBSDFTransparency(PelkContext& context);
    /// The medium behind the surface, null here: none. Asked before the hit is lit, as refracted
    /// rays enter it then. The volume belongs to a plug-in and is valid as long as the frame.
    virtual PelkVolume* getVolume(PelkContext& context);
};

/// The BRDF of a side, else that of the other side; null if neither has one. The second way is for
/// samplers that were made while the hit was turned over: a one-sided sampler, made for a back that
/// was presented to it as a front, answers for the front only, and is meant all the same. `bsdf` is
/// not null.
PELK_API BRDFSampler* resolveBRDF(BSDFSide side, BSDFSampler* bsdf);
/// The same for the viewer's side, by the context's backSide.
PELK_API BRDFSampler* resolveBRDF(PelkContext& context, BSDFSampler* bsdf);

}  // namespace Tarnkit
