#include "fake_host/fake_host.h"

namespace {

class DescriptorText : public OneHit {
protected:
    DescriptorText() {
        a.text = "a\n";
        b.text = "b\n";
    }

    std::string textOf(const char* plugin, std::initializer_list<Param> params,
                       const char* section = "MaterialDescriptor") {
        PelkMaterial& mtl = make(plugin, "leaf");
        startFrame(mtl, params);
        return describe(mtl, section);
    }

    RecordingMaterial a, b, c, mute;
};

TEST_F(DescriptorText, OwnLinesStandAheadOfTheBases) {
    EXPECT_EQ(textOf("MtlDiffuse", {{"diffuse", Color(0.25f, 0.5f, 1)},
                                    {"diffuse_tex", &texture},
                                    {"diffuse_tex_mult", 0.75f}}),
              "1 diffuse\ntexture float name\nbitmap_mult 0.750000\n"
              "color_value 0.250000 0.500000 1.000000\n");
    EXPECT_EQ(textOf("MtlSingleBRDF", {{"brdf", &a}, {"double_sided", 4}}),
              "1 double_sided 4\na\n");
    EXPECT_EQ(textOf("MtlMaterialID", {{"base_mtl", &a}, {"material_id_number", -3}}),
              "1 material_id_number -3\na\n");
    EXPECT_EQ(textOf("MtlRenderStats",
                     {{"base_mtl", &a}, {"reflections_visibility", false}, {"visibility", 0.25f}}),
              "1 visible_to_camera 1\nvisible_to_reflections 0\nvisible_to_refractions 1\n"
              "visible_to_gi 1\nvisible_to_shadows 1\noverall_visibility 0.250000\na\n");
    EXPECT_EQ(textOf("MtlWrapper", {{"base_material", &a},
                                    {"generate_gi", 0.5f},
                                    {"receive_gi", 0.0f},
                                    {"matte_surface", true},
                                    {"matte_for_secondary_rays", 1},
                                    {"shadow_tint_color", Color(1, 0.5f, 0)}}),
              "1 mtl_wrapper\nmtlwrapper_generate_gi 1\nmtlwrapper_receive_gi 0\n"
              "mtlwrapper_matte_surface 3\nmtlwrapper_matte_shadow 0\n"
              "mtlwrapper_matte_shadowColor 1.000000 0.500000 0.000000\na\n");
}

TEST_F(DescriptorText, BumpsTellTheirMapAroundTheBase) {
    PluginBase* const map = &texture;
    const auto of = [&](PluginBase* color, PluginBase* number, Param param,
                        const char* section = "MaterialDescriptor") {
        return textOf(
            "MtlBump",
            {{"base_mtl", &a}, {"bump_tex_color", color}, {"bump_tex_float", number}, param},
            section);
    };
    const std::string head = "1 dbgmtlname \"leaf\"\nbump\nbitmap_mult 1.000000\n",
                      color = "texture color name\n", number = "texture float name\n",
                      block = "<coatlayer_begin>\na\n<coatlayer_end>\n";
    EXPECT_EQ(of(nullptr, nullptr, {"map_type", 1}, "x"), "1 a\n") << "no map";
    EXPECT_EQ(of(map, nullptr, {"base_mtl", static_cast<PluginBase*>(nullptr)}), "0 ");
    EXPECT_EQ(of(map, nullptr, {"bump_shadows", true}), head + color + "bump\n" + block)
        << "nobody has set map_type";
    EXPECT_EQ(of(nullptr, map, {"map_type", 1}), head + number + "bumpIsNormalMap\nbump\n" + block);
    EXPECT_EQ(of(map, map, {"map_type", 0}), head + color + number + "bumpMaya\nbump\n" + block);
    EXPECT_EQ(of(map, nullptr, {"bump_tex_mult_tex", map}),
              head + color + "bump\nbump_amount\n" + number + block);
    EXPECT_EQ(of(map, nullptr, {"map_type", 1}, "HierarchyDescriptor"), "1 Num_children: 1\na\n");
    EXPECT_EQ(of(map, nullptr, {"map_type", 1}, "x"), "0 ");
}

TEST_F(DescriptorText, LayersStandInFrames) {
    const std::string frameOfA = "<coatlayer_begin>\na\n<coatlayer_end>\n",
                      frameOfB = "<coatlayer_begin>\nb\n<coatlayer_end>\n",
                      leaf = "1 dbgmtlname \"leaf\"\ntwo_sided\n<coatlayer_begin>\nweight_map\n";
    EXPECT_EQ(textOf("Mtl2Sided", {{"front", &a}, {"back", &b}}),
              leaf + "color 0.000000 0.000000 0.000000\na\n<coatlayer_end>\n" +
                  "<coatlayer_begin>\nweight_map\ncolor 1.0 1.0 1.0\nb\n<coatlayer_end>\n");

    EXPECT_EQ(textOf("MtlOverride", {{"base_mtl", &a},
                                     {"gi_mtl", &c},
                                     {"enable_gi_mtl", false},
                                     {"reflect_mtl", &b},
                                     {"refract_mtl", &a},
                                     {"shadow_mtl", &b}}),
              "1 override_mtl\noverride_sub_mtls_offsets 1,1,2,1,2\n" + frameOfA + frameOfB);
    EXPECT_EQ(textOf("MtlOverride", {{"base_mtl", &a},
                                     {"gi_mtl", &b},
                                     {"reflect_mtl", &b},
                                     {"enable_reflect_mtl", false},
                                     {"refract_mtl", &b}}),
              "1 override_mtl\noverride_sub_mtls_offsets 1,2,1,1,1\n" + frameOfA + frameOfB)
        << "the offset of the nearest layer ahead, one that is switched off too";

    EXPECT_EQ(
        textOf("MtlMulti", {{"mtls_list", std::vector<PluginBase*>{&a, &b}}, {"wrap_id", true}}),
        "1 mtlmulti_wrap 1\nmtlmulti_maxID 1\n");
}

TEST_F(DescriptorText, OffsetsCountTheBlocksInsideTheLayersAhead) {
    mute.hiddenFaces = {RTMtlInterface::kInterfaceID};
    const std::string block = "<coatlayer_begin>\n<coatlayer_end>\n";
    const struct {
        std::string first;  // the text of a
        std::vector<PluginBase*> layers;
        std::vector<float> offsets;
    } cases[] = {
        {"x\n" + block + "y\n" + block, {&a, &b}, {1, 4}},
        {"<coatlayer_begin>\n" + block + "<coatlayer_end>\n", {&a, &b}, {1, 4}},
        {"a tag in a value is one: <coatlayer_begin> x\n", {&a, &b}, {1, 3}},
        {"half a tag is none: <coatlayer_begin", {&a, &b}, {1, 2}},
        {"", {&a, &mute, nullptr, &b}, {1, 1, 1, 2}},
        {"", {&mute, nullptr, &b}, {0, 0, 1}},
    };
    for (const auto& row : cases) {
        a.text = row.first;
        const std::string text =
            textOf("MtlMulti", {{"mtls_list", row.layers}, {"mtlid_gen", &texture}});
        std::string head = "1 mtl_switch\nemission\nuvw_transform ";
        for (const float offset : row.offsets)
            head += std::to_string(offset) + ",";
        EXPECT_TRUE(text.starts_with(head)) << text;
        const std::string blocks = "\ndiffuse\ntexture color name\n<coatlayer_begin>\n";
        EXPECT_NE(text.find(blocks + (row.offsets[0] > 0 ? row.first : "b\n")), text.npos) << text;
    }
}

}  // namespace
