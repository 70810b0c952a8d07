#include "pelk/host/scene/scene_reader.h"

#include <algorithm>
#include <cassert>
#include <filesystem>
#include <iterator>
#include <map>

#include "pelk/contract/texture.h"
#include "pelk/host/plugins/file_guide.h"
#include "pelk/host/scene/failure_text.h"
#include "pelk/host/scene/host_session.h"
#include "pelk/host/scene/parameter_range.h"
#include "pelk/host/scene/scene_loops.h"
#include "pelk/host/scene/scene_settings.h"
#include "pelk/host/scene/scene_values.h"
#include "pelk/host/trace/interfaces.h"
#include "pelk/platform/file.h"
#include "pelk/platform/input_file.h"
#include "pelk/support/spelling.h"

namespace Tarnkit {

namespace {

/// The entry of the settings, and the name by which overrides reach them.
constexpr const char* kSettingsEntry = "settings";

/// What a scene takes in memory is a multiple of its text.
constexpr std::uint64_t kMostSceneBytes = std::uint64_t{1} << 28;

/// Reads a plain file, or one of the streams that the program was started with.
bool readText(const std::string& name, std::string& text, std::string& reason, bool& systemFault) {
    if (platform::isOpenStream(name))
        return platform::readOpenStream(name, kMostSceneBytes, text, reason);
    platform::InputFile file(name);
    if (file.getSize() <= kMostSceneBytes && file.readAll(text))
        return true;
    systemFault = file.isSystemFault();
    reason = file.getSize() > kMostSceneBytes
                 ? "it has more than " + std::to_string(kMostSceneBytes) + " bytes"
                 : file.getReason();
    return false;
}

/// One reading of one file. Every step returns false after a failure, with `error` filled.
class SceneReader {
public:
    SceneReader(HostSession& session_, const std::string& file_, Scene& scene_)
        : session(session_),
          file(file_),
          directory(std::filesystem::path(platform::nativePath(file_)).parent_path().string()),
          scene(scene_) {}

    bool read(std::span<const std::string> overrides) {
        return parseFile() && checkTop() && makeInstances() && applyOverrides(overrides) &&
               readSettings() && setParameters() && noteSource() && checkLoops() && findCamera() &&
               findBackplate() && openFiles();
    }

    std::string error;
    bool systemFault = false;

private:
    /// What the file asks of one instance.
    struct Instance {
        Plugin* plugin;
        const PluginKind* kind;
        std::string pointer;
        Json* values;
    };

    bool fail(const std::string& place, const std::string& text) {
        error = file + ": " + (place.empty() ? "" : place + ": ") + text;
        return false;
    }

    /// A failure at a pointer, or at the override that put the value there.
    bool fail(const SceneError& sceneError) {
        for (const auto& [pointer, text] : overridden) {
            if (sceneError.pointer == pointer || sceneError.pointer.starts_with(pointer + "/"))
                return fail("--set " + text, sceneError.text);
        }
        return fail(sceneError.pointer, sceneError.text);
    }

    bool parseFile();
    bool checkTop();
    bool makeInstances();
    bool makeInstance(const std::string& name, Json& values);
    bool failAtType(const std::string& type, const std::string& pointer);
    bool applyOverrides(std::span<const std::string> overrides);
    bool applyOverride(const std::string& text);
    void overrideSetting(const std::string& name, const std::string& valueText);
    bool readSettings();
    bool setParameters();
    bool setParameter(const Instance& instance, const std::string& name, const Json& value);
    std::string unknownParameter(const PluginKind& kind, std::string_view name) const;
    bool noteSource();
    bool checkLoops();
    bool findCamera();
    bool findBackplate();
    bool openFiles();

