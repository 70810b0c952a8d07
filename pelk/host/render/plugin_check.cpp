#include "pelk/host/render/plugin_check.h"

#include "pelk/base/text_or.h"
#include "pelk/host/scene/parameter_range.h"

namespace Tarnkit {

namespace {

using Findings = std::vector<std::string>;

std::string quoted(const char* name) {
    return std::string("\"") + textOrEmpty(name) + "\"";
}

void checkFields(const PelkParameterList& list, Findings& findings) {
    for (int i = 0; i < list.getNumBoundFields(); ++i) {
        const BoundField field = list.getBoundField(i);
        if (!field.desc)
            findings.push_back("a field is bound to " + quoted(field.name) +
                               ", which is no parameter of its kind");
        else if (!field.isOfType)
            findings.push_back("the field for " + quoted(field.name) + " is of another type");
    }
}

void checkDefaults(const PelkParameterList& list, Findings& findings) {
    const PelkParameterListDesc* const parameters = list.getKindParameters();
    for (int i = 0; parameters && i < parameters->getNumParameters(); ++i) {
        const ParameterDesc& parameter = parameters->getParameter(i);
        if (!isDefaultInRange(parameter))
            findings.push_back("the default of " + quoted(parameter.name) +
                               " lies outside of its own guide, " + parameter.guide);
    }
}

}  // namespace

PluginCheck::PluginCheck(const PelkPluginInterface& checked)
    : plugin(&checked), refreshesBefore(checked.getParameterList().getNumRefreshes()) {}

std::vector<std::string> PluginCheck::afterFrameBegin() const {
    Findings findings;
    const PelkParameterList& list = plugin->getParameterList();
    checkFields(list, findings);
    checkDefaults(list, findings);
    // Without fields there is nothing that it would have missed.
    if (list.getNumBoundFields() > 0 && list.getNumRefreshes() == refreshesBefore)
        findings.push_back("frameBegin doesn't call that of its base, so no value arrives");
    return findings;
}

std::vector<std::string> PluginCheck::afterHits() const {
    const SamplerCount* const count = plugin->getSamplerCount();
    const int out = count ? count->getNumOut() : 0;
    if (out == 0)
        return {};
    return {std::to_string(out) + " of its samplers were never given back"};
}

}  // namespace Tarnkit
