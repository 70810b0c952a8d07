#include <algorithm>
#include <climits>

#include "fake_host/dice.h"
#include "fake_host/fake_host.h"

namespace {

/// A primitive whose face that was hit has an id and a shader set.
struct FakeFace : PluginWith<SurfaceMtlIDInterface, ShaderSetInterface> {
    int id = 0;
    StringHandle shaderSet;

    int getSurfaceMtlID(PelkContext&) override { return id; }
    void getShaderSetName(StringHandle& out, PelkContext&, int) override { out = shaderSet; }
};

class MtlMultiTest : public OneHit {
protected:
    RecordingMaterial subs[4];
    FakeFace face;
    PelkMaterial &mtl = make("MtlMulti", "mix"), &older = make("MtlMulti", "mix");
};

TEST_F(MtlMultiTest, TheFirstEntryThatTheHitNamesShades) {
    Dice dice;
    const char* const names[] = {"silk", "wood", "steel", "glass"};
    for (int i = 0; i < 4; ++i)
        subs[i].results.color = Color(static_cast<float>(i));
    for (int round = 0; round < 4000; ++round) {
        SCOPED_TRACE(round);
        // Which entry has which id and which material; -1 is none. The ids of a list may run out.
        const bool isOld = dice.coin(), isBySet = dice.below(4) == 0, wraps = dice.coin();
        const bool hasIDs = isOld || dice.below(8) > 0;
        const int count = dice.below(5), numIDs = hasIDs ? dice.below(5) : 0;
        PelkMaterial& mix = isOld ? older : hasIDs ? mtl : make("MtlMulti", "mix");
        std::vector<PluginBase*> list;
        std::vector<NumberAndPlugin> pairs;
        std::vector<int> ids(numIDs), entryIDs, entries;
        std::vector<const char*> sets;
        std::generate(ids.begin(), ids.end(), [&] { return dice.below(8) - 3; });
        int largest = -1;
        for (int i = 0; i < count; ++i) {
            const int sub = dice.below(5) - 1, id = i < numIDs ? ids[i] : i;
            list.push_back(sub < 0 ? nullptr : &subs[sub]);
            pairs.push_back({id, list.back()});
            largest = std::max(largest, id);
            if (isOld && sub < 0)
                continue;  // no entry, yet its id counts for the largest
            entryIDs.push_back(id);
            entries.push_back(sub);
        }
        for (int i = 0; isBySet && i < 1 + count; ++i)
            sets.push_back(names[dice.below(4)]);
        // The first of these that is there says what the hit's id is.
        PluginBase* const whole = dice.below(3) ? nullptr : &texture;
        PluginBase* const fraction = dice.below(3) ? nullptr : &texture;
        texture.integer = dice.below(12) - 4;
        texture.number = dice.of({2.4f, 2.5f, -0.7f, -1.5f, 1e30f, dice.between(-4, 8)});
        face.id = dice.below(12) - 4;
        const int set = dice.below(5);
        face.shaderSet = set == 4 ? StringHandle() : renderer.intern(names[set]);
        if (isOld)
            setParam(mix, {"mtls", pairs});
        else
            setParams(mix, {{"mtls_list", list}, {"shader_sets_list", sets}});
        if (!isOld && hasIDs)
            setParam(mix, {"ids_list", ids});
        renderer.log.texts.clear();
        startFrame(mix, {{"wrap_id", wraps}, {"mtlid_gen", whole}, {"mtlid_gen_float", fraction}});
        const std::string warning =
            isOld    ? "w MtlMulti (mix) \"mtls\" parameter is deprecated; use \"mtls_list\" and "
                       "\"ids_list\" instead.\n"
            : !count ? "w MtlMulti (mix) has no sub-materials.\n"
            : !hasIDs && !isBySet ? "w MtlMulti (mix) has no ids_list parameter.\n"
            : hasIDs && numIDs < count
                ? "w MtlMulti \"mix\" has more materials (" + std::to_string(count) +
                      ") than ids (" + std::to_string(numIDs) + ").\n"
                : "";
        EXPECT_EQ(renderer.log.texts, std::vector<std::string>(!warning.empty(), warning));

        int id = whole      ? texture.integer
                 : fraction ? static_cast<int>(std::min(texture.number + 0.5, 2147483647.0))
                            : face.id;
        if (wraps && id > largest)
            id = largest < 0 ? INT_MAX : id % (largest + 1);
        auto place = std::find(entryIDs.begin(), entryIDs.end(), id) - entryIDs.begin();
        if (isBySet && !isOld)
            place = std::find(sets.begin(), sets.end(), set == 4 ? "" : names[set]) - sets.begin();
        if (place >= std::ssize(entries))
            place = 0;
        const int expected = entries.empty() ? -1 : entries[place];
        context.hitObject = &face;
        mix.shade(context);
        if (expected < 0)
            EXPECT_EQ(resultsOf(context), kOpaqueBlack);
        else
            EXPECT_EQ(context.resultColor, Color(static_cast<float>(expected)));
    }
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
    setParams(mtl, {{"mtls_list", std::vector<PluginBase*>{&subs[0], &subs[1], &subs[2]}}});
    for (int frame = 0; frame < 2; ++frame) {
        startFrame(mtl, {{"mtlid_gen", &texture}});
        for (const auto& c : cases) {
            SCOPED_TRACE(c.what);
            log.clear();
            FakeContext other = hit(c.thread);
            other.traceDepth = c.depth;
            other.hitID = c.hitID;
            BSDFSampler* sampler = mtl.getBSDF(other, 0);
            texture.integer = (texture.integer + 1) % 3;
            mtl.releaseBSDF(other, sampler);
            EXPECT_EQ(log.count("getTexInt"), c.reads);
            for (const RecordingMaterial& sub : subs)
                EXPECT_EQ(sub.samplersOut, 0);
        }
    }
}

}  // namespace
