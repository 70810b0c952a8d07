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
    const std::string_view guide = desc.guide ? desc.guide : "";
    const Range range{guideEntry(guide, "minValue=("), guideEntry(guide, "maxValue=(")};
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

}  // namespace Tarnkit
