#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "fake_host/call_log.h"
#include "fake_host/fake_renderer.h"
#include "fake_host/materials_module.h"
#include "fake_host/print.h"
#include "fake_host/recorders.h"
#include "pelk/contract/material.h"
#include "pelk/contract/plugin_parameters.h"

/// A parameter with its value or its list of values, in the forms of host/plugin_parameters.h.
struct Param {
    Param(const char* name, int value) : parameter(single(name, value)) {}
    Param(const char* name, bool value) : Param(name, value ? 1 : 0) {}
    Param(const char* name, float value) : parameter(single(name, value)) {}
    Param(const char* name, Color value) : parameter(single(name, AColor{value, 1.0f})) {}
    Param(const char* name, PluginBase* value) : parameter(single(name, value)) {}
    Param(const char* name, const std::vector<NumberAndPlugin>& pairs)
        : parameter(std::make_shared<PairListParameter>(name, pairs)) {}
    template <class T>
    Param(const char* name, const std::vector<T>& values)
        : parameter(std::make_shared<ListParameter<T>>(name, values)) {}

    std::shared_ptr<PelkPluginParameter> parameter;

private:
    template <class T>
    static std::shared_ptr<SingleParameter<T>> single(const char* name, const T& value) {
        return std::make_shared<SingleParameter<T>>(name, value);
    }
};

/// A host without a scene around materials of the built module. It drives their life cycle, and
/// ends it with the test: samplers and spawned contexts that are still out then fail the test.
class FakeHost : public testing::Test {
protected:
    FakeHost();
    void TearDown() override;

    FakeRenderer renderer;
    CallLog& log = callLog();

    /// The descriptors of all plug-ins of the module. What holds for every material is tested over
    /// them, so that a new one is in the test without being named there.
    std::vector<PelkPluginDesc*> kinds() const { return module.kinds(); }

    /// A new instance of a plug-in of the module.
    PelkMaterial& make(const char* pluginName, const char* instanceName = "instance");

    /// Sets parameters. A name that the plug-in does not know fails the test.
    void setParam(PelkMaterial& material, const Param& param);
    void setParams(PelkMaterial& material, std::initializer_list<Param> params);
    /// Ends the material's frame, if it is in one, and begins one with these parameters; before
    /// the first frame, and after endRender, the render too. The call log starts anew.
    void startFrame(PelkMaterial& material, std::initializer_list<Param> params = {});
    void endRender(PelkMaterial& material);

    /// A hit of a camera ray, straight down on the front of a plane, on the thread of that index.
    /// The results hold values that no material leaves there.
    FakeContext hit(int threadIndex = 0) { return FakeContext(renderer, threadData[threadIndex]); }

    /// The section that the material writes, with its answer in front: "1 diffuse\n".
    std::string describe(PelkMaterial& material, const char* section);

private:
    enum class Stage { Idle, InRender, InFrame };

    MaterialsModule module;
    ThreadData threadData[16];
    std::map<PelkMaterial*, Stage> stages;
    std::vector<Param> paramsSet;  ///< materials read them until they go
};

/// A fake host with one hit on its first thread, and with what may stand around a material there.
class OneHit : public FakeHost {
protected:
    FakeContext context = hit();
    RecordingMaterial base;
    RecordingFragment fragment;
    FakeTexture texture;
    FakeVolume glass;
};
