#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "fake_host/call_log.h"
#include "fake_host/fake_renderer.h"
#include "fake_host/heap_probe.h"
#include "fake_host/materials_module.h"
#include "fake_host/print.h"
#include "fake_host/recorders.h"
#include "frame/material.h"
#include "host/plugin_parameters.h"

/// The value or the list of values of a parameter, in the forms of host/plugin_parameters.h.
class ParamValue {
public:
    ParamValue(int value) : ParamValue(single(value)) {}
    ParamValue(bool value) : ParamValue(value ? 1 : 0) {}
    ParamValue(float value) : ParamValue(single(value)) {}
    ParamValue(AColor value) : ParamValue(single(value)) {}
    ParamValue(Color value) : ParamValue(AColor{value, 1.0f}) {}
    ParamValue(const char* value) : ParamValue(single(value)) {}
    ParamValue(PluginBase* value) : ParamValue(single(value)) {}
    ParamValue(std::vector<NumberAndPlugin> pairs)
        : ParamValue(Make([pairs](const char* name) {
              return std::make_unique<PairListParameter>(name, pairs);
          })) {}
    template <class T>
    ParamValue(std::vector<T> values)
        : ParamValue(Make([values](const char* name) {
              return std::make_unique<ListParameter<T>>(name, values);
          })) {}

    std::unique_ptr<PelkPluginParameter> make(const char* name) const { return makeNamed(name); }

private:
    using Make = std::function<std::unique_ptr<PelkPluginParameter>(const char* name)>;

    explicit ParamValue(Make make) : makeNamed(std::move(make)) {}
    template <class T>
    static Make single(T value) {
        return
            [value](const char* name) { return std::make_unique<SingleParameter<T>>(name, value); };
    }

    Make makeNamed;
};

struct Param {
    const char* name;
    ParamValue value;
};

/// A host without a scene around materials of the built module. It drives their life cycle, and
/// ends it with the test: samplers and spawned contexts that are still out then fail the test.
class FakeHost : public testing::Test {
public:
    static constexpr int kMaxThreads = 16;

    FakeHost();
    ~FakeHost() override;

protected:
    void TearDown() override;

    FakeRenderer renderer;
    CallLog& log = callLog();

    /// A new instance of a plug-in of the module.
    PelkMaterial& make(const char* pluginName, const char* instanceName = "instance");

    /// Sets parameters. A name that the plug-in does not know fails the test.
    void setParams(PelkMaterial& material, std::initializer_list<Param> params);
    /// Ends the material's frame, if it is in one, and begins one with these parameters; before
    /// the first frame, and after endRender, the render too. The call log starts anew.
    void startFrame(PelkMaterial& material, std::initializer_list<Param> params = {});
    void endRender(PelkMaterial& material);

    /// A hit of a camera ray, straight down on the front of a plane, on the thread of that index.
    /// The results hold values that no material leaves there.
    FakeContext hit(int threadIndex = 0) { return FakeContext(renderer, threadData[threadIndex]); }

    /// The section that the material writes for `owner` and the name "name", with
    /// its answer in front: "1 diffuse\n".
    std::string describe(PelkMaterial& material, const char* section);
    int owner = 0;  ///< its address is the owner of descriptions

private:
    struct Instance {
        PelkMaterial* material;
        bool inRender = false, inFrame = false;
    };
    Instance& find(PelkMaterial& material);
    void endFrame(Instance& instance);

    MaterialsModule module;
    ThreadData threadData[kMaxThreads];
    std::vector<Instance> instances;
    std::vector<std::unique_ptr<PelkPluginParameter>> parameters;
};
