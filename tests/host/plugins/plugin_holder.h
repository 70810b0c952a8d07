#pragma once

#include <memory>
#include <type_traits>
#include <vector>

#include "pelk/contract/desc_of.h"
#include "pelk/contract/plugin_parameters.h"
#include "pelk/host/trace/host_renderer.h"

namespace Tarnkit {

/// A plug-in of the host without a scene around it, and the parameters that a test sets.
template <class T>
class PluginHolder {
public:
    template <class V>
    void set(const char* name, V value) {
        using Stored = std::conditional_t<std::is_convertible_v<V, PluginBase*>, PluginBase*, V>;
        parameters.push_back(std::make_unique<SingleParameter<Stored>>(name, value));
        plugin.setParameter(parameters.back().get());
    }
    void set(const char* name, Color value) { set(name, AColor{value, 1.0f}); }
    void startFrame() { plugin.frameBegin(renderer); }

    HostRenderer renderer;
    DescOf<T> desc;
    T plugin{&desc};
    std::vector<std::unique_ptr<PelkPluginParameter>> parameters;
};

}  // namespace Tarnkit
