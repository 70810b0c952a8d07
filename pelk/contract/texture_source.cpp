#include "pelk/contract/texture.h"

namespace Tarnkit {

int RTTexInterface::getRTTexSource(PluginInterface* texture, const char* type, const char* name,
                                   const char* kind, ShaderSource& source, OCLData& data) {
    PluginBase* plugin = texture ? texture->getPlugin() : nullptr;
    auto* writer = findInterface<RTTexInterface>(plugin);
    return writer ? writer->writeTexSource(type, name, kind, source, data) : 0;
}

}  // namespace Tarnkit
