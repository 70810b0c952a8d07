// A plug-in that goes wrong in one of its operations. The environment variable CULPRIT says how, in
// which, and at each how many-th call: "throw shade 4", "fault frameEnd 1", "overflow eval 1000".

#include <atomic>
#include <cstdlib>
#include <sstream>

#include "pelk/base/exception_msg.h"
#include "pelk/contract/context.h"
#include "pelk/contract/desc_of.h"
#include "pelk/contract/pelk_material.h"
#include "pelk/contract/samplers.h"
#include "support/plugin_modules/listed_library.h"

using namespace Tarnkit;

namespace {

int overflow(int depth);
int (*volatile overflowAgain)(int) = overflow;

int overflow(int depth) {
    volatile char space[4096];
    space[0] = static_cast<char>(depth);
    return overflowAgain(depth + 1) + space[0];
}

int* volatile nowhere = reinterpret_cast<int*>(64);  // aligned, so that no sanitizer is faster

void act(const char* operation) {
    static std::string kind, at;
    static int every = [] {
        const char* const plan = std::getenv("CULPRIT");
        int number = 0;
        std::istringstream(plan ? plan : "") >> kind >> at >> number;
        return number;
    }();
    static std::atomic<int> calls{0};
    if (at != operation || ++calls % every != 0)
        return;
    if (kind == "throw")
        throw ExceptionMsg("no licence");
    kind == "overflow" ? overflowAgain(0) : * nowhere = 1;
}

struct Sampler final : BSDFSampler, BRDFSampler {
    BRDFSampler* getBRDF(BSDFSide) override { return this; }
    Color eval(PelkContext&, const Vector&, Color&, Color&, float, int) override {
        act("eval");
        return Color(0.5f);
    }
    void traceBSDFForward(PelkContext& context, int) override {
        act("traceBSDFForward");
        setOpaqueBlack(context);
    }
} sampler;

class MtlCulprit final : public PelkMaterial {
public:
    static constexpr const char* kName = "MtlCulprit";
    static constexpr u32 kID = 0x5C1D0001;
    static void addParameters(PelkParameterListDesc&) {}

    explicit MtlCulprit(PelkPluginDesc* pluginDesc) : PelkMaterial(pluginDesc) { act("newPlugin"); }
    ~MtlCulprit() override { act("destructor"); }
    void renderBegin(PelkRenderer&) override { act("renderBegin"); }
    void frameBegin(PelkRenderer&) override { act("frameBegin"); }
    void shade(PelkContext& context) override {
        act("shade");
        setOpaqueBlack(context);
    }
    BSDFSampler* getBSDF(PelkContext&, int) override {
        act("getBSDF");
        return &sampler;
    }
    void releaseBSDF(PelkContext&, BSDFSampler*) override { act("releaseBSDF"); }
    void frameEnd(PelkRenderer&) override { act("frameEnd"); }
    void renderEnd(PelkRenderer&) override { act("renderEnd"); }
};

struct CulpritDesc final : DescOf<MtlCulprit> {
    void registerPlugin(PelkPluginHost* host) override {
        act("registerPlugin");
        DescOf<MtlCulprit>::registerPlugin(host);
    }
    void deletePlugin(Plugin* plugin) override {
        act("deletePlugin");
        DescOf<MtlCulprit>::deletePlugin(plugin);
    }
} culprit;

ListedLibrary library{&culprit};

}  // namespace

PluginLibDesc* getLibDesc() {
    act("getLibDesc");
    return &library;
}
