// Materials that wrap another, on the two roads by which pictures reach them.

#include "host/render/render_fixture.h"

namespace Tarnkit {
namespace {

class WrappingTest : public RenderFixture {
protected:
    std::vector<Color> pictureOf(const std::string& wrapper, const char* shown) {
        const auto scene = read(R"(
            "base": {"type": "MtlDiffuse", "diffuse": [0.7, 0.5, 0.3],
                     "reflection": [0.2, 0.2, 0.2]},
            "wrapper": {)" + wrapper +
                                    R"(},
            "by_sampler": {"type": "MtlSingleBRDF", "brdf": "wrapper"},
            "ball": {"type": "GeomSphere", "material": ")" +
                                    shown + R"("},
            "floor": {"type": "GeomQuad", "material": "base", "width": 9, "height": 9,
                      "rotate": [-90, 0, 0], "translate": [0, -1, 0]},
            "sun": {"type": "LightSun", "direction": [1, -1, -1], "angle": 5},
            "dome": {"type": "LightDome", "intensity": 0.3})",
                                "");
        Picture picture;
        if (scene)
            render(*scene, picture, 4);
        return pixelsOf<Color>(picture, 0);
    }
};

TEST_F(WrappingTest, AWrapperThatAddsNothingShowsItsBaseOnBothRoads) {
    const char* const bare = R"("type": "MtlRenderStats", "base_mtl": "base")";
    const std::vector<Color> expected[] = {
        pictureOf(bare, "base"),
        pictureOf(R"("type": "MtlSingleBRDF", "brdf": "base")", "wrapper")};
    const char* cases[] = {
        bare,
        R"("type": "MtlWrapper", "base_material": "base")",
        R"("type": "MtlOverride", "base_mtl": "base")",
        R"("type": "MtlMulti", "mtls_list": ["base"], "ids_list": [0], "wrap_id": true)",
        R"("type": "MtlMaterialID", "base_mtl": "base")",
        R"("type": "MtlDoubleSided", "base_mtl": "base")",
    };
    for (const char* wrapper : cases) {
        SCOPED_TRACE(wrapper);
        for (const bool sampler : {false, true}) {
            const auto& base = expected[sampler];
            const auto pixels = pictureOf(wrapper, sampler ? "by_sampler" : "wrapper");
            ASSERT_EQ(pixels.size(), base.size());
            for (std::size_t i = 0; i < pixels.size(); ++i)
                expectNear(pixels[i], base[i], 1e-5f);
        }
    }
}

}  // namespace
}  // namespace Tarnkit
