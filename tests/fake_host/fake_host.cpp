#include "fake_host/fake_host.h"

#include <algorithm>
#include <stdexcept>

FakeHost::FakeHost() {
    log = CallLog();
    renderer.sequenceData.numThreads = kMaxThreads;
    for (int i = 0; i < kMaxThreads; ++i)
        threadData[i].threadIndex = i;
}

FakeHost::~FakeHost() = default;

// Here and not in the destructor: plug-ins of the test stand in members of its class, which are
// gone by then.
void FakeHost::TearDown() {
    for (Instance& instance : instances) {
        endRender(*instance.material);
        PluginDesc* desc = instance.material->getPluginDesc();
        desc->deletePlugin(instance.material);
    }
}

PelkMaterial& FakeHost::make(const char* pluginName, const char* instanceName) {
    PelkPluginDesc* desc = module.find(pluginName);
    if (!desc)
        throw std::runtime_error(std::string("no plug-in of the name ") + pluginName);
    auto* material = static_cast<PelkMaterial*>(desc->newPlugin(nullptr));
    material->setPluginName(instanceName);
    instances.push_back({material});
    return *material;
}

FakeHost::Instance& FakeHost::find(PelkMaterial& material) {
    return *std::find_if(instances.begin(), instances.end(),
                         [&](const Instance& i) { return i.material == &material; });
}

void FakeHost::setParams(PelkMaterial& material, std::initializer_list<Param> params) {
    auto* desc = static_cast<PelkPluginDesc*>(material.getPluginDesc());
    for (const Param& param : params) {
        EXPECT_TRUE(desc->getParameterListDesc()->findParameter(param.name)) << param.name;
        parameters.push_back(param.value.make(param.name));
        material.setParameter(parameters.back().get());
    }
}

void FakeHost::startFrame(PelkMaterial& material, std::initializer_list<Param> params) {
    Instance& instance = find(material);
    endFrame(instance);
    setParams(material, params);
    if (!instance.inRender)
        material.renderBegin(renderer);
    instance.inRender = true;
    material.frameBegin(renderer);
    instance.inFrame = true;
    log.clear();
}

void FakeHost::endFrame(Instance& instance) {
    if (std::exchange(instance.inFrame, false))
        instance.material->frameEnd(renderer);
}

void FakeHost::endRender(PelkMaterial& material) {
    Instance& instance = find(material);
    endFrame(instance);
    if (std::exchange(instance.inRender, false))
        material.renderEnd(renderer);
}

std::string FakeHost::describe(PelkMaterial& material, const char* section) {
    auto* face = findInterface<RTMtlInterface>(&material, EXT_RTMTL);
    if (!face)
        return "no text";
    ShaderSource source;
    OCLData data{.renderer = &renderer};
    const int answer = face->getMaterialSource(&owner, "name", section, source, data);
    return std::to_string(answer) + " " + source.c_str();
}
