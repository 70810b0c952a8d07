#include "pelk/host/picture/origin_attributes.h"

namespace Tarnkit {

void addOriginAttributes(const PictureInfo& info, OIIO::ImageSpec& spec) {
    // All as texts, since PNG keeps no numbers.
    spec.attribute("Software", info.host + " " + info.version);
    spec.attribute("scene", info.scene);
    spec.attribute("samples", std::to_string(info.samples));
    spec.attribute("samples_least", std::to_string(info.samplesLeast));
    spec.attribute("samples_most", std::to_string(info.samplesMost));
    if (!info.ended.empty())
        spec.attribute("ended", info.ended);
    spec.attribute("seconds", std::to_string(info.seconds));
    spec.attribute("host", info.host);
    spec.attribute("version", info.version);
}

}  // namespace Tarnkit
