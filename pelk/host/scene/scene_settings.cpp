#include "pelk/host/scene/scene_settings.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <iterator>
#include <string_view>
#include <vector>

#include "pelk/host/scene/setting_limits.h"
#include "pelk/support/spelling.h"

namespace Tarnkit {

namespace {

/// One setting, with the field of its type; the others are null.
struct SettingRow {
    std::string_view name;
    const char* expected = nullptr;  ///< null for a whole number, whose limits say it
    int SceneSettings::*intField = nullptr;
    IntLimits limits{};
    bool SceneSettings::*boolField = nullptr;
    double SceneSettings::*numberField = nullptr;
    Color SceneSettings::*colorField = nullptr;
    bool isPositive = false;  ///< of a number
    std::string SceneSettings::*textField = nullptr;
    std::vector<std::string> SceneSettings::*namesField = nullptr;
};

constexpr SettingRow intSetting(std::string_view name, int SceneSettings::*field,
                                IntLimits limits) {
    return {.name = name, .intField = field, .limits = limits};
}

constexpr SettingRow boolSetting(std::string_view name, bool SceneSettings::*field) {
    return {.name = name, .expected = "true or false", .boolField = field};
}

constexpr SettingRow colorSetting(std::string_view name, Color SceneSettings::*field) {
    return {.name = name, .expected = "three numbers, as in [0, 0, 0]", .colorField = field};
}

using S = SceneSettings;

constexpr SettingRow kSettingRows[] = {
    intSetting("width", &S::width, kPictureSideLimits),
    intSetting("height", &S::height, kPictureSideLimits),
    intSetting("samples", &S::samples, kSampleLimits),
    intSetting("seed", &S::seed, kSeedLimits),
    intSetting("max_depth", &S::maxDepth, kDepthLimits),
    boolSetting("gi", &S::gi),
    boolSetting("reflective_gi", &S::reflectiveGi),
    boolSetting("gi_bump", &S::giBump),
    boolSetting("reflections", &S::reflections),
    boolSetting("depth_override", &S::depthOverride),
    {.name = "backplate",
     .expected = "the name of an instance with EXT_TEXTURE",
     .textField = &S::backplate},
    colorSetting("background", &S::background),
    colorSetting("origin", &S::origin),
    {.name = "time", .expected = "a number", .numberField = &S::time},
    {.name = "fps", .expected = "a number above 0", .numberField = &S::fps, .isPositive = true},
    boolSetting("half_float", &S::halfFloat),
    {.name = "camera", .expected = "the name of a camera", .textField = &S::camera},
    {.name = "channels",
     .expected = "an array of names of render channels, as in [\"depth\", \"normals\"]",
     .namesField = &S::channels},
};

bool readInt(const Json& json, const IntLimits& limits, int& out) {
    int value = 0;
    if (!toWholeNumber(json, value) || !limits.allow(value))
        return false;
    out = value;
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
        return readInt(json, row.limits, settings.*row.intField);
    if (row.colorField)
        return readColor(json, settings.*row.colorField);
    if (row.namesField)
        return readNames(json, settings.*row.namesField);
    if (row.boolField && json.is_boolean())
        settings.*row.boolField = json.get<bool>();
    else if (row.numberField && json.is_number() && (!row.isPositive || json.get<double>() > 0.0))
        settings.*row.numberField = json.get<double>();
    else if (row.textField && json.is_string())
        settings.*row.textField = json.get<std::string>();
    else
        return false;
    return true;
}

/// Whether a render may take another value than the scene's.
bool isOverridden(const SettingRow& row) {
    static constexpr std::string_view kNames[] = {"width", "height", "samples", "seed", "channels"};
    return std::find(std::begin(kNames), std::end(kNames), row.name) != std::end(kNames);
}

void hashSetting(const SceneSettings& settings, const SettingRow& row, ContentHash& hash) {
    hash.addText(row.name);
    if (row.intField)
        hash.addNumber(static_cast<std::uint64_t>(settings.*row.intField));
    if (row.boolField)
        hash.addNumber(settings.*row.boolField);
    if (row.numberField)
        hash.addNumber(std::bit_cast<std::uint64_t>(settings.*row.numberField));
    if (row.colorField)
        hash.add(&(settings.*row.colorField), sizeof(Color));
    if (row.textField)
        hash.addText(settings.*row.textField);
}

std::string expectedOf(const SettingRow& row) {
    return row.expected ? row.expected : row.limits.expected();
}

}  // namespace

bool readSceneSettings(const Json& json, const std::string& pointer, SceneSettings& settings,
                       SceneError& error) {
    if (!json.is_object()) {
        error = {pointer, "expected an object of settings, not " + shortText(json)};
        return false;
    }
    std::vector<std::string_view> names;
    for (const SettingRow& row : kSettingRows)
        names.push_back(row.name);
    for (const auto& [key, value] : json.items()) {
        const SettingRow* found = nullptr;
        for (const SettingRow& row : kSettingRows)
            found = row.name == key ? &row : found;
        if (found && readSetting(value, *found, settings))
            continue;
        error = {pointerTo(pointer, key),
                 found ? "expected " + expectedOf(*found) + ", not " + shortText(value)
                       : "there is no such setting" + knownNames(key, names)};
        return false;
    }
    if (hasTooManyPixels(settings.width, settings.height)) {
        error = {pointer, "width times height: expected at most " +
                              std::to_string(kMaxPicturePixels) + " pixels"};
        return false;
    }
    return true;
}

void hashSettings(const SceneSettings& settings, ContentHash& hash) {
    for (const SettingRow& row : kSettingRows) {
        if (!isOverridden(row))
            hashSetting(settings, row, hash);
    }
}

}  // namespace Tarnkit
