#include "pelk/contract/shader_source.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <string>

#include "fake_host/fake_renderer.h"
#include "scoped_environment.h"

using Tarnkit::ShaderSource;

TEST(ShaderSourceTest, WritesAPointInALocaleWithCommas) {
    const std::string former = std::setlocale(LC_NUMERIC, nullptr);
    const ScopedEnvironment locales("LOCPATH", PELK_TEST_LOCALES);
    ASSERT_TRUE(std::setlocale(LC_NUMERIC, "comma")) << "the test's locale was not built";
    ShaderSource source;
    source.printf("%f %g", 1234.5, 0.5);
    EXPECT_STREQ(source.c_str(), "1234.500000 0.5");
    char own[16];
    std::snprintf(own, sizeof(own), "%.1f", 1.5);
    EXPECT_STREQ(own, "1,5") << "the program's locale was not put back";
    std::setlocale(LC_NUMERIC, former.c_str());
}

TEST(ShaderSourceTest, KeepsLongTextsWhole) {
    const std::string text(3000, 'x');
    ShaderSource source;
    std::string expected;
    for (int i = 0; i < 20; ++i) {
        source.printf("<%s>%.600f", text.c_str(), 1.0);
        expected += "<" + text + ">1." + std::string(600, '0');
    }
    source.append(source);  // its own text, which moves while it is appended
    EXPECT_EQ(source.c_str(), expected + expected);
    EXPECT_EQ(source.length(), static_cast<int>(2 * expected.size()));
}

TEST(ShaderSourceTest, WarnsOfABumpMapWithoutText) {
    FakeRenderer renderer;
    ShaderSource map;
    map.oclCheckBumpTextureSupport(&renderer, "rust", "MtlBump", 0);
    map.oclCheckBumpTextureSupport(&renderer, nullptr, "MtlBump", 1);
    map.oclCheckBumpTextureSupport(nullptr, "rust", "MtlBump", 1);
    EXPECT_EQ(map.length(), 0);
    map.append("bitmap\n");
    map.oclCheckBumpTextureSupport(&renderer, "rust", "MtlBump", 1);
    const char* const end = "can't be described; its text has a smooth surface.\n";
    EXPECT_EQ(renderer.log.texts, (std::vector<std::string>{
                                      "w [MtlBump] The height map of \"rust\" " + std::string(end),
                                      "w [MtlBump] The normal map of \"\" " + std::string(end)}));
    renderer.sequenceData.log = nullptr;
    ShaderSource().oclCheckBumpTextureSupport(&renderer, "rust", "MtlBump", 1);
}
