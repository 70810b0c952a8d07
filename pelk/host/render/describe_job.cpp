#include "pelk/host/render/describe_job.h"

#include "pelk/contract/pelk_material.h"
#include "pelk/contract/shader_source.h"
#include "pelk/host/render/plugin_life_cycle.h"
#include "pelk/host/scene/failure_text.h"
#include "pelk/host/scene/scene.h"
#include "pelk/host/trace/host_renderer.h"

namespace Tarnkit {

DescribeResult describeMaterial(Scene& scene, RTMtlInterface& material, const char* section,
                                MessageLog* log) {
    DescribeResult result;
    try {
        HostRenderer renderer;
        renderer.sequenceData.log = log;
        renderer.sequenceData.numThreads = 1;
        renderer.frameData.frameTime = scene.settings.time;
        PluginLifeCycle plugins(scene, renderer);
        plugins.beginRender();
        plugins.beginFrame();
        ShaderSource source;
        OCLData data{&renderer};
        const ScopedCallNote note("getMaterialSource", static_cast<Plugin&>(*material.getPlugin()));
        result.handled = material.getMaterialSource(nullptr, "", section, source, data) != 0;
        result.text = source.c_str();
        result.ok = true;
    } catch (...) {
        result.error = failureText();
    }
    return result;
}

}  // namespace Tarnkit
