#include "pelk/host/scene/setting_limits.h"

#include <gtest/gtest.h>

#include <fstream>

#include "pelk/host/scene/scene.h"
#include "pelk/host/scene/scene_json.h"

namespace Tarnkit {
namespace {

// Editors check scenes by the schema, the reader by the limits: a scene must please both.
TEST(SettingLimits, AreThoseOfTheSchemaAndSoAreTheDefaults) {
    std::ifstream file(PELK_SCENE_SCHEMA);
    const Json schema = Json::parse(file);
    const Json& settings = schema["definitions"]["settings"]["properties"];
    const SceneSettings standard;
    const struct {
        const char* name;
        IntLimits limits;
        int standard;
    } rows[] = {{"width", kPictureSideLimits, standard.width},
                {"height", kPictureSideLimits, standard.height},
                {"samples", kSampleLimits, standard.samples},
                {"max_depth", kDepthLimits, standard.maxDepth}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Json& told = settings.at(row.name);
        EXPECT_EQ(told.at("minimum"), row.limits.least);
        EXPECT_EQ(told.at("maximum"), row.limits.most);
        EXPECT_EQ(told.at("default"), row.standard);
    }
}

}  // namespace
}  // namespace Tarnkit
