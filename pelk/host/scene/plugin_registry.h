#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "pelk/host/scene/failure_text.h"
#include "pelk/host/scene/host_session.h"
#include "pelk/support/plugin_manager_default.h"

namespace Tarnkit {

/// What the host is to the plug-in manager: descriptors register their parameters here, and
/// libraries that were refused are noted. Keeps the lists that the session shows.
class PluginRegistry final : public PelkPluginHost, public LibraryRefusedCallback {
public:
    void addPluginDesc(PluginDesc* desc) override { parameters[desc].clear(); }
    void removePluginDesc(PluginDesc* desc) override { parameters.erase(desc); }
    void addParameter(PluginDesc* desc, const ParameterDesc& parameter) override {
        parameters[desc].push_back(&parameter);
    }
    void refused(const char* path, const char* reason) override;

    /// Runs `call`, which calls into the library at `path`. What is thrown there must not end the
    /// program: it becomes an entry of `rejected`, whose reason starts with `what`.
    template <class Function>
    void guard(const std::string& path, const std::string& what, Function call) {
        try {
            call();
        } catch (...) {
            refused(path.c_str(), (what + failureText()).c_str());
        }
    }

    /// Lists anew what the manager knows, after libraries were loaded. A plug-in can be used if the
    /// manager finds it by its name; of each other one the lists say what stands in its way.
    void listKinds(DefaultPluginManager& plugins);

    std::vector<RejectedLibrary> rejected;
    std::vector<ShadowedPlugin> shadowed;
    std::vector<std::unique_ptr<PluginKind>> kinds;

private:
    /// A descriptor that a library shows.
    struct Shown {
        PluginDesc* desc;
        std::string path, libraryName;
    };

    void collect(PluginLibDesc& library, const std::string& path);
    void addKind(const Shown& plugin, DefaultPluginManager& plugins);
    const Shown* findSameID(const Shown& plugin) const;
    std::string pathOf(const PluginDesc* desc) const;
    std::vector<const ParameterDesc*> usableParameters(const Shown& plugin);

    std::unordered_map<PluginDesc*, std::vector<const ParameterDesc*>> parameters;
    std::vector<Shown> shown;  // while kinds are listed
};

}  // namespace Tarnkit
