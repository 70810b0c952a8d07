#include "pelk/materials/matte/exclude_table.h"

#include <algorithm>

#include "pelk/base/text_or.h"
#include "pelk/contract/shading.h"

namespace {

void reportNoGeometry(PluginBase* object, MessageLog* log) {
    if (!log)
        return;
    const bool isPlugin = findInterface<PelkPluginInterface>(object) != nullptr;
    if (auto* plugin = isPlugin ? dynamic_cast<Plugin*>(object) : nullptr) {
        const char* type = plugin->getPluginTypeName();
        log->warning("plugin %s of type %s cannot be in the exclude list (does not have geometry)",
                     plugin->getPluginNameOr(""), textOrEmpty(type));
    } else {
        log->warning("plugin cannot be in the exclude list (does not have geometry)");
    }
}

}  // namespace

void fillExcludeTable(PelkPluginParameter* parameter, GrowTable<int>& table, MessageLog* log) {
    table.clear();
    if (!parameter)
        return;
    const int count = parameter->getCount(0.0);
    for (int i = 0; i < count; ++i) {
        PluginBase* object = parameter->getObject(i, 0.0);
        if (auto* geometry = findInterface<GeomObjectInterface>(object)) {
            PelkContext blank;
            table.append(geometry->getRenderID(blank));
        } else {
            reportNoGeometry(object, log);
        }
    }
    std::sort(table.begin(), table.end());
}
