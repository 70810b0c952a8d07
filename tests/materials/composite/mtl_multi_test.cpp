#include <cmath>

#include "fake_host/fake_host.h"

namespace {

/// A primitive whose face that was hit has an id and a shader set.
class FakeFace : public Plugin, public SurfaceMtlIDInterface, public ShaderSetInterface {
public:
    int id = 0;
    StringHandle shaderSet;

    FakeFace() {
        addInterface(static_cast<SurfaceMtlIDInterface*>(this), 0);
        addInterface(static_cast<ShaderSetInterface*>(this), 0);
    }
    PluginBase* getPlugin() override { return this; }
    int getSurfaceMtlID(PelkContext&) override { return id; }
    void getShaderSetName(StringHandle& out, PelkContext&, int) override { out = shaderSet; }
};

class MtlMultiTest : public FakeHost {
protected:
    using Plugins = std::vector<PluginBase*>;

    MtlMultiTest() {
        for (int i = 0; i < 3; ++i)
            subs[i].results.color = Color(static_cast<float>(i));
        setParams(mtl, {{"mtls_list", Plugins{&subs[0], &subs[1], &subs[2]}}});
    }

    /// The position of the sub-material that shades a hit; -1 for opaque black.
    int shaded() {
        FakeContext context = hit();
        context.hitObject = &face;
        mtl.shade(context);
        return resultsOf(context) == kOpaqueBlack ? -1 : static_cast<int>(context.resultColor.r);
    }

    RecordingMaterial subs[3];
    FakeFace face;
    FakeTexture texture;
    PelkMaterial& mtl = make("MtlMulti", "mix");
};

TEST_F(MtlMultiTest, TheFirstEntryWithTheIdShades) {
    const struct {
        const char* what;
        std::vector<int> ids;
        bool wrap;
        int id, position;
    } cases[] = {
        {"the first of two", {1, 3, 3}, false, 3, 1},
        {"unknown", {1, 3, 5}, false, 4, 0},
        {"wrapped", {0, 1, 2}, true, 4, 1},
        {"the largest isn't wrapped", {0, 1, 2}, true, 2, 2},
        {"wrapped to one that isn't there", {1, 3, 3}, true, 6, 0},
        {"wrapped without a largest", {-3, -2, -1}, true, 5, 0},
        {"ids run out", {5}, false, 2, 2},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        startFrame(mtl, {{"ids_list", c.ids}, {"wrap_id", c.wrap}});
        face.id = c.id;
        EXPECT_EQ(shaded(), c.position);
    }
}

TEST_F(MtlMultiTest, TexturesGiveTheIdBeforeFaces) {
    face.id = 2;
    texture.integer = 1;
    startFrame(mtl, {{"ids_list", std::vector{1, 2, INT_MAX}}, {"mtlid_gen_float", &texture}});
    for (const auto& [number, position] :
         {std::pair(2.4f, 1), {2.5f, 0}, {1.5f, 1}, {-1.5f, 0}, {1e30f, 2}, {std::nanf(""), 0}}) {
        texture.number = number;
        EXPECT_EQ(shaded(), position) << number;
    }
    texture.number = 2.0f;
    startFrame(mtl, {{"mtlid_gen", &texture}});
    EXPECT_EQ(shaded(), 0) << "the integer texture comes first";
}

TEST_F(MtlMultiTest, ShaderSetsPickByName) {
    const std::vector<const char*> names{"silk", "wood", "steel", "beyond"};
    face.id = 7;  // plays no part, as wrap_id
    startFrame(mtl, {{"shader_sets_list", names}, {"wrap_id", true}});
    EXPECT_TRUE(renderer.log.texts.empty()) << "ids aren't missed";
    EXPECT_EQ(shaded(), 0) << "no set";
    for (const auto& [name, position] :
         {std::pair("wood", 1), {"steel", 2}, {"beyond", 0}, {"glass", 0}}) {
        face.shaderSet = renderer.intern(name);
        EXPECT_EQ(shaded(), position) << name;
    }
}

TEST_F(MtlMultiTest, PairsAreTheOldFormOfTheLists) {
    using Pairs = std::vector<NumberAndPlugin>;
    startFrame(mtl,
               {{"mtls", Pairs{{4, &subs[2]}, {9, nullptr}, {2, &subs[1]}}}, {"wrap_id", true}});
    EXPECT_EQ(renderer.log.texts,
              std::vector<std::string>{"w MtlMulti (mix) \"mtls\" parameter is deprecated; use "
                                       "\"mtls_list\" and \"ids_list\" instead.\n"});
    face.id = 12;
    EXPECT_EQ(shaded(), 1) << "wrapped by the id of the empty pair, to 2";
    face.id = 9;
    EXPECT_EQ(shaded(), 2) << "the first entry stands in";
    startFrame(mtl, {{"mtls", Pairs()}});
    EXPECT_EQ(shaded(), -1) << "the new lists aren't looked at";
}

TEST_F(MtlMultiTest, AHitIsPickedOnceForItsSampler) {
    // Each row asks for a sampler, gives it back after the texture has changed, and counts reads.
    const struct {
        const char* what;
        int thread, depth, hitID, reads;
    } cases[] = {
        {"new", 0, 0, 5, 1},
        {"the same again", 0, 0, 5, 0},
        {"deeper than all before", 0, 40, 5, 1},
        {"another hit", 0, 0, 6, 1},
        {"deep ones have stayed", 0, 40, 5, 0},
        {"another thread", 1, 0, 6, 1},
    };
    for (int frame = 0; frame < 2; ++frame) {
        startFrame(mtl, {{"mtlid_gen", &texture}});
        for (const auto& c : cases) {
            SCOPED_TRACE(c.what);
            log.clear();
            FakeContext context = hit(c.thread);
            context.traceDepth = c.depth;
            context.hitID = c.hitID;
            BSDFSampler* sampler = mtl.getBSDF(context, 0);
            texture.integer = (texture.integer + 1) % 3;
            mtl.releaseBSDF(context, sampler);
            EXPECT_EQ(log.count("getTexInt"), c.reads);
            for (const RecordingMaterial& sub : subs)
                EXPECT_EQ(sub.samplersOut, 0);
        }
    }
}

}  // namespace
