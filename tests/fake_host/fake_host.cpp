#include "fake_host/fake_host.h"

#include <algorithm>
#include <string_view>

FakeHost::FakeHost() {
    log = CallLog();
    renderer.sequenceData.numThreads = std::size(threadData);
    for (ThreadData& thread : threadData)
        thread.threadIndex = static_cast<int>(&thread - threadData);
}

// Here and not in the destructor: plug-ins of the test stand in members of its class, which are
// gone by then.
void FakeHost::TearDown() {
    for (const auto& [material, stage] : stages) {
        endRender(*material);
        material->getPluginDesc()->deletePlugin(material);
    }
    stages.clear();
    paramsSet.clear();
}

PelkMaterial& FakeHost::make(const char* pluginName, const char* instanceName) {
    const auto isIt = [name = std::string_view(pluginName)](PluginDesc* desc) {
        return desc->getName() == name;
    };
    const auto all = kinds();
    PluginDesc* const desc = all.at(std::ranges::find_if(all, isIt) - all.begin());
    auto* material = static_cast<PelkMaterial*>(desc->newPlugin(nullptr));
    stages[material] = Stage::Idle;
    material->setPluginName(instanceName);
    return *material;
}

void FakeHost::setParam(PelkMaterial& material, const Param& param) {
    auto* desc = static_cast<PelkPluginDesc*>(material.getPluginDesc());
    const char* name = param.parameter->getName();
    EXPECT_TRUE(desc->getParameterListDesc()->findParameter(name)) << name;
    paramsSet.push_back(param);
    material.setParameter(param.parameter.get());
}

void FakeHost::setParams(PelkMaterial& material, std::initializer_list<Param> params) {
    for (const Param& param : params)
        setParam(material, param);
}

void FakeHost::startFrame(PelkMaterial& material, std::initializer_list<Param> params) {
    Stage& stage = stages[&material];
    if (stage == Stage::InFrame)
        material.frameEnd(renderer);
    setParams(material, params);
    if (stage == Stage::Idle)
        material.renderBegin(renderer);
    material.frameBegin(renderer);
    stage = Stage::InFrame;
    log.clear();
}

void FakeHost::endRender(PelkMaterial& material) {
    Stage& stage = stages[&material];
    if (stage == Stage::InFrame)
        material.frameEnd(renderer);
    if (stage != Stage::Idle)
        material.renderEnd(renderer);
    stage = Stage::Idle;
}

std::string FakeHost::describe(PelkMaterial& material, const char* section) {
    auto* face = findInterface<RTMtlInterface>(&material);
    ShaderSource source;
    OCLData data{.renderer = &renderer};
    const int answer = face->getMaterialSource(this, "name", section, source, data);
    return std::to_string(answer) + " " + source.c_str();
}
