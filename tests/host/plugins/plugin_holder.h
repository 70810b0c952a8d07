#pragma once

#include <gmock/gmock.h>

#include <initializer_list>
#include <memory>
#include <type_traits>
#include <variant>
#include <vector>

#include "pelk/contract/desc_of.h"
#include "pelk/contract/plugin_parameters.h"
#include "pelk/host/trace/host_renderer.h"

namespace Tarnkit {

/// A plug-in of the host without a scene around it, and the parameters that a test sets.
template <class T>
class PluginHolder {
public:
    struct Setting {
        const char* name;
        std::variant<int, float, Color, const char*, PluginBase*> value;
    };

    explicit PluginHolder(std::initializer_list<Setting> settings = {}) {
        for (const Setting& s : settings)
            std::visit([&](const auto& value) { set(s.name, value); }, s.value);
    }
    template <class V>
    void set(const char* name, V value) {
        using Stored = std::conditional_t<std::is_convertible_v<V, PluginBase*>, PluginBase*, V>;
        parameters.push_back(std::make_unique<SingleParameter<Stored>>(name, value));
        plugin.setParameter(parameters.back().get());
    }
    void set(const char* name, Color value) { set(name, AColor{value, 1.0f}); }
    void startFrame() { plugin.frameBegin(renderer); }
    /// Begins a frame, for which a light or camera is to accept its parameters.
    template <class... Where>
    void prepare(Where... where) {
        std::string error;
        startFrame();
        EXPECT_TRUE(plugin.prepare(where..., error)) << error;
    }

    /// The mesh of a geometry in a new frame, in world space or that of the object.
    auto build(bool placed = true) {
        Mesh mesh;
        std::string error;
        startFrame();
        EXPECT_TRUE(plugin.buildShape(mesh, error)) << error;
        if (placed)
            plugin.findPlace(error)->apply(mesh);
        return mesh;
    }

    HostRenderer renderer;
    DescOf<T> desc;
    T plugin{&desc};
    std::vector<std::unique_ptr<PelkPluginParameter>> parameters;
};

}  // namespace Tarnkit
