#include "pelk/host/scene/scene_values.h"

#include <cmath>
#include <deque>
#include <filesystem>
#include <limits>

#include "pelk/contract/plugin_parameters.h"
#include "pelk/host/plugins/confinement.h"
#include "pelk/host/plugins/file_guide.h"
#include "pelk/host/scene/interface_names.h"
#include "pelk/support/environment.h"
#include "pelk/support/spelling.h"

namespace Tarnkit {

namespace {

bool isTexture(const ParameterDesc& desc) {
    return desc.type == ParameterType::Texture || desc.type == ParameterType::TextureFloat ||
           desc.type == ParameterType::TextureInt;
}

/// The interface that an instance must offer to be the value of the parameter.
u64 neededInterface(const ParameterDesc& desc) {
    switch (desc.type) {
        case ParameterType::Plugin:
            return desc.interfaceID;
        case ParameterType::Texture:
            return TextureInterface::kInterfaceID;
        case ParameterType::TextureInt:
            return TextureIntInterface::kInterfaceID;
        default:
            return TextureFloatInterface::kInterfaceID;
    }
}

std::string instanceWith(u64 interfaceID) {
    const char* const name = interfaceName(interfaceID);
    return name ? std::string("the name of an instance with ") + name : "the name of an instance";
}

/// What can stand as one item of the parameter.
std::string expectedItem(const ParameterDesc& desc) {
    switch (desc.type) {
        case ParameterType::Bool:
            return "true or false";
        case ParameterType::Int:
            return "a whole number of 32 bits";
        case ParameterType::Float:
            return "a number up to 3.4e38";
        case ParameterType::Color:
            return "three or four numbers, as in [0.8, 0.5, 0.2]";
        case ParameterType::Plugin:
            return desc.ofPairs
                       ? "[a whole number of 32 bits, " + instanceWith(desc.interfaceID) + "]"
                       : instanceWith(desc.interfaceID);
        case ParameterType::String:
            return "a text";
        case ParameterType::Texture:
            return "three or four numbers or " + instanceWith(TextureInterface::kInterfaceID);
        case ParameterType::TextureInt:
            return "a whole number of 32 bits or " +
                   instanceWith(TextureIntInterface::kInterfaceID);
        default:
            return "a number up to 3.4e38 or " + instanceWith(TextureFloatInterface::kInterfaceID);
    }
}

bool isReference(const Json& json) {
    return json.is_string() || json.is_null();
}

bool areReferences(const Json& array) {
    for (const Json& item : array) {
        if (!isReference(item))
            return false;
    }
    return !array.empty();
}

bool toFloat(const Json& json, float& out) {
    if (!json.is_number())
        return false;
    const double value = json.get<double>();
    out = static_cast<float>(value);
    return std::fabs(value) <= static_cast<double>(std::numeric_limits<float>::max());
}

/// Reads the value of one parameter.
class ValueReader {
public:
    ValueReader(const Scene& scene_, const std::string& directory_, const ParameterDesc& desc_,
                SceneValue& out_, SceneError& error_)
        : scene(scene_), directory(directory_), desc(desc_), out(out_), error(error_) {}

    bool read(const Json& json, const std::string& pointer) {
        if (desc.type == ParameterType::Other && !desc.isList()) {
            error = {pointer, "a parameter of this kind can't be set in a scene"};
            return false;
        }
        if (desc.isList())
            return json.is_array() ? readList(json, pointer)
                                   : unexpected(json, pointer, "an array of: ");
        return json.is_object() ? readKeyframes(json, pointer) : readSingle(json, pointer);
    }

private:
    template <class Parameter, class T>
    bool makeSingle(const Json& json, const std::string& pointer) {
        T value{};
        if (!readItem(json, pointer, value))
            return false;
        out.parameter = std::make_unique<Parameter>(desc.name, value);
        return true;
    }

    template <class T>
    bool makeSingle(const Json& json, const std::string& pointer) {
        return makeSingle<SingleParameter<T>, T>(json, pointer);
    }

    template <class T>
    bool makeList(const Json& json, const std::string& pointer) {
        std::vector<T> values(json.size());
        for (std::size_t i = 0; i < json.size(); ++i) {
            if (!readItem(json[i], pointerTo(pointer, i), values[i]))
                return false;
        }
        out.parameter = std::make_unique<ListParameter<T>>(desc.name, values);
        return true;
    }

