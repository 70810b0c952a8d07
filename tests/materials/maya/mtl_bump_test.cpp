#include <cmath>

#include "fake_host/dice.h"
#include "fake_host/fake_host.h"
#include "slow_vector.h"

namespace {

Vector vectorOf(Color c) {
    return {c.r, c.g, c.b};
}

/// A map that has its colour at one place and grows lighter along `slope`.
struct SlopeTexture : FakeTexture {
    Slow slope = {0.5, -0.25, 0.125};
    Point place;

    AColor getTexColor(PelkContext& context) override {
        const Color here = FakeTexture::getTexColor(context).color;
        return {here + Color(static_cast<float>(dot(slope, slow(context.hitPoint - place)))), 1};
    }
};

class MtlBumpTest : public OneHit, protected Dice {
protected:
    MtlBumpTest() {
        map.place = context.hitPoint;
        map.number = 1;
        context.rayOrigin = {1, 2, 5};
        context.originDerivX = {0.02f, 0.01f, 0};
        context.rayDerivX = {0.01f, 0, 0};
        context.rayDerivY = {0, 0.01f, 0};
        context.hitObject = &surface;
        renderer.frameData.cameraMatrix[0] = {0.8f, 0, 0.6f};
        renderer.frameData.cameraMatrix[2] = {-0.6f, 0, 0.8f};
        setParams(mtl,
                  {{"base_mtl", &base}, {"bump_tex_color", &map}, {"bump_tex_mult_tex", &map}});
    }

    void drawHit() {
        map.color.color = color(2) - Color(0.5f);
        map.slope = slow(vector());
        map.number = between(-1, 1);
        map.bump = vector();
        generator.u = Vector(1, 0, 0) + vector() * 0.5f;
        generator.w = Vector(0, 0, coin() ? 1 : -1) + vector() * 0.5f;
        generator.isValid = coin();
        context.normal = direction();
        context.rayDir = direction();
        context.flippedSide = coin();
        context.backSide = coin();
        context.hitObject = coin() ? &surface : nullptr;
        context.hitMapping = coin() ? &surface : nullptr;
        context.rayType = static_cast<u32>(engine()) & (kRayShadow | kRayGiBump | kRayTangentFrame);
        context.giDepth = coin();
        // Seldom no map, a number for one, or one by the older way, which wins if it is none too.
        PluginBase *const maps[] = {nullptr, &map, &base}, *colors = maps[below(8) > 0],
                          *number = maps[coin()], *either = maps[below(8) ? 0 : 1 + coin()];
        setParams(mtl, {{"bump_tex_color", colors}, {"bump_tex_float", number}});
        setParams(mtl, {{"bump_tex", either}});
        hasColor = either ? either == &map : colors != nullptr;
        hasNumber = either ? either == &map : number != nullptr;
    }

    /// What the surface's own normal becomes by the formulas, before it is made unit.
    Slow moved(int form, double strength, bool isMaya, const PluginBase* uvwgen) const {
        const Slow n = slow(context.normal) * (context.flippedSide ? -1.0 : 1.0);
        const Slow color = slow(vectorOf(map.color.color)), m = color * 2.0 - 1.0;
        const auto towards = [&](const Slow& v) -> Slow {
            return n + (normalize(v) - n) * strength;
        };
        const Slow byForm[] = {
            // The height field as geometry: less the gradient along the surface.
            n - (map.slope - n * dot(map.slope, n)) * strength,
            movedInFrame(n, m, strength, isMaya, uvwgen == &generator),
            towards(context.hitMapping ? Slow{-3 * m[1], 2 * m[0], m[2]} : m),
            towards({0.8 * m[0] - 0.6 * m[2], m[1], 0.6 * m[0] + 0.8 * m[2]}),
            towards(m),
            n + slow(map.bump) * strength,
            color,
            n,
        };
        // A number is the same all over, and no normal.
        if (!hasColor && form != 5)
            return form == 6 ? Slow(0.0, 3) : n;
        if (strength == 0 && form > 0)
            return form == 6 ? Slow(0.0, 3) : n;
        return form < 0 || form > 7 ? towards(m) : byForm[form];
    }

