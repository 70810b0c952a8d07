#pragma once

#include "fake_host/fake_host.h"

/// Every material of the module on every road that a hit can take through it, set up once and
/// then run without notes, so that what remains is what the materials do.
class HitRoads : public FakeHost {
protected:
    HitRoads() { startAll(); }

    /// Makes every material anew and starts its frame, around what `base` and `texture` answer.
    void startAll();

    /// Makes ready in a context what hits will ask it for.
    void prepare(FakeContext& context);
    /// All hits, one after the other, in the context of one thread. Returns the sum of their
    /// results, the same each time and on each thread.
    Color runHits(FakeContext& context);

    FakeTexture texture{AColor{Color(0.25f), 0.5f}};
    RecordingMaterial base;
    RecordingFragment fragment;
    std::vector<PelkMaterial*> materials;

private:
    static constexpr u32 kHitRays[] = {kRayCamera, kRayShadow, kRayReflect, kRayGi};

    Color shade(PelkMaterial& material, FakeContext& context, u32 rayType, int backSide);
    Color sample(PelkMaterial& material, FakeContext& context);

    FakeChannel channel{2};
};

inline void HitRoads::startAll() {
    materials.clear();
    renderer.gi.light = Color(0.5f);
    renderer.gi.mis = 1;
    renderer.tracedColor = Color(2);
    base.sampler.color = Color(-1, 2, 4);  // invalid, so that the report is on the road
    PelkMaterial& diffuse = make("MtlDiffuse");
    startFrame(diffuse, {{"diffuse_tex", &texture},
                         {"reflection", Color(0.5f)},
                         {"transparency", Color(0.25f)},
                         {"render_channel_color", &channel}});
    materials.push_back(&diffuse);
    for (const int doubleSided : {0, 2, 3}) {
        PelkMaterial& single = make("MtlSingleBRDF");
        startFrame(single,
                   {{"brdf", &base}, {"filter", Color(0.5f)}, {"double_sided", doubleSided}});
        materials.push_back(&single);
    }
    for (const int hidden : {0, 1}) {
        PelkMaterial& stats = make("MtlRenderStats");
        startFrame(stats, {{"base_mtl", &base},
                           {"visibility", 0.5f},
                           {"shadows_receive", false},
                           {"camera_visibility", !hidden}});
        materials.push_back(&stats);
    }
    PelkMaterial& byRay = make("MtlOverride");
    startFrame(byRay, {{"base_mtl", &base},
                       {"use_environment_override", true},
                       {"environment_override", &texture}});
    materials.push_back(&byRay);
    PelkMaterial& multi = make("MtlMulti");
    startFrame(multi,
               {{"mtls_list", std::vector<PluginBase*>{&byRay, &base}}, {"mtlid_gen", &texture}});
    materials.push_back(&multi);
    // Mattes by way of the base's channels and of a mirror ray, and one that other rays see.
    base.onShade = [](PelkContext& context) {
        if (context.fragmentList)
            context.fragmentList->getFragment(1);
    };
    for (const bool traces : {false, true}) {
        PelkMaterial& matte = make(traces ? "MtlWrapperMaya" : "MtlWrapper");
        startFrame(matte, {{"base_material", &base},
                           {"matte_surface", true},
                           {"shadows", true},
                           {"maya_background_shader_compatibility", traces},
                           {"reflection_filter_tex", &texture}});
        materials.push_back(&matte);
    }
    // A matte that a mirror sees, which looks its place on the picture up.
    PelkMaterial& projected = make("MtlWrapper");
    startFrame(projected, {{"base_material", &base},
                           {"matte_surface", true},
                           {"matte_for_secondary_rays", 2},
                           {"affect_alpha", true},
                           {"shadow_brightness_tex", &texture}});
    materials.push_back(&projected);
    PelkMaterial& byNumber = make("MtlMulti");
    startFrame(byNumber, {{"mtls_list", std::vector<PluginBase*>{&base, &diffuse}},
                          {"mtlid_gen_float", &texture},
                          {"wrap_id", true}});
    materials.push_back(&byNumber);
    PelkMaterial& wrapper = make("MtlWrapper");
    startFrame(wrapper, {{"base_material", &base}, {"alpha_contribution", 0.5f}});
    materials.push_back(&wrapper);
    PelkMaterial& layered = make("MtlLayeredBRDF");
    startFrame(layered, {{"brdfs", std::vector<PluginBase*>{&diffuse, nullptr, &base}}});
    materials.push_back(&layered);
    PelkMaterial& twoSided = make("Mtl2Sided");
    startFrame(twoSided, {{"front", &base}, {"back", &diffuse}, {"translucency_tex", &texture}});
    materials.push_back(&twoSided);
    for (const char* name : {"MtlMaterialID", "MtlDoubleSided"}) {
        PelkMaterial& wrapping = make(name);
        startFrame(wrapping, {{"base_mtl", &base}});
        materials.push_back(&wrapping);
    }
    log.quiet = true;
}

inline void HitRoads::prepare(FakeContext& context) {
    context.resultFragment = &fragment;
    context.prepareToSpawn(1);
}

inline Color HitRoads::runHits(FakeContext& context) {
    Color sum;
    for (PelkMaterial* material : materials) {
        for (const u32 rayType : kHitRays) {
            for (const int backSide : {0, 1})
                sum += shade(*material, context, rayType, backSide);
        }
        sum += sample(*material, context);
        sum += Color(static_cast<float>(material->getOpaqueFlags()));
    }
    return sum;
}

inline Color HitRoads::shade(PelkMaterial& material, FakeContext& context, u32 rayType,
                             int backSide) {
    context.rayType = rayType;
    context.traceDepth = rayType == kRayReflect ? 1 : 0;
    context.backSide = backSide;
    material.shade(context);
    return context.resultColor + context.resultTransparency;
}

inline Color HitRoads::sample(PelkMaterial& material, FakeContext& context) {
    context.rayType = kRayCamera;
    context.backSide = 0;
    BSDFSampler* sampler = material.getBSDF(context, 0);
    BRDFSampler* front = sampler->getBRDF(kFrontSide);
    Color light(1), unshadowed(1);
    Color sum = front->eval(context, {0, 0, 1}, light, unshadowed, 2.0f, kEvalDiffuse);
    sampler->traceBSDFForward(context, 1);
    sum += context.resultColor + sampler->getBSDFTransparency(context);
    material.releaseBSDF(context, sampler);
    return sum;
}