    HostSession& session;
    const std::string& file;
    const std::string directory;
    Scene& scene;
    Json document;
    std::vector<Instance> instances;
    std::map<std::string, std::string> overridden;  // pointer to the text of the override
    SceneReferences references;
};

bool SceneReader::parseFile() {
    std::string text, reason;
    if (!readText(file, text, reason, systemFault))
        return fail("", "the scene can't be read: " + reason);
    if (parseSceneJson(text, document, reason))
        return true;
    error = file + ":" + (reason.starts_with('/') ? " " : "") + reason;
    return false;
}

bool SceneReader::checkTop() {
    static constexpr std::string_view kKeys[] = {kSettingsEntry, "plugins", "$schema"};
    if (!document.is_object())
        return fail("", "expected an object with \"plugins\" and \"settings\" at the top");
    for (const auto& [key, value] : document.items()) {
        if (std::find(std::begin(kKeys), std::end(kKeys), key) == std::end(kKeys))
            return fail(pointerTo("", key), "there is no such entry" + knownNames(key, kKeys));
    }
    if (!document.contains("plugins") || !document["plugins"].is_object())
        return fail("/plugins", "expected an object of plug-ins by instance name");
    return true;
}

bool SceneReader::makeInstances() {
    for (auto& [name, values] : document["plugins"].items()) {
        if (!makeInstance(name, values))
            return false;
    }
    return true;
}

bool SceneReader::makeInstance(const std::string& name, Json& values) {
    const std::string pointer = pointerTo("/plugins", name);
    if (name.empty())
        return fail(pointer, "expected a name for the instance");
    if (!values.is_object())
        return fail(pointer,
                    "expected an object with \"type\" and parameters, not " + shortText(values));
    if (!values.contains("type") || !values["type"].is_string())
        return fail(pointerTo(pointer, "type"), "expected the name of a plug-in");
    const std::string type = values["type"].get<std::string>();
    const PluginKind* const kind = session.findKind(type);
    if (!kind)
        return failAtType(type, pointerTo(pointer, "type"));
    Plugin* plugin = nullptr;
    std::string reason = "it gave none";
    try {
        plugin = scene.addPlugin(name, kind->getName());
    } catch (...) {
        reason = failureText();
    }
    if (!plugin)
        return fail(pointer, "no instance of the plug-in \"" + type + "\": " + reason);
    instances.push_back({plugin, kind, pointer, &values});
    return true;
}

bool SceneReader::failAtType(const std::string& type, const std::string& pointer) {
    return fail(pointer, "there is no plug-in \"" + type + "\"" +
                             knownNames(type, session.getKindNames()) + session.getRejectedText());
}

bool SceneReader::applyOverrides(std::span<const std::string> overrides) {
    return std::all_of(overrides.begin(), overrides.end(),
                       [&](const std::string& text) { return applyOverride(text); });
}

bool SceneReader::applyOverride(const std::string& text) {
    const std::string place = "--set " + text;
    const std::size_t equals = text.find('=');
    // Names of instances may hold dots, those of parameters don't.
    const std::size_t dot = equals == std::string::npos ? equals : text.rfind('.', equals);
    if (dot == std::string::npos)
        return fail(place, "expected INSTANCE.PARAMETER=VALUE");
    const std::string name = text.substr(0, dot);
    const std::string parameter = text.substr(dot + 1, equals - dot - 1);
    const std::string valueText = text.substr(equals + 1);

    const std::vector<std::string_view> names = scene.getNames();
    assert(names.size() == instances.size());  // both in the order of the file
    const auto found = std::find(names.begin(), names.end(), name);
    if (found == names.end() && name == kSettingsEntry) {
        overrideSetting(parameter, valueText);
        overridden[pointerTo(pointerTo("", kSettingsEntry), parameter)] = text;
        return true;
    }
    if (found == names.end())
        return fail(place, "there is no instance \"" + name + "\"" + knownNames(name, names));
    const Instance& instance = instances[static_cast<std::size_t>(found - names.begin())];
    const ParameterDesc* const desc = instance.kind->findParameter(parameter);
    if (!desc)
        return fail(place, unknownParameter(*instance.kind, parameter));

    Json value;
    std::string reason;
    const bool parsed = parseSceneJson(valueText, value, reason);
    // A text parameter takes what looks like a number too.
    const bool wantsText = desc->type == ParameterType::String && !desc->isList();
    if (!parsed || (wantsText && !value.is_string()))
        value = valueText;
    (*instance.values)[parameter] = std::move(value);
    overridden[pointerTo(instance.pointer, parameter)] = text;
    return true;
}

/// Puts a value among the settings of the file, to be read and checked with them. Settings that are
/// no object are left for the check to refuse.
void SceneReader::overrideSetting(const std::string& name, const std::string& valueText) {
    Json& settings = document[kSettingsEntry];
    if (settings.is_null())
        settings = Json::object();
    Json value;
    std::string reason;
    if (!parseSceneJson(valueText, value, reason))
        value = valueText;
    if (settings.is_object())
        settings[name] = std::move(value);
}

bool SceneReader::readSettings() {
    SceneError sceneError;
    return !document.contains(kSettingsEntry) ||
           readSceneSettings(document[kSettingsEntry], pointerTo("", kSettingsEntry),
                             scene.settings, sceneError) ||
           fail(sceneError);
}

bool SceneReader::setParameters() {
    for (const Instance& instance : instances) {
        for (const auto& [name, value] : instance.values->items()) {
            if (name != "type" && !setParameter(instance, name, value))
                return false;
        }
    }
    return true;
}

bool SceneReader::setParameter(const Instance& instance, const std::string& name,
                               const Json& value) {
    const std::string pointer = pointerTo(instance.pointer, name);
    const ParameterDesc* const desc = instance.kind->findParameter(name);
    if (!desc)
        return fail(pointer, unknownParameter(*instance.kind, name));
    SceneValue read;
    SceneError sceneError;
    if (!readSceneValue(scene, directory, *desc, value, pointer, read, sceneError))
        return fail(sceneError);
    // Other plug-ins take what lies outside of the range that a user interface offers.
    if (instance.kind->library.empty() && !checkRange(*desc, value, pointer, sceneError))
        return fail(sceneError);
    for (Plugin* const target : read.references)
        references.add(instance.plugin, name, target);
    scene.source.files.insert(scene.source.files.end(), read.files.begin(), read.files.end());
    scene.setParameter(instance.plugin, std::move(read.parameter));
    return true;
}

std::string SceneReader::unknownParameter(const PluginKind& kind, std::string_view name) const {
    std::vector<std::string_view> names;
    for (const ParameterDesc* parameter : kind.parameters)
        names.push_back(parameter->name);
    return std::string(kind.getName()) + " has no parameter \"" + std::string(name) + "\"" +
           knownNames(name, names);
}

bool SceneReader::noteSource() {
    // What is no UTF-8, as a file name in an override may be, is no reason to fail.
    scene.source.plugins = document["plugins"].dump(-1, ' ', false, Json::error_handler_t::replace);
    std::vector<std::string>& libraries = scene.source.libraries;
    for (const Instance& instance : instances) {
        const std::string& library = instance.kind->library;
        if (!library.empty() &&
            std::find(libraries.begin(), libraries.end(), library) == libraries.end())
            libraries.push_back(library);
    }
    return true;
}

bool SceneReader::checkLoops() {
    Plugin* culprit = nullptr;
    std::string text;
    return references.check(culprit, text) ||
           fail(pointerTo("/plugins", culprit->getPluginName()), text);
}

bool SceneReader::findCamera() {
    const std::string& name = scene.settings.camera;
    const std::vector<CameraInterface*> cameras = scene.collect<CameraInterface>();
    if (name.empty() && cameras.size() > 1)
        return fail("/settings/camera", "there are " + std::to_string(cameras.size()) +
                                            " cameras; expected the name of the one to use");
    if (name.empty()) {
        scene.camera = cameras.empty() ? nullptr : cameras.front();
        return true;
    }
    SceneError sceneError;
    Plugin* const plugin = readSceneReference(scene, CameraInterface::kInterfaceID, name,
                                              "/settings/camera", sceneError);
    scene.camera = findInterface<CameraInterface>(plugin);
    return plugin ? true : fail(sceneError);
}

bool SceneReader::findBackplate() {
    const std::string& name = scene.settings.backplate;
    if (name.empty())
        return true;
    SceneError sceneError;
    Plugin* const plugin = readSceneReference(scene, TextureInterface::kInterfaceID, name,
                                              "/settings/backplate", sceneError);
    scene.backplate = findInterface<TextureInterface>(plugin);
    return plugin ? true : fail(sceneError);
}

bool SceneReader::openFiles() {
    for (const Instance& instance : instances) {
        auto* const user = findInterface<FileUserInterface>(instance.plugin);
        std::string reason;
        if (user && !user->openFile(reason))
            return fail(SceneError{instance.pointer, reason});
    }
    return true;
}

}  // namespace

std::unique_ptr<Scene> readScene(HostSession& session, const std::string& file,
                                 std::span<const std::string> overrides, std::string& error,
                                 bool* systemFault) {
    auto scene = std::make_unique<Scene>(session);
    scene->file = file;
    SceneReader reader(session, file, *scene);
    if (reader.read(overrides))
        return scene;
    error = reader.error;
    if (systemFault)
        *systemFault = reader.systemFault;
    return nullptr;
}

}  // namespace Tarnkit
