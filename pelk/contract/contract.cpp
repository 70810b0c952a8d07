// The destructors of the contract's classes stand here, so that each class has its table of
// operations and its type record in one library only.
#include "pelk/contract/renderer.h"
#include "pelk/contract/samplers.h"

namespace Tarnkit {

StringTable::~StringTable() = default;
MessageLog::~MessageLog() = default;
PelkCamera::~PelkCamera() = default;
LightManager::~LightManager() = default;
DefaultGlobalLightManager::~DefaultGlobalLightManager() = default;
WorldTransform::~WorldTransform() = default;
PelkRenderer::~PelkRenderer() = default;
BRDFSampler::~BRDFSampler() = default;
BSDFSampler::~BSDFSampler() = default;

}  // namespace Tarnkit
