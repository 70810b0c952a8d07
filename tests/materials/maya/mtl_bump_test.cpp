#include <cmath>

#include "fake_host/fake_host.h"

namespace {

/// Vectors in double, for the second way to each result.
struct Exact {
    double x = 0, y = 0, z = 0;

    Exact() = default;
    Exact(double x_, double y_, double z_) : x(x_), y(y_), z(z_) {}
    explicit Exact(Vector v) : x(v.x), y(v.y), z(v.z) {}

    Exact operator+(Exact b) const { return {x + b.x, y + b.y, z + b.z}; }
    Exact operator-(Exact b) const { return {x - b.x, y - b.y, z - b.z}; }
    Exact operator*(double s) const { return {x * s, y * s, z * s}; }
    double operator*(Exact b) const { return x * b.x + y * b.y + z * b.z; }
    Exact unit() const { return *this * (1 / std::sqrt(*this * *this)); }
    Vector rounded() const {
        return {static_cast<float>(x), static_cast<float>(y), static_cast<float>(z)};
    }
};

Exact cross(Exact a, Exact b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

/// The inverse of the matrix with these columns, as a map by its own columns.
Transform inverseOf(Exact a, Exact b, Exact c) {
    const double d = cross(a, b) * c;
    const Exact x = cross(b, c) * (1 / d), y = cross(c, a) * (1 / d), z = cross(a, b) * (1 / d);
    return {Exact(x.x, y.x, z.x).rounded(),
            Exact(x.y, y.y, z.y).rounded(),
            Exact(x.z, y.z, z.z).rounded(),
            {}};
}

/// The object hit and a generator of texture coordinates: a space of its own, and a tangent frame.
class FakeSurface : public Plugin,
                    public SurfaceFrameInterface,
                    public UVWGenInterface,
                    public ObjectMappingInterface {
public:
    Transform frame;
    int isValid = 1;
    u32 seenRayType = 0;
    Exact axes[3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};  ///< of the object's space, in the world

    enum Offer { kFrame = 1, kGenerator = 2, kMapping = 4 };
    explicit FakeSurface(int offers) {
        if (offers & kFrame)
            addInterface(static_cast<SurfaceFrameInterface*>(this), 0);
        if (offers & kGenerator)
            addInterface(static_cast<UVWGenInterface*>(this), 0);
        if (offers & kMapping)
            addInterface(static_cast<ObjectMappingInterface*>(this), 0);
    }

    PluginBase* getPlugin() override { return this; }
    Transform getSurfaceFrame(PelkContext& context, int channel) override {
        EXPECT_EQ(channel, -1);
        seenRayType = context.rayType;
        return frame;
    }
    Vector getUVW(PelkContext&) override { return {}; }
    Transform getTangentFrame(PelkContext& context, int& valid) override {
        seenRayType = context.rayType;
        valid = isValid;
        return frame;
    }
    Vector objectToWorld(PelkContext&, Vector v) override {
        return (axes[0] * v.x + axes[1] * v.y + axes[2] * v.z).rounded();
    }
};

/// A slope in space: it rises along `gradient` from 1 at the origin.
class SlopeTexture : public FakeTexture {
public:
    Exact gradient{0.5, -0.25, 0.125};

    AColor getTexColor(PelkContext& context) override {
        note("getTexColor");
        const Point p = context.hitPoint;
        return {Color(static_cast<float>(1 + gradient * Exact(p.x, p.y, p.z))), 1.0f};
    }
};

class MtlBumpTest : public FakeHost {
protected:
    MtlBumpTest() {
        context.rayOrigin = {1, 2, 5};
        context.rayDerivX = {0.01f, 0, 0};
        context.rayDerivY = {0, 0.01f, 0};
        context.normal = kNormal.rounded();
        context.hitObject = &surface;
        context.hitMapping = &surface;
        surface.frame = inverseOf(kTangent, kBitangent, kNormal);
        surface.axes[0] = {0, 2, 0};
        surface.axes[1] = {-3, 0, 0};
        surface.axes[2] = {0, 0, 1};
        renderer.frameData.cameraMatrix[0] = {0.8f, 0, 0.6f};
        renderer.frameData.cameraMatrix[2] = {-0.6f, 0, 0.8f};
        texture.bump = {0.25f, -0.5f, 0.125f};
        setParams(mtl, {{"base_mtl", &base}, {"bump_tex_color", &texture}});
    }

    void start(int form, float mult = 1.0f, std::initializer_list<Param> more = {}) {
        startFrame(mtl, {{"map_type", form}, {"bump_tex_mult", mult}});
        setParams(mtl, more);
        startFrame(mtl);
    }

    /// The normal with which the base makes its sampler.
    Vector bumpedNormal() {
        mtl.releaseBSDF(context, mtl.getBSDF(context, 0));
        return base.seen.normal;
    }

    const Exact kNormal = Exact(0.2, -0.3, 0.9).unit();
    const Exact kTangent{2, 0.5, 0}, kBitangent{-0.25, 0.75, 0.5};
    /// What the texture's colour decodes to.
    const Exact kMap{0.5, -0.25, 0.75};

    RecordingMaterial base;
    FakeSurface surface{FakeSurface::kFrame | FakeSurface::kMapping};
    FakeTexture texture{AColor{Color(0.75f, 0.375f, 0.875f), 1.0f}};
    PelkMaterial& mtl = make("MtlBump");
    FakeContext context = hit();
};

// Each form by its formula in double: what the map says in the world, and half the way to it.
TEST_F(MtlBumpTest, EachFormMovesTheNormalAsItsMapSays) {
    const auto towards = [&](Exact map) { return (kNormal + (map.unit() - kNormal) * 0.5).unit(); };
    const Exact map = kMap.unit();
    const Exact inTangentSpace = kTangent.unit() * map.x + kBitangent.unit() * map.y;
    const Exact camera =
        Exact(0.8, 0, 0.6) * kMap.x + Exact(0, 1, 0) * kMap.y + Exact(-0.6, 0, 0.8) * kMap.z;
    const struct {
        const char* what;
        int form;
        Exact expected;
    } cases[] = {
        {"tangent space", 1, (kNormal + (inTangentSpace + kNormal * (map.z - 1)) * 0.5).unit()},
        {"object space", 2, towards({-3 * kMap.y, 2 * kMap.x, kMap.z})},
        {"camera space", 3, towards(camera)},
        {"world space", 4, towards(kMap)},
        {"the texture's own", 5, (kNormal + Exact(0.25, -0.5, 0.125) * 0.5).unit()},
        {"explicit", 6, {0.75, 0.375, 0.875}},
        {"none", 7, kNormal},
        {"unknown is world space", 8, towards(kMap)},
        {"negative is world space", -1, towards(kMap)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        start(c.form, 0.5f);
        const PelkContext before = context;
        const Vector bumped = bumpedNormal();
        EXPECT_THAT(bumped, VectorNear(c.expected.rounded(), 1e-6f));
        if (c.form != 6) {
            EXPECT_NEAR(length(bumped), 1.0f, 1e-6f);
        }
        // The bump is the surface's: seen turned over, the normal is that of the same bump.
        context.flipSide();
        EXPECT_THAT(bumpedNormal(), VectorNear(-bumped, 1e-6f));
        context.flipSide();
        expectRayAndHitAsBefore(before, context);
    }
    start(2, 0.5f);
    context.hitMapping = nullptr;
    EXPECT_THAT(bumpedNormal(), VectorNear(towards(kMap).rounded(), 1e-6f)) << "no object space";
}

TEST_F(MtlBumpTest, HeightsLeanTheNormalDownhillAndKeepItsLength) {
    SlopeTexture slope;
    setParams(mtl, {{"bump_tex_color", &slope}});
    FakeTexture half;
    half.number = 0.5f;
    for (const float size : {1.0f, 0.5f}) {
        // By the height field as geometry: its normal is n minus the gradient along the surface.
        const Exact along = slope.gradient - kNormal * (slope.gradient * kNormal);
        const Exact expected = (kNormal - along * (4 * 0.5)).unit() * size;
        context.normal = (kNormal * size).rounded();
        if (size != 1.0f)
            context.normal = kNormal.rounded() * size;
        start(0, size == 1.0f ? 4.0f : 4.0f / size, {{"bump_tex_mult_tex", &half}});
        if (size == 1.0f) {
            EXPECT_THAT(bumpedNormal(), VectorNear(expected.rounded(), 1e-3f));
            const Vector bumped = base.seen.normal;
            context.flipSide();
            EXPECT_THAT(bumpedNormal(), VectorNear(-bumped, 1e-5f));
            context.flipSide();
        }
        EXPECT_NEAR(length(bumpedNormal()), size, 1e-5f);
    }
}

// With the axes of the world as frame the formula can be read off: x and y turn over on a back,
// z stays; a frame whose third axis looks against the normal turns all over first.
TEST_F(MtlBumpTest, MayaCompatibleMapsKeepToTheViewersSide) {
    const Exact map = kMap.unit();
    const Vector bump = Exact(map.x, map.y, map.z - 1).rounded();
    const struct {
        const char* what;
        bool compatible;
        int backSide;
        float third;  ///< z of the frame's third axis; the normal is (0, 0, 1)
        Vector bump;
    } cases[] = {
        {"front", true, 0, 1, bump},
        {"back", true, 1, 1, {-bump.x, -bump.y, bump.z}},
        {"front, frame inside out", true, 0, -1, {-bump.x, -bump.y, bump.z}},
        {"back, frame inside out", true, 1, -1, bump},
        {"back, but not compatible", false, 1, 1, bump},
        {"frame inside out, but not compatible", false, 0, -1, {bump.x, bump.y, -bump.z}},
    };
    const Vector normal = context.normal = {0, 0, 1};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        start(1, 1.0f, {{"maya_compatible", c.compatible}});
        surface.frame = {{1, 0, 0}, {0, 1, 0}, {0, 0, c.third}, {}};
        context.backSide = c.backSide;
        EXPECT_THAT(bumpedNormal(), VectorNear(normalizeGuarded(normal + c.bump), 1e-6f));
    }
}

TEST_F(MtlBumpTest, TangentFrameComesFromTheGeneratorElseFromTheSurface) {
    FakeSurface generator{FakeSurface::kGenerator}, other{0};
    generator.frame = inverseOf(kBitangent, kTangent, kNormal);
    start(1);
    const Vector bySurface = bumpedNormal();
    EXPECT_EQ(surface.seenRayType, kRayCamera | kRayTangentFrame);
    start(1, 1.0f, {{"normal_uvwgen", &generator}});
    context.rayType |= kRayTangentFrame;
    const Vector byGenerator = bumpedNormal();
    EXPECT_EQ(context.rayType, kRayCamera | kRayTangentFrame) << "a bit of the caller is lost";
    context.rayType = kRayCamera;
    EXPECT_EQ(generator.seenRayType, kRayCamera | kRayTangentFrame);
    EXPECT_GT(length(byGenerator - bySurface), 0.1f);
    // Without a valid frame the map is added to the normal as it is.
    const Vector added = normalizeGuarded(context.normal + kMap.rounded());
    generator.isValid = 0;
    EXPECT_THAT(bumpedNormal(), VectorNear(added, 1e-6f));
    start(1, 1.0f, {{"normal_uvwgen", &other}});
    EXPECT_THAT(bumpedNormal(), VectorNear(bySurface, 1e-6f)) << "no generator";
    context.hitObject = nullptr;
    EXPECT_THAT(bumpedNormal(), VectorNear(added, 1e-6f));
    // A frame without volume leaves the normal.
    context.hitObject = &surface;
    surface.frame.axisZ = {};
    EXPECT_THAT(bumpedNormal(), VectorNear(context.normal, 1e-6f));
}

TEST_F(MtlBumpTest, BaseIsSetUpAndTracedAtTheBumpedHit) {
    SlopeTexture slope;
    setParams(mtl, {{"bump_tex_color", &slope}});
    const auto raised = [&](float by) { return context.hitPoint + -context.rayDir * by; };
    const float height = slope.getTexColor(context).color.r;
    const struct {
        const char* what;
        int form;
        bool shadows;
        float mult, height;
    } cases[] = {
        {"raised", 0, true, 0.5f, 0.5f * height},
        {"dents don't sink", 0, true, -0.5f, 0},
        {"normal alone", 0, false, 0.5f, 0},
        {"no height in a normal map", 4, true, 0.5f, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        start(c.form, c.mult, {{"bump_shadows", c.shadows}});
        const PelkContext before = context;
        BSDFSampler* const sampler = mtl.getBSDF(context, 0x11);
        EXPECT_EQ(base.seenFlags, 0x11);
        EXPECT_EQ(base.seen.hitPoint, raised(c.height));
        const Vector bumped = base.seen.normal;
        PelkContext traced;
        base.sampler.onTrace = [&](PelkContext& seen) {
            traced = seen;
            seen.normal = {1, 0, 0};
            seen.hitPoint = {};
        };
        BRDFSampler* const brdf = sampler->getBRDF(kFrontSide);
        brdf->traceForward(context, 1);
        EXPECT_EQ(traced.normal, bumped);
        EXPECT_EQ(traced.hitPoint, raised(c.height));
        expectRayAndHitAsBefore(before, context);
        // Turned over since, the viewer's side of the bump lies the other way.
        context.flipSide();
        brdf->traceForward(context, 1);
        EXPECT_EQ(traced.hitPoint, raised(-c.height));
        if (c.form != 0) {
            EXPECT_EQ(traced.normal, -bumped);
        }
        context.flipSide();
        base.sampler.diffuseNormal = context.normal;
        EXPECT_EQ(brdf->getDiffuseNormal(context), bumped);
        mtl.releaseBSDF(context, sampler);
    }
}

TEST_F(MtlBumpTest, ReadsTheMapOnceAHitHoweverManyLights) {
    start(4);
    context.onLight = [&](BSDFSampler* sampler) {
        for (int light = 0; light < 8; ++light) {
            Color color(1), unshadowed(1);
            BRDFSampler* const brdf = sampler->getBRDF(kFrontSide);
            brdf->getDiffuseNormal(context);
            brdf->eval(context, {0, 0, 1}, color, unshadowed, 1, kEvalDiffuse);
        }
    };
    mtl.shade(context);
    EXPECT_EQ(log.count("getTexColor"), 1);
    EXPECT_EQ(log.count("eval"), 8);
    EXPECT_EQ(log.calls, (std::vector<std::string>{"getTexColor", "getBSDF", "shadeWithBSDF",
                                                   "computeDirectLighting", "eval", "eval", "eval",
                                                   "eval", "eval", "eval", "eval", "eval",
                                                   "traceForward", "releaseBSDF"}));
}

TEST_F(MtlBumpTest, RaysThatWantNoBumpReadNothing) {
    const struct {
        const char* what;
        bool forShadows;
        u32 rayType;
        int giDepth;
        bool isBumped;
    } cases[] = {
        {"shadow", true, kRayShadow, 0, true},
        {"shadow, switched off", false, kRayShadow, 0, false},
        {"camera, shadows switched off", false, kRayCamera, 0, true},
        {"behind a diffuse bounce", true, kRayCamera | kRayGi, 1, false},
        {"the same with the host's leave", true, kRayCamera | kRayGi | kRayGiBump, 1, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        start(6, 1.0f,
              {{"compute_bump_for_shadows", c.forShadows}, {"bump_tex_mult_tex", &texture}});
        texture.number = 1.0f;
        context.rayType = c.rayType;
        context.giDepth = c.giDepth;
        BSDFSampler* const sampler = mtl.getBSDF(context, 0);
        EXPECT_NE(sampler, &base.sampler);
        EXPECT_EQ(base.seen.normal != context.normal, c.isBumped);
        EXPECT_EQ(log.has("getTexFloat"), c.isBumped);
        EXPECT_EQ(log.has("getTexColor"), c.isBumped);
        mtl.releaseBSDF(context, sampler);
    }
}

/// A plug-in with the one interface of a texture that it is made for, or with none.
struct PartTexture : Plugin {
    PartTexture() = default;
    explicit PartTexture(PluginInterface* part) { addInterface(part, 0); }
};

TEST_F(MtlBumpTest, WithoutMapOrHeightTheBaseIsAskedItself) {
    PartTexture noTexture, number(static_cast<TextureFloatInterface*>(&texture));
    PluginBase* const none = nullptr;
    const struct {
        const char* what;
        PluginBase *color, *number, *either;
        int form;
        float mult;
        bool isBasesSampler, shadesBySampler;
    } cases[] = {
        {"no map", none, none, none, 4, 1, true, false},
        {"no height", &texture, none, none, 0, 0, true, false},
        {"no height of the texture's own", none, &texture, none, 5, 1e-13f, true, false},
        {"the least height", &texture, none, none, 0, -1e-12f, false, true},
        {"a normal map of no strength", &texture, none, none, 1, 0, false, false},
        {"a number for a normal map", none, &texture, none, 4, 1, false, true},
        {"the older way wins", &texture, &texture, &noTexture, 4, 1, true, false},
        {"the older way has no colour", &texture, none, &number, 4, 1, false, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        start(c.form, c.mult,
              {{"bump_tex_color", c.color}, {"bump_tex_float", c.number}, {"bump_tex", c.either}});
        BSDFSampler* const sampler = mtl.getBSDF(context, 0);
        EXPECT_EQ(sampler == &base.sampler, c.isBasesSampler);
        EXPECT_THAT(base.seen.normal, VectorNear(context.normal, 1e-6f));
        mtl.releaseBSDF(context, sampler);
        log.clear();
        mtl.shade(context);
        EXPECT_EQ(log.has("shade"), !c.shadesBySampler);
        EXPECT_EQ(log.has("releaseBSDF"), c.shadesBySampler);
    }
    base.givesSampler = false;
    mtl.shade(context);
    EXPECT_EQ(resultsOf(context), kFullyTransparent);
}

TEST_F(MtlBumpTest, MapsWithoutADirectionMakeNoNaN) {
    for (const int form : {1, 2, 3, 4}) {
        SCOPED_TRACE(form);
        start(form);
        texture.color.color = Color(0.5f);  // decodes to zero
        const Vector bumped = bumpedNormal();
        if (form != 1) {
            EXPECT_THAT(bumped, VectorNear(context.normal, 1e-6f));
        }
        EXPECT_TRUE(std::isfinite(length(bumped)));
        FakeContext noNormal = hit();
        noNormal.normal = {};
        mtl.releaseBSDF(noNormal, mtl.getBSDF(noNormal, 0));
        EXPECT_TRUE(std::isfinite(length(base.seen.normal)));
    }
    for (const float number : {NAN, INFINITY, -INFINITY}) {
        texture.color.color = Color(number);
        start(0, 1.0f, {{"bump_shadows", false}});
        EXPECT_EQ(bumpedNormal(), context.normal);
    }
}

TEST_F(MtlBumpTest, ChannelsShowTheNormalAsTheBaseLeftIt) {
    RecordingFragment fragment;
    context.resultFragment = &fragment;
    context.originDerivX = {0.02f, 0.01f, 0};
    const Exact left = Exact(-0.3, 0.2, 0.8);
    base.sampler.onTrace = [&](PelkContext& seen) { seen.normal = left.rounded(); };
    const auto trace = [&] {
        BSDFSampler* const sampler = mtl.getBSDF(context, 0);
        sampler->getBRDF(kFrontSide)->traceForward(context, 1);
        mtl.releaseBSDF(context, sampler);
    };
    start(4);
    trace();
    EXPECT_TRUE(fragment.aliases.empty()) << "nobody has these channels";

    // Coordinates of -normal along the pixel's x, its y and the ray, by solving for them.
    fragment.hasAliases = true;
    const Exact x = Exact(context.rayDerivX + context.originDerivX).unit(),
                y = Exact(context.rayDerivY).unit(), z(context.rayDir);
    const Transform solve = inverseOf(x, y, z);
    const Exact n = left * -1.0;
    const Exact onScreen =
        (Exact(solve.axisX) * n.x + Exact(solve.axisY) * n.y + Exact(solve.axisZ) * n.z).unit();
    const double sign = cross(x, y) * z < 0 ? -1 : 1;
    for (const bool flipped : {false, true}) {
        if (flipped)
            context.flipSide();
        fragment.aliases.clear();
        trace();
        ASSERT_EQ(fragment.aliases.size(), 2u);
        const auto [screenAlias, screen] = fragment.aliases[0];
        const auto [offsetAlias, offset] = fragment.aliases[1];
        EXPECT_EQ(screenAlias, 131);
        EXPECT_THAT(Vector(screen.r, screen.g, screen.b),
                    VectorNear((onScreen * sign).rounded(), 1e-5f));
        EXPECT_EQ(offsetAlias, 145);
        const Vector moved = left.rounded() - context.normal;
        EXPECT_THAT(Vector(offset.r, offset.g, offset.b),
                    VectorNear(flipped ? -moved : moved, 1e-6f));
    }
    base.sampler.onTrace = nullptr;
    start(7);
    fragment.aliases.clear();
    trace();
    EXPECT_EQ(fragment.aliases[1].second, Color(0)) << "no bump, no offset";
}

TEST_F(MtlBumpTest, SamplerAnswersBeforeASideIsChosen) {
    start(6);
    BSDFSampler* const sampler = mtl.getBSDF(context, 0);
    BRDFSampler* const brdf = dynamic_cast<BRDFSampler*>(sampler);
    Color weight(1);
    EXPECT_EQ(brdf->getNumSubBRDFs(), 0);
    EXPECT_EQ(brdf->getSubBRDF(0, weight), nullptr);
    EXPECT_EQ(brdf->getSelfIllumination(context), Color(0));
    // An explicit normal needs nothing of the base.
    EXPECT_EQ(brdf->getDiffuseNormal(context), Vector(0.75f, 0.375f, 0.875f));
    base.sampler.hasFace[kBackSide] = false;
    EXPECT_EQ(sampler->getBRDF(kBackSide), nullptr);
    EXPECT_EQ(sampler->getBRDF(kFrontSide), brdf);
    mtl.releaseBSDF(context, sampler);
}

/// A texture that doesn't describe itself.
class WordlessTexture : public FakeTexture {
    PluginInterface* getInterface(u64 id) override {
        return id == RTTexInterface::kInterfaceID ? nullptr : FakeTexture::getInterface(id);
    }
};

TEST_F(MtlBumpTest, DescribesItsMapAroundTheBase) {
    FakeTexture amount;
    RecordingMaterial mute;
    mute.hiddenFaces = {RTMtlInterface::kInterfaceID};
    base.text = "base\n";
    PelkMaterial& leaf = make("MtlBump", "leaf");
    const auto text = [&](std::initializer_list<Param> params, const char* section) {
        startFrame(leaf, params);
        return describe(leaf, section);
    };
    const char *const material = "MaterialDescriptor", *const hierarchy = "HierarchyDescriptor";
    PluginBase* const none = nullptr;
    const std::string frame = "<coatlayer_begin>\nbase\n<coatlayer_end>\n";
    EXPECT_EQ(text({}, material), "0 ") << "no base";
    EXPECT_EQ(text({{"base_mtl", &base}}, "x"), "1 base\n") << "no map: passed through";
    EXPECT_EQ(
        text({{"bump_tex_color", &texture}, {"bump_tex_mult", 0.5f}}, material),
        "1 dbgmtlname \"leaf\"\nbump\nbitmap_mult 0.500000\ntexture color name\nbump\n" + frame)
        << "nobody has set map_type";
    EXPECT_EQ(text({{"bump_tex_float", &texture}, {"map_type", 0}, {"bump_tex_mult_tex", &amount}},
                   material),
              "1 dbgmtlname \"leaf\"\nbump\nbitmap_mult 0.500000\ntexture color name\n"
              "texture float name\nbumpMaya\nbump\nbump_amount\ntexture float name\n" +
                  frame);
    EXPECT_EQ(
        text({{"bump_tex_color", none}, {"map_type", 1}, {"bump_tex_mult_tex", none}}, material),
        "1 dbgmtlname \"leaf\"\nbump\nbitmap_mult 0.500000\ntexture float name\n"
        "bumpIsNormalMap\nbump\n" +
            frame);
    EXPECT_TRUE(renderer.log.texts.empty());
    EXPECT_EQ(text({}, hierarchy), "1 Num_children: 1\nbase\n");
    base.textSection = material;
    EXPECT_EQ(text({}, hierarchy), "1 Num_children: 1\nNum_children: 0\n");
    EXPECT_EQ(text({}, "x"), "0 ");
    WordlessTexture wordless;
    text({{"bump_tex_color", &wordless}, {"bump_tex_float", none}}, material);
    EXPECT_EQ(renderer.log.texts.size(), 1u) << "the user doesn't learn that the bump is lost";
    EXPECT_EQ(text({{"base_mtl", &mute}}, material), "0 ");
}

}  // namespace
