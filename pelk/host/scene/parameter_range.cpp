#include "pelk/host/scene/parameter_range.h"

#include <charconv>
#include <string_view>

namespace Tarnkit {

namespace {

/// Both ends as the guide words them; empty without a range.
struct Range {
    std::string_view least, most;

    bool isThere() const { return !least.empty() && !most.empty(); }
};

/// The text between the parentheses behind a key; empty if there is none.
std::string_view guideEntry(std::string_view guide, std::string_view key) {
    const std::size_t at = guide.find(key);
    if (at == std::string_view::npos)
        return {};
    guide.remove_prefix(at + key.size());
    return guide.substr(0, guide.find(')'));
}

double toNumber(std::string_view text) {
    double number = 0.0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

Range rangeOf(const ParameterDesc& desc) {
    const std::string_view guide = desc.guide ? desc.guide : "";
    return {guideEntry(guide, "minValue=("), guideEntry(guide, "maxValue=(")};
}

/// Whether a default is in the range, whose ends may be missing. As floats: 0.1 of a float lies
/// above that of a text.
bool isWithin(float number, const Range& range) {
    return (range.least.empty() || number >= static_cast<float>(toNumber(range.least))) &&
           (range.most.empty() || number <= static_cast<float>(toNumber(range.most)));
}

bool checkNumber(const Json& json, const Range& range, const std::string& pointer,
                 SceneError& error) {
    const double number = json.get<double>();
    if (number >= toNumber(range.least) && number <= toNumber(range.most))
        return true;
    error = {pointer, "expected a number from " + std::string(range.least) + " to " +
                          std::string(range.most) + ", not " + shortText(json)};
    return false;
}

}  // namespace

bool checkRange(const ParameterDesc& desc, const Json& json, const std::string& pointer,
                SceneError& error) {
    const Range range = rangeOf(desc);
    if (!range.isThere())
        return true;
    if (!json.is_object())
        return checkNumber(json, range, pointer, error);
    const Json& values = json["values"];
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (!checkNumber(values[i], range, pointerTo(pointerTo(pointer, "values"), i), error))
            return false;
    }
    return true;
}

bool isDefaultInRange(const ParameterDesc& desc) {
    const bool isWhole = desc.type == ParameterType::Int || desc.type == ParameterType::TextureInt;
    const bool isNumber =
        desc.type == ParameterType::Float || desc.type == ParameterType::TextureFloat;
    if (!desc.hasDefault || !(isWhole || isNumber))
        return true;
    return isWithin(isWhole ? static_cast<float>(desc.intDefault) : desc.colorDefault.color.r,
                    rangeOf(desc));
}

}  // namespace Tarnkit
