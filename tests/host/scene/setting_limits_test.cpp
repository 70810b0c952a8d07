#include "pelk/host/scene/setting_limits.h"

#include <gtest/gtest.h>

#include <fstream>

#include "pelk/host/scene/scene_json.h"

namespace Tarnkit {
namespace {

// Editors check scenes by the schema, the reader by the limits: a scene must please both.
TEST(SettingLimits, AreThoseOfTheSchema) {
    std::ifstream file(PELK_SCENE_SCHEMA);
    const Json schema = Json::parse(file);
    const Json& settings = schema["definitions"]["settings"]["properties"];
    const std::pair<const char*, IntLimits> rows[] = {{"width", kPictureSideLimits},
                                                      {"height", kPictureSideLimits},
                                                      {"samples", kSampleLimits},
                                                      {"max_depth", kDepthLimits}};
    for (const auto& [name, limits] : rows) {
        EXPECT_EQ(settings.at(name).at("minimum"), limits.least) << name;
        EXPECT_EQ(settings.at(name).at("maximum"), limits.most) << name;
    }
}

}  // namespace
}  // namespace Tarnkit