    bool makePairs(const Json& json, const std::string& pointer) {
        std::vector<NumberAndPlugin> pairs(json.size());
        for (std::size_t i = 0; i < json.size(); ++i) {
            const std::string place = pointerTo(pointer, i);
            if (!json[i].is_array() || json[i].size() != 2 || !isReference(json[i][1]))
                return unexpected(json[i], place);
            if (!readItem(json[i][0], pointerTo(place, 0), pairs[i].number) ||
                !readItem(json[i][1], pointerTo(place, 1), pairs[i].plugin))
                return false;
        }
        out.parameter = std::make_unique<PairListParameter>(desc.name, pairs);
        return true;
    }

    template <class T>
    bool makeKeyframes(const std::vector<double>& times, const Json& values,
                       const std::string& pointer) {
        std::vector<Keyframe<T>> keyframes(times.size());
        for (std::size_t i = 0; i < times.size(); ++i) {
            keyframes[i].time = times[i];
            if (!readItem(values[i], pointerTo(pointer, i), keyframes[i].value))
                return false;
        }
        out.parameter = std::make_unique<KeyframeParameter<T>>(desc.name, keyframes);
        return true;
    }

    bool readSingle(const Json& json, const std::string& pointer) {
        switch (desc.type) {
            case ParameterType::Bool:
            case ParameterType::Int:
                return makeSingle<int>(json, pointer);
            case ParameterType::Float:
                return makeSingle<float>(json, pointer);
            case ParameterType::Color:
                return makeSingle<ColorParameter, AColor>(json, pointer);
            case ParameterType::String:
                return makeSingle<const char*>(json, pointer);
            case ParameterType::Plugin:
                return makeSingle<PluginBase*>(json, pointer);
            default:
                break;
        }
        if (isReference(json))
            return makeSingle<PluginBase*>(json, pointer);
        if (desc.type == ParameterType::Texture)
            return makeSingle<ColorParameter, AColor>(json, pointer);
        if (desc.type == ParameterType::TextureInt)
            return makeSingle<int>(json, pointer);
        return makeSingle<float>(json, pointer);
    }

    bool readList(const Json& json, const std::string& pointer) {
        switch (desc.type) {
            case ParameterType::Bool:
            case ParameterType::Int:
                return makeList<int>(json, pointer);
            case ParameterType::Float:
                return makeList<float>(json, pointer);
            case ParameterType::Color:
                return makeList<AColor>(json, pointer);
            case ParameterType::String:
                return makeList<const char*>(json, pointer);
            case ParameterType::Plugin:
                return desc.ofPairs ? makePairs(json, pointer)
                                    : makeList<PluginBase*>(json, pointer);
            case ParameterType::Texture:
                return makeList<Textured<AColor>>(json, pointer);
            case ParameterType::TextureInt:
                return areReferences(json) ? makeList<PluginBase*>(json, pointer)
                                           : makeList<int>(json, pointer);
            default:
                return makeList<Textured<float>>(json, pointer);
        }
    }

    bool readKeyframes(const Json& json, const std::string& pointer) {
        const bool whole = json.size() == 2 && json.contains("times") && json.contains("values") &&
                           json["times"].is_array() && json["values"].is_array();
        if (!whole || desc.type == ParameterType::String)
            return unexpected(json, pointer,
                              whole ? "" : "{\"times\": [...], \"values\": [...]} or ");
        const Json& values = json["values"];
        std::vector<double> times;
        if (!readTimes(json["times"], pointerTo(pointer, "times"), times))
            return false;
        if (times.size() != values.size()) {
            error = {pointerTo(pointer, "values"),
                     "expected as many values as there are times, " + std::to_string(times.size())};
            return false;
        }
        const std::string place = pointerTo(pointer, "values");
        if (desc.type == ParameterType::Plugin || (isTexture(desc) && areReferences(values)))
            return makeKeyframes<PluginBase*>(times, values, place);
        if (desc.type == ParameterType::Color || desc.type == ParameterType::Texture)
            return makeKeyframes<AColor>(times, values, place);
        if (desc.type == ParameterType::Float || desc.type == ParameterType::TextureFloat)
            return makeKeyframes<float>(times, values, place);
        return makeKeyframes<int>(times, values, place);
    }

    bool readTimes(const Json& json, const std::string& pointer, std::vector<double>& times) {
        for (std::size_t i = 0; i < json.size(); ++i) {
            const bool rises =
                json[i].is_number() && (i == 0 || json[i].get<double>() > times.back());
            if (!rises) {
                error = {pointerTo(pointer, i), "expected a number above the one before it"};
                return false;
            }
            times.push_back(json[i].get<double>());
        }
        if (times.empty())
            error = {pointer, "expected at least one time"};
        return !times.empty();
    }

