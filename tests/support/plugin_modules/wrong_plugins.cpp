#include <limits>

#include "listed_library.h"
#include "pelk/contract/desc_of.h"
#include "pelk/contract/sampler_pool.h"
#include "pelk/contract/samplers.h"

using namespace Tarnkit;

namespace {

struct WrongParams {
    int wrong = 0;
    float amount = 0.0f;
    int number = 0;
    static ParamRows<WrongParams> table();
};

constexpr ParamTable kParams{
    intParam("wrong", &WrongParams::wrong, 0),
    intParam(nullptr, &WrongParams::number, 0),
    floatParam("amount", &WrongParams::amount, 5.0f, nullptr, "minValue=(0), maxValue=(1)"),
    intParam("amount", &WrongParams::number, 0),
};

ParamRows<WrongParams> WrongParams::table() {
    return kParams;
}

struct Sampler : BSDFSampler {};

/// Does at each hit what the parameter `wrong` says.
class MtlWrong final : public RenderPooled<Sampler, WithParams<WrongParams, PelkMaterial>> {
public:
    static constexpr const char* kName = "MtlWrong";
    static constexpr u32 kID = 201;

    using RenderPooled::RenderPooled;

    void frameBegin(PelkRenderer&) override {
        PelkPluginParameter* const value = paramList.getParam("wrong");
        wrong = value ? value->getInt(0, 0.0) : 0;
    }
    BSDFSampler* getBSDF(PelkContext&, int) override { return nullptr; }

    void shade(PelkContext& context) override {
        constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
        setOpaqueBlack(context);
        if (wrong == 0) {
            pool.borrow(context).handOut();
        } else if (wrong == 1) {
            context.resultAlpha = Color(kNaN);
        } else if (wrong == 2) {
            context.normal.z = std::numeric_limits<float>::infinity();
            context.renderer->sequenceData.giEngine->irradiance(context.resultColor, context);
        } else {
            PelkContext* const ray = context.newSpawnedContext(0, Color(1), kRayReflect, {0, 0, 1});
            ray->rayDir.x = wrong == 3 ? kNaN : 0.0f;
            ray->rayOrigin.x = wrong == 4 ? 1e19 : 0.0;
            ray->rayMinT = wrong == 5 ? -1.0 : 0.0;
            context.renderer->traceRay(*ray);
            ray->releaseContext();
        }
    }

private:
    int wrong = 0;
};

DescOf<MtlWrong> wrong;
ListedDesc shadowed(202, "MtlDiffuse"), taken(2004101502, "Taken"), null(203, nullptr),
    empty(204, "");
ListedLibrary library{&wrong, &shadowed, &taken, &null, &empty};

}  // namespace

PluginLibDesc* getLibDesc() {
    return &library;
}
