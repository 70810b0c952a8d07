#include "pelk/host/scene/scene_settings.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "pelk/support/spelling.h"

namespace Tarnkit {

namespace {

/// One setting, with the field of its type; the others are null.
struct SettingRow {
    std::string_view name;
    const char* expected;
    int SceneSettings::*intField = nullptr;
    int least = 0, most = 0;
    bool SceneSettings::*boolField = nullptr;
    double SceneSettings::*numberField = nullptr;
    Color SceneSettings::*colorField = nullptr;
    std::string SceneSettings::*textField = nullptr;
    std::vector<std::string> SceneSettings::*namesField = nullptr;
};

using S = SceneSettings;
static_assert(kMaxPictureSide == 65536 && kMaxSamples == 16777216, "the texts say so");

constexpr SettingRow kSettings[] = {
    {.name = "width",
     .expected = "a whole number from 1 to 65536",
     .intField = &S::width,
     .least = 1,
     .most = kMaxPictureSide},
    {.name = "height",
     .expected = "a whole number from 1 to 65536",
     .intField = &S::height,
     .least = 1,
     .most = kMaxPictureSide},
    {.name = "samples",
     .expected = "a whole number from 1 to 16777216",
     .intField = &S::samples,
     .least = 1,
     .most = kMaxSamples},
    {.name = "max_depth",
     .expected = "a whole number from 1 to 1000",
     .intField = &S::max_depth,
     .least = 1,
     .most = 1000},
    {.name = "gi", .expected = "true or false", .boolField = &S::gi},
    {.name = "reflective_gi", .expected = "true or false", .boolField = &S::reflective_gi},
    {.name = "gi_bump", .expected = "true or false", .boolField = &S::gi_bump},
    {.name = "reflections", .expected = "true or false", .boolField = &S::reflections},
    {.name = "depth_override", .expected = "true or false", .boolField = &S::depth_override},
    {.name = "backplate",
     .expected = "the name of an instance with EXT_TEXTURE",
     .textField = &S::backplate},
    {.name = "background",
     .expected = "three numbers, as in [0, 0, 0]",
     .colorField = &S::background},
    {.name = "origin", .expected = "three numbers, as in [0, 0, 0]", .colorField = &S::origin},
    {.name = "time", .expected = "a number", .numberField = &S::time},
    {.name = "half_float", .expected = "true or false", .boolField = &S::half_float},
    {.name = "camera", .expected = "the name of a camera", .textField = &S::camera},
    {.name = "channels",
     .expected = "an array of names of render channels, as in [\"depth\", \"normals\"]",
     .namesField = &S::channels},
};

bool readInt(const Json& json, const SettingRow& row, int& out) {
    if (!json.is_number_integer() || json > row.most || json < row.least)
        return false;
    out = json.get<int>();
    return true;
}

bool readColor(const Json& json, Color& out) {
    if (!json.is_array() || json.size() != 3 || !json[0].is_number() || !json[1].is_number() ||
        !json[2].is_number())
        return false;
    out = {json[0].get<float>(), json[1].get<float>(), json[2].get<float>()};
    return isFinite(out);
}

bool readNames(const Json& json, std::vector<std::string>& out) {
    const auto isText = [](const Json& item) { return item.is_string(); };
    if (!json.is_array() || !std::all_of(json.begin(), json.end(), isText))
        return false;
    out = json.get<std::vector<std::string>>();
    return true;
}

bool readSetting(const Json& json, const SettingRow& row, SceneSettings& settings) {
    if (row.intField)
        return readInt(json, row, settings.*row.intField);
    if (row.colorField)
        return readColor(json, settings.*row.colorField);
    if (row.namesField)
        return readNames(json, settings.*row.namesField);
    if (row.boolField && json.is_boolean())
        settings.*row.boolField = json.get<bool>();
    else if (row.numberField && json.is_number())
        settings.*row.numberField = json.get<double>();
    else if (row.textField && json.is_string())
        settings.*row.textField = json.get<std::string>();
    else
        return false;
    return true;
}

}  // namespace

bool readSceneSettings(const Json& json, const std::string& pointer, SceneSettings& settings,
                       SceneError& error) {
    if (!json.is_object()) {
        error = {pointer, "expected an object of settings, not " + shortText(json)};
        return false;
    }
    std::vector<std::string_view> names;
    for (const SettingRow& row : kSettings)
        names.push_back(row.name);
    for (const auto& [key, value] : json.items()) {
        const SettingRow* found = nullptr;
        for (const SettingRow& row : kSettings)
            found = row.name == key ? &row : found;
        if (found && readSetting(value, *found, settings))
            continue;
        error = {pointerTo(pointer, key),
                 found ? std::string("expected ") + found->expected + ", not " + shortText(value)
                       : "there is no such setting" + knownNames(key, names)};
        return false;
    }
    if ((long long)settings.width * settings.height > kMaxPicturePixels) {
        error = {pointer, "width times height: expected at most " +
                              std::to_string(kMaxPicturePixels) + " pixels"};
        return false;
    }
    return true;
}

}  // namespace Tarnkit