    bool readItem(const Json& json, const std::string& pointer, int& value) {
        if (desc.type == ParameterType::Bool) {
            value = json.is_boolean() && json.get<bool>();
            return json.is_boolean() || unexpected(json, pointer);
        }
        return toWholeNumber(json, value) || unexpected(json, pointer);
    }

    bool readItem(const Json& json, const std::string& pointer, float& value) {
        return toFloat(json, value) || unexpected(json, pointer);
    }

    bool readItem(const Json& json, const std::string& pointer, AColor& value) {
        float channels[4] = {0, 0, 0, 1};
        if (!json.is_array() || json.size() < 3 || json.size() > 4)
            return unexpected(json, pointer);
        for (std::size_t i = 0; i < json.size(); ++i) {
            if (!toFloat(json[i], channels[i]))
                return unexpected(json, pointer);
        }
        value = {Color(channels[0], channels[1], channels[2]), channels[3]};
        return true;
    }

    bool readItem(const Json& json, const std::string& pointer, PluginBase*& value) {
        if (json.is_null())
            return true;
        if (!json.is_string())
            return unexpected(json, pointer);
        Plugin* const plugin =
            readSceneReference(scene, neededInterface(desc), json, pointer, error);
        if (!plugin)
            return false;
        out.references.push_back(plugin);
        value = plugin;
        return true;
    }

    bool readItem(const Json& json, const std::string& pointer, const char*& value) {
        if (!json.is_string())
            return unexpected(json, pointer);
        std::string text = json.get<std::string>();
        const bool isFile = desc.guide && desc.guide == std::string_view(kFileGuide);
        if (isFile && !text.empty()) {
            if (!expandName(text, pointer))
                return false;
            text = (std::filesystem::path(directory) / text).string();
            if (std::string reason; !mayRead(text, reason)) {
                error = {pointer, "\"" + text + "\": " + reason};
                return false;
            }
            out.files.push_back(text);
        }
        value = texts.emplace_back(std::move(text)).c_str();
        return true;
    }

    /// Replaces the variables of the environment in a file's name. What isn't set is refused: the
    /// name without it would be another file's.
    bool expandName(std::string& text, const std::string& pointer) {
        CharString name = text.c_str();
        const CharString unset = findUnsetVariable(name);
        if (unset.c_str()) {
            error = {pointer, "\"" + text + "\": the variable " + unset.c_str() +
                                  " of the environment is not set"};
            return false;
        }
        expandEnvironment(name);
        text = name.c_str();
        return true;
    }

    template <class T>
    bool readItem(const Json& json, const std::string& pointer, Textured<T>& value) {
        return isReference(json) ? readItem(json, pointer, value.texture)
                                 : readItem(json, pointer, value.value);
    }

    bool unexpected(const Json& json, const std::string& pointer, const char* form = "") {
        error = {pointer, "expected " + (form + expectedItem(desc)) + ", not " + shortText(json)};
        return false;
    }

    const Scene& scene;
    const std::string& directory;
    const ParameterDesc& desc;
    SceneValue& out;
    SceneError& error;
    std::deque<std::string> texts;  // until the parameter has copied them
};

}  // namespace

bool readSceneValue(const Scene& scene, const std::string& directory, const ParameterDesc& desc,
                    const Json& json, const std::string& pointer, SceneValue& out,
                    SceneError& error) {
    return ValueReader(scene, directory, desc, out, error).read(json, pointer);
}

Plugin* readSceneReference(const Scene& scene, u64 interfaceID, const Json& json,
                           const std::string& pointer, SceneError& error) {
    const std::string name = json.is_string() ? json.get<std::string>() : std::string();
    Plugin* const plugin = scene.findPlugin(name);
    if (plugin && (interfaceID == 0 || plugin->getInterface(interfaceID)))
        return plugin;
    std::vector<std::string_view> fitting;
    for (Plugin* const other : scene.getPlugins()) {
        if (interfaceID == 0 || other->getInterface(interfaceID))
            fitting.push_back(other->getPluginName());
    }
    std::string text = "expected " + instanceWith(interfaceID);
    if (plugin)
        text += "; \"" + name + "\" is a " + plugin->getPluginTypeName();
    else if (json.is_string())
        text += "; there is no \"" + name + "\"" + knownNames(name, fitting);
    else
        text += ", not " + shortText(json);
    error = {pointer, text};
    return nullptr;
}

}  // namespace Tarnkit