    Slow movedInFrame(const Slow& n, const Slow& m, double strength, bool isMaya,
                      bool isGenerated) const {
        if (isGenerated ? !generator.isValid : !context.hitObject)
            return n + m;
        // Along an axis the two other coordinates stay. On a back a compatible map turns x and y
        // over and keeps z; in a frame that looks against the normal it turns all over.
        const FakeSurface& f = isGenerated ? generator : surface;
        const Slow u = slow(f.u), v = slow(f.v), w = slow(f.w);
        const double hand = dot(cross(u, v), w) < 0 ? -1 : 1;
        const double turn = isMaya && dot(w, slow(context.normal)) < 0 ? -hand : hand;
        const double side = isMaya && context.backSide ? -turn : turn;
        const Slow x = normalize(cross(v, w)), y = normalize(cross(w, u)),
                   z = normalize(cross(u, v));
        const Slow up = normalize(m);
        return n + strength * (side * (x * up[0] + y * up[1]) + turn * z * (up[2] - 1));
    }

    /// The normal with which the base makes its sampler.
    Vector bumpedNormal(int form) {
        startFrame(mtl, {{"map_type", form}});
        mtl.releaseBSDF(context, mtl.getBSDF(context, 0));
        return base.seen.normal;
    }

    FakeSurface surface, generator;
    SlopeTexture map;
    bool hasColor = true, hasNumber = false;
    PelkMaterial& mtl = make("MtlBump");
};

TEST_F(MtlBumpTest, EachFormBumpsAsItsFormulaInDouble) {
    context.resultFragment = &fragment;
    Vector left;
    PelkContext traced;
    base.sampler.onTrace = [&](PelkContext& seen) {
        traced = seen;
        seen.normal = left;
        seen.hitPoint = {};
    };
    for (int i = 0; i < 4000; ++i) {
        SCOPED_TRACE(i);
        drawHit();
        const int form = i % 10 - 1;
        const float mults[] = {0, 1e-13f, -1e-12f, 1};
        const float mult = below(8) ? between(-1, 1) : mults[below(4)];
        const bool isMaya = coin(), raises = coin(), forShadows = coin();
        PluginBase* const uvwgens[] = {nullptr, &base, &generator};  // the second has no frame
        PluginBase* const uvwgen = uvwgens[below(3)];
        setParams(mtl, {{"map_type", form}, {"bump_tex_mult", mult}, {"bump_shadows", raises}});
        setParams(mtl, {{"maya_compatible", isMaya}, {"compute_bump_for_shadows", forShadows}});
        startFrame(mtl, {{"normal_uvwgen", uvwgen}});
        const bool isBumped = (forShadows || !(context.rayType & kRayShadow)) &&
                              (context.giDepth == 0 || context.rayType & kRayGiBump);
        const double strength = static_cast<double>(mult) * map.number;
        const bool isRaised = isBumped && raises && form == 0;
        const double height =
            isRaised ? strength * (hasColor ? mean(map.color.color) : map.number) : 0;
        const Vector offset = rounded(slow(context.rayDir) * -std::fmax(0, height));
        const Slow sum = moved(isBumped ? form : 7, strength, isMaya, uvwgen);
        const Vector expected = rounded(isBumped && form == 6 ? sum : normalize(sum));

        const PelkContext before = context;
        BSDFSampler* const sampler = mtl.getBSDF(context, 0x11);
        EXPECT_EQ(base.seenFlags, 0x11);
        const bool hasMap = hasColor || hasNumber, hasHeight = std::fabs(mult) >= 1e-12f;
        const bool isBases = !hasMap || (!hasHeight && (form == 0 || form == 5));
        ASSERT_EQ(sampler == &base.sampler, isBases);
        if (isBases) {
            EXPECT_EQ(base.seen.normal, before.normal);
            mtl.releaseBSDF(context, sampler);
            continue;
        }
        const Vector bumped = base.seen.normal;
        // Making a short sum unit enlarges what rounding has done to it.
        const double tolerance =
            (form == 0 ? 1e-4 : 1e-6) / (form == 6 ? 1 : std::fmin(1, length(sum)));
        EXPECT_THAT(bumped, VectorNear(context.flippedSide ? -expected : expected, tolerance));
        EXPECT_THAT(base.seen.hitPoint - before.hitPoint, VectorNear(offset, 1e-6f));

        auto* const brdf = dynamic_cast<BRDFSampler*>(sampler);
        EXPECT_EQ(brdf->getNumSubBRDFs(), 0) << "before a side is chosen";
        EXPECT_EQ(sampler->getBRDF(kFrontSide), brdf);
        base.sampler.diffuseNormal = context.normal;
        // As a light loop asks it, for one light after the other.
        for (int light = i % 5; light >= 0; --light) {
            EXPECT_EQ(brdf->getDiffuseNormal(context), bumped);
            Color shadowed(1), unshadowed(1);
            brdf->eval(context, {0, 0, 1}, shadowed, unshadowed, 2, kEvalDiffuse);
        }
        left = vector();
        fragment.aliases.clear();
        fragment.hasAliases = coin();
        brdf->traceForward(context, 1);
        EXPECT_EQ(traced.normal, bumped);
        EXPECT_EQ(traced.hitPoint, base.seen.hitPoint);
        expectRayAndHitAsBefore(before, context);
        // The bump is computed once a hit: with one read of its strength.
        const int ofHeight = isBumped && form == 0 ? 4 + isRaised : 0;
        const bool readsNormal = isBumped && hasColor && form && form != 5 && strength != 0;
        EXPECT_EQ(log.count("getTexColor"), hasColor ? readsNormal + ofHeight : 0);
        EXPECT_EQ(log.count("getTexFloat"), isBumped + (hasColor ? 0 : ofHeight));

        ASSERT_EQ(fragment.aliases.size(), fragment.hasAliases ? 2u : 0u);
        if (fragment.hasAliases) {
            const auto [screenAlias, screen] = fragment.aliases[0];
            const auto [offsetAlias, turned] = fragment.aliases[1];
            // Coordinates on the picture: the axes of the pixel, so weighted, sum to -normal.
            const Slow right = normalize(slow(context.rayDerivX + context.originDerivX)),
                       down = normalize(slow(context.rayDerivY)), ray = slow(context.rayDir);
            const Slow n = right * screen.r + down * screen.g + ray * screen.b;
            const double hand = dot(cross(right, down), ray) < 0 ? -1 : 1;
            EXPECT_EQ(screenAlias, 131);
            EXPECT_NEAR(length(slow(vectorOf(screen))), 1, 1e-5);
            EXPECT_THAT(rounded(normalize(slow(left)) * -hand * length(n)),
                        VectorNear(rounded(n), 1e-5f));
            EXPECT_EQ(offsetAlias, 145);
            EXPECT_EQ(vectorOf(turned),
                      context.flippedSide ? context.normal - left : left - context.normal);
        }
        // Turned over since, the viewer's side of the bump lies the other way.
        const ScopedFlip flip(context);
        brdf->traceForward(context, 1);
        EXPECT_THAT(traced.hitPoint - before.hitPoint, VectorNear(-offset, 1e-6f));
        EXPECT_TRUE(traced.normal == -bumped || form == 0);
        mtl.releaseBSDF(context, sampler);
        EXPECT_EQ(mtl.getBSDF(context, 0), sampler) << "lost to its pool";
        mtl.releaseBSDF(context, sampler);
        log.clear();
        mtl.shade(context);
        EXPECT_NE(resultsOf(context), kFullyTransparent);
        EXPECT_EQ(log.has("shade"), !hasHeight) << "whatever the form";
    }
}

TEST_F(MtlBumpTest, BadMapsAndNormalsMakeNoNaN) {
    base.givesSampler = false;
    startFrame(mtl);
    mtl.shade(context);
    EXPECT_EQ(resultsOf(context), kFullyTransparent);
    base.givesSampler = true;
    map.color.color = Color(0.5f);  // decodes to zero
    for (const int form : {1, 2, 3, 4}) {
        SCOPED_TRACE(form);
        const Vector bumped = bumpedNormal(form);
        EXPECT_TRUE(form == 1 ? std::isfinite(length(bumped)) : bumped == context.normal);
        const ScopedValue noNormal(context.normal, Vector());
        EXPECT_TRUE(std::isfinite(length(bumpedNormal(form))));
    }
    surface.w = {0, 0, 0};
    EXPECT_EQ(bumpedNormal(1), context.normal) << "a frame without volume";
    context.normal = {0, 0, 0.5f};
    EXPECT_NEAR(length(bumpedNormal(0)), 0.5f, 1e-5f);
    for (const float number : {NAN, INFINITY, -INFINITY}) {
        map.color.color = Color(number);
        EXPECT_EQ(bumpedNormal(0), context.normal);
    }
}

}  // namespace
