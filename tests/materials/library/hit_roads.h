#pragma once

#include "fake_host/fake_host.h"
#include "support/regions/test_channels.h"

/// Every material of the module on the roads that a hit can take through it, set up once and then
/// run without notes, so that what remains is what the materials do. The module says which there
/// are: each runs with all that its parameters can name, and some with values of their own besides.
class HitRoads : public FakeHost {
protected:
    HitRoads() {
        for (int alias = 0; alias <= kAliasRawRefraction; ++alias)
            channels.list.add(kChannelColor, alias);
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
        for (PelkPluginDesc* desc : kinds())
            for (const Switches switches : {Switches::AsDefault, Switches::Turned})
                startFrame(addMaterial(*desc, switches));
        using Plugins = std::vector<PluginBase*>;
        PelkMaterial* diffuse = start("MtlDiffuse", {{"diffuse_tex", &texture},
                                                     {"reflection", Color(0.5f)},
                                                     {"transparency", Color(0.25f)},
                                                     {"render_channel_color", &channel}});
        for (const int sided : {0, 2, 3})
            start("MtlSingleBRDF",
                  {{"brdf", &base}, {"filter", Color(0.5f)}, {"double_sided", sided}});
        for (const bool visible : {true, false})
            start("MtlRenderStats", {{"base_mtl", &base},
                                     {"visibility", 0.5f},
                                     {"shadows_receive", false},
                                     {"camera_visibility", visible}});
        start("MtlMulti", {{"mtls_list", Plugins{&base, diffuse}},
                           {"mtlid_gen_float", &texture},
                           {"wrap_id", true}});
        // A matte by way of the base's channels, and one that a mirror sees, which looks its place
        // on the picture up. Those by way of a mirror ray have their switches turned.
        start("MtlWrapper", {{"base_material", &base},
                             {"matte_surface", true},
                             {"shadows", true},
                             {"reflection_filter_tex", &texture}});
        start("MtlWrapper", {{"base_material", &base},
                             {"matte_surface", true},
                             {"matte_for_secondary_rays", 2},
                             {"affect_alpha", true},
                             {"shadow_brightness_tex", &texture}});
        start("MtlLayeredBRDF", {{"brdfs", Plugins{diffuse, nullptr, &base}}});
        // By light angle with a reflected ray, by brightness with a refracted one too; by itself,
        // and with each form of bump, around a base or the ramp itself.
        for (int form = -1; form <= 6; ++form)
            for (const int input : {0, 2}) {
                PelkMaterial& ramp = startRamp({{"color_input", input},
                                                {"diffuse_tex", &texture},
                                                {"volume", input ? &glass : nullptr},
                                                {"reflection_limit", 5},
                                                {"refraction_limit", input},
                                                {"refractions", true},
                                                {"channels", Plugins{&channel}}});
                if (form < 0)
                    continue;
                PelkMaterial* const bump =
                    start("MtlBump", {{"base_mtl", input ? &base : &ramp},
                                      {"bump_tex_color", &texture},
                                      {"bump_tex_mult_tex", &texture},
                                      {"bump_shadows", true},
                                      {"maya_compatible", true},
                                      {"normal_uvwgen", input ? &surface : nullptr},
                                      {"map_type", form}});
                startFrame(ramp, {{"bump_brdf", bump}});
            }
        log.quiet = true;
    }

    enum class Switches { AsDefault, Turned };

    /// An instance of that kind with all that it can ask others for: `base` and `channel` for
    /// plug-ins, `texture` for textures. Its frame has not begun.
    PelkMaterial& addMaterial(PelkPluginDesc& desc, Switches switches) {
        PelkMaterial& material = make(desc.getName());
        materials.push_back(&material);
        PelkParameterListDesc& list = *desc.getParameterListDesc();
        for (int i = 0; i < list.getNumParameters(); ++i)
            setAny(material, list.getParameter(i), switches);
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
    void setAny(PelkMaterial& material, const ParameterDesc& desc, Switches switches) {
        PluginBase* plugin = nullptr;
        switch (desc.type) {
            case ParameterType::Bool:
                if (switches == Switches::Turned)
                    setParam(material, Param(desc.name, !desc.intDefault));
                return;
            case ParameterType::Plugin:
                if (desc.interfaceID == RenderChannelInterface::kInterfaceID)
                    plugin = &channel;
                else if (desc.interfaceID == PelkVolume::kInterfaceID)
                    plugin = &glass;
                else if (desc.interfaceID == UVWGenInterface::kInterfaceID)
                    plugin = &surface;
                else if (desc.interfaceID == 0 || PelkMaterial::Offered::contains(desc.interfaceID))
                    plugin = &base;
                break;
            case ParameterType::Texture:
            case ParameterType::TextureFloat:
            case ParameterType::TextureInt:
                plugin = &texture;
                break;
            default:
                return;  // numbers and texts stay as they are
        }
        if (desc.ofPairs)
            setParam(material, Param(desc.name, std::vector<NumberAndPlugin>{{1, plugin}}));
        else if (desc.isList())
            setParam(material, Param(desc.name, std::vector<PluginBase*>(2, plugin)));
        else
            setParam(material, Param(desc.name, plugin));
    }

    PelkMaterial* start(const char* name, std::initializer_list<Param> params) {
        materials.push_back(&make(name));
        startFrame(*materials.back(), params);
        return materials.back();
    }

    /// With a plain and a textured point in each ramp.
    PelkMaterial& startRamp(std::initializer_list<Param> params) {
        PelkMaterial& material = make("MtlMayaRamp");
        materials.push_back(&material);
        const std::vector<Textured<float>> positions = {{0.0f, &texture}, {1.0f}},
                                           values = {{0.0f, &texture}, {0.75f}};
        const std::vector<Textured<AColor>> colors = {{{}, &texture}, {{Color(0.75f), 1.0f}}};
        for (const std::string ramp : {"color", "transp", "incan", "specular", "environm",
                                       "specularRollOff", "reflectivity"}) {
            const auto set = [&](const char* list, const auto& items) {
                setParams(material, {{(ramp + list).c_str(), items}});
            };
            set("_positions", positions);
            set("_interpolations", std::vector<int>{1, 3});
            if (ramp == "specularRollOff" || ramp == "reflectivity")
                set("_values", values);
            else
                set("_colors", colors);
        }
        startFrame(material, params);
        return material;
    }

    /// A channel for each alias that the ramp writes.
    class Channels : public Plugin, public ChannelHostInterface {
    public:
        TestChannels list;

        PluginBase* getPlugin() override { return this; }
        int getNumChannels() override { return static_cast<int>(list.list.size()); }
        RenderChannel* getChannel(int index) override { return list.list[index]; }
    };

    Channels channels;
    FakeChannel channel{2};
    FakeSurface surface;
    FakeVolume glass;
};
