#pragma once

#include "fake_host/fake_host.h"
#include "materials/test_channel_host.h"

/// Every material of the module on the roads that a hit can take through it, set up once and then
/// run without notes, so that what remains is what the materials do. The module says which there
/// are: each runs in kVariants instances with all that its parameters can name.
class HitRoads : public FakeHost {
protected:
    HitRoads() {
        renderer.sequenceData.addInterface(&channels, 0);
        fragment.hasAliases = true;
        startAll();
    }

    /// Makes every material anew and starts its frame, around what `base` and `texture` answer.
    void startAll() {
        materials.clear();
        renderer.gi.light = Color(0.5f);
        renderer.gi.mis = 1;
        renderer.tracedColor = Color(2);
        base.sampler.color = Color(-1, 2, 4);  // invalid, so that the report is on the road
        base.onShade = [](PelkContext& context) {
            if (context.fragmentList)
                context.fragmentList->getFragment(1);
        };
        for (int variant = 0; variant < kVariants; ++variant) {
            for (PelkPluginDesc* desc : kinds())
                startFrame(addMaterial(desc->getName(), variant));
            // A ramp by the way of its bump, and back.
            PelkMaterial& ramp = addMaterial("MtlMayaRamp", variant);
            PelkMaterial& bump = addMaterial("MtlBump", variant);
            startFrame(ramp, {{"bump_brdf", &bump}});
            startFrame(bump, {{"base_mtl", &ramp}});
        }
        log.quiet = true;
    }

    /// By which numbers and switches go. As a number it is each value of what a plug-in counts from
    /// 0 (forms, inputs, kinds of rays), and enough for a depth.
    static constexpr int kVariants = 8;

    /// An instance of that kind with all that it can ask others for: `base` and `channel` for
    /// plug-ins, `texture` for textures. Its frame has not begun.
    PelkMaterial& addMaterial(const char* name, int variant) {
        PelkMaterial& material = make(name);
        materials.push_back(&material);
        auto* desc = static_cast<PelkPluginDesc*>(material.getPluginDesc());
        PelkParameterListDesc& list = *desc->getParameterListDesc();
        for (int i = 0; i < list.getNumParameters(); ++i)
            setAny(material, list.getParameter(i), variant, i);
        return material;
    }

    /// Makes ready in a context what hits will ask it for.
    void prepare(FakeContext& context) {
        context.resultFragment = &fragment;
        context.hitObject = context.hitMapping = &surface;
        context.prepareToSpawn(1);
    }

    /// All hits, one after the other, in the context of one thread. Returns the sum of their
    /// results, the same each time and on each thread.
    Color runHits(FakeContext& context) {
        Color sum;
        for (PelkMaterial* material : materials) {
            for (const u32 rayType : {kRayCamera, kRayShadow, kRayReflect, kRayGi}) {
                context.rayType = rayType;
                context.traceDepth = rayType == kRayReflect ? 1 : 0;
                for (const int backSide : {0, 1}) {
                    context.backSide = backSide;
                    material->shade(context);
                    sum += context.resultColor + context.resultTransparency;
                }
            }
            context.rayType = kRayCamera;
            context.backSide = 0;
            sum += sample(*material, context);
            sum += Color(static_cast<float>(material->getOpaqueFlags()));
        }
        return sum;
    }

    /// Asks a sampler of the material for all that a host asks of it, and gives it back.
    static Color sample(PelkMaterial& material, FakeContext& context) {
        BSDFSampler* const sampler = material.getBSDF(context, 0);
        // A host gives a null back too, and a sampler also where its use has thrown.
        const struct Release {
            ~Release() { material.releaseBSDF(context, sampler); }
            PelkMaterial& material;
            FakeContext& context;
            BSDFSampler* sampler;
        } release{material, context, sampler};
        Color sum;
        for (const BSDFSide side : {kFrontSide, kBackSide}) {
            Color light(1), unshadowed(1);
            if (BRDFSampler* const face = sampler ? sampler->getBRDF(side) : nullptr)
                sum += face->eval(context, {0, 0, 1}, light, unshadowed, 2.0f, kEvalDiffuse);
        }
        if (sampler) {
            sampler->traceBSDFForward(context, 1);
            sum += context.resultColor + sampler->getBSDFTransparency(context);
        }
        return sum;
    }

    FakeTexture texture{AColor{Color(0.25f), 0.5f}};
    RecordingMaterial base;
    RecordingFragment fragment;
    std::vector<PelkMaterial*> materials;

private:
    void setAny(PelkMaterial& material, const ParameterDesc& desc, int variant, int index) {
        const char* const name = desc.name;
        using Numbers = std::vector<Textured<float>>;
        using Colors = std::vector<Textured<AColor>>;
        switch (desc.type) {
            case ParameterType::Bool:  // any three that stand together in each combination
                return setParam(material, Param(name, (variant >> index % 3 & 1) == 1));
            case ParameterType::Int:
                return setParam(material, desc.isList() ? Param(name, std::vector{variant, 3})
                                                        : Param(name, variant));
            case ParameterType::Float:
                return variant ? setParam(material, Param(name, 0.5f)) : void();
            case ParameterType::Color:
                return variant ? setParam(material, Param(name, Color(0.5f))) : void();
            case ParameterType::Plugin:
                return setPlugin(material, desc, variant);
            case ParameterType::Texture:
                return setParam(material, desc.isList()
                                              ? Param(name, Colors{{{}, &texture}, {{Color(1), 1}}})
                                              : Param(name, &texture));
            case ParameterType::TextureFloat:
                return setParam(material, desc.isList() ? Param(name, Numbers{{0, &texture}, {1}})
                                                        : Param(name, &texture));
            case ParameterType::TextureInt:
                return setParam(material, Param(name, &texture));
            case ParameterType::Other:
                return setParam(material, Param(name, Numbers{{0, &texture}, {1}}));
            case ParameterType::String:
                return;
        }
    }

    void setPlugin(PelkMaterial& material, const ParameterDesc& desc, int variant) {
        PluginBase *const others[] = {&channel, &glass, &surface}, *plugin = nullptr;
        // The base also where it hides its interfaces.
        if (!desc.interfaceID || PelkMaterial::Offered::contains(desc.interfaceID))
            plugin = &base;
        for (PluginBase* other : others)
            if (!plugin && other->getInterface(desc.interfaceID))
                plugin = other;
        if (!desc.ofPairs)
            setParam(material,
                     desc.isList()
                         ? Param(desc.name, std::vector<PluginBase*>{plugin, nullptr, plugin})
                         : Param(desc.name, plugin));
        else if (variant % 2)  // the older form of a list, which wins
            setParam(material, Param(desc.name, std::vector<NumberAndPlugin>{{1, plugin}}));
    }

    TestChannelHost channels;
    FakeChannel channel{2};
    FakeSurface surface;
    FakeVolume glass;
};
