#pragma once

#include <string>
#include <vector>

#include "pelk/contract/pelk_plugin.h"

namespace Tarnkit {

/// What an instance does against the rules that hosts rely on, without any of it keeping a render
/// from going on: for those who write plug-ins. Follows one instance through one frame, on the
/// thread that drives its life cycle:
///
///     PluginCheck check(plugin);
///     plugin.frameBegin(renderer);
///     findings = check.afterFrameBegin();
///     // ... hits
///     findings = check.afterHits();
///     plugin.frameEnd(renderer);
///
/// Findings are clauses such as "the field for \"tint\" is of another type".
class PluginCheck {
public:
    /// Comes before frameBegin. Keeps the instance, which must outlive this.
    explicit PluginCheck(const PelkPluginInterface& plugin);

    /// Fields bound to what the kind doesn't have or of another type, defaults that the kind's own
    /// guides rule out, and a frameBegin that left the fields as they were.
    std::vector<std::string> afterFrameBegin() const;
    /// Samplers that nobody has given back, as far as the plug-in counts them.
    std::vector<std::string> afterHits() const;

private:
    const PelkPluginInterface* plugin;
    u64 refreshesBefore;
};

}  // namespace Tarnkit
