#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "fake_host/call_log.h"
#include "fake_host/print.h"
#include "pelk/base/exception_msg.h"
#include "pelk/contract/material.h"

// Made-up plug-ins that stand around the material under test.

/// A plug-in with these faces and no others.
template <class... Faces>
struct PluginWith : Plugin, Faces... {
    PluginWith() { (addInterface(static_cast<Faces*>(this), 0), ...); }
    PluginBase* getPlugin() override { return this; }
};

/// A medium of the scene.
struct FakeVolume : PluginWith<PelkVolume> {
    explicit FakeVolume(float index = 1.5f) : ior(index) {}
    float getIOR(PelkContext&) override { return ior; }

    float ior;
};

/// The object hit, or a generator of texture coordinates: a space of its own and a tangent frame.
struct FakeSurface : PluginWith<SurfaceFrameInterface, UVWGenInterface, ObjectMappingInterface> {
    Vector u = {0.5f, 0.25f, 0}, v = {-0.5f, 1, 0.25f}, w = {0.25f, -0.5f, 1};  ///< gradients
    int isValid = 1;

    Transform getSurfaceFrame(PelkContext& context, int channel) override {
        EXPECT_EQ(channel, -1);
        EXPECT_TRUE(context.rayType & kRayTangentFrame);
        return {{u.x, v.x, w.x}, {u.y, v.y, w.y}, {u.z, v.z, w.z}, {}};
    }
    Vector getUVW(PelkContext&) override { return {}; }
    Transform getTangentFrame(PelkContext& context, int& valid) override {
        valid = isValid;
        return getSurfaceFrame(context, -1);
    }
    Vector objectToWorld(PelkContext&, Vector p) override { return {-3 * p.y, 2 * p.x, p.z}; }
};

/// How a hit lay when something looked at it.
struct SeenSide {
    int backSide = -1, flippedSide = -1;
    float normalZ = 0.0f;

    bool operator==(const SeenSide&) const = default;
    friend void PrintTo(const SeenSide& seen, std::ostream* out) {
        *out << "(" << seen.backSide << " " << seen.flippedSide << " " << seen.normalZ << ")";
    }
};

inline SeenSide sideOf(const PelkContext& context) {
    return {context.backSide, context.flippedSide, context.normal.z};
}

inline void throwIf(bool memoryIsOut) {
    if (memoryIsOut)
        throw ExceptionMsg("no memory");
}

/// A sampler that answers what is set, with a face for both sides.
struct RecordingSampler : BSDFSampler, BRDFSampler {
    bool hasFace[2] = {true, true};  ///< by BSDFSide
    Color color;                     ///< what traceForward finds
    Color transparency;
    Color diffuse, lightMult, evaluated;
    Vector diffuseNormal;
    PelkVolume* volume = nullptr;
    SeenSide seenSide;  ///< by eval or traceForward
    TextureInterface* seenEnvironment = nullptr;
    std::function<void(PelkContext&)> onTrace;  ///< called by traceForward, after the results

    BRDFSampler* getBRDF(BSDFSide side) override { return hasFace[side] ? this : nullptr; }
    PelkVolume* getVolume(PelkContext&) override { return volume; }

    Color getDiffuseColor(Color& lightColor) override { return lightColor * diffuse; }
    Vector getDiffuseNormal(PelkContext&) override { return diffuseNormal; }
    Color getLightMult(Color& lightColor) override { return lightColor * lightMult; }
    Color getTransparency(PelkContext&) override { return transparency; }
    Color eval(PelkContext& context, const Vector&, Color&, Color&, float, int) override {
        see("eval", context);
        return evaluated;
    }
    void traceForward(PelkContext& context, int) override {
        see("traceForward", context);
        setResults(context, color, transparency, complement(transparency), transparency);
        if (onTrace)
            onTrace(context);
    }

private:
    void see(const char* call, const PelkContext& context) {
        if (!note(call))
            return;
        seenSide = sideOf(context);
        seenEnvironment = context.environment;
    }
};

/// A plug-in with every face that one material asks of another. It shades what is set, hands out
/// its one sampler, writes its text, and remembers what it saw.
struct RecordingMaterial : PelkRTMaterial {
    // What it answers.
    std::vector<u64> hiddenFaces;  ///< ids of the faces that it doesn't have
    Results results;               ///< of shade
    RecordingSampler sampler;
    bool givesSampler = true;
    bool throwsForMemory = false;               ///< at every hit, whatever is asked of it
    bool takesNull = false;                     ///< releaseBSDF of a null is no fault
    std::function<void(PelkContext&)> onShade;  ///< writes channels, after the results
    int opaqueFlags = 0;
    std::string text;  ///< its descriptor text

    // What it saw.
    PelkContext seen;                 ///< as it came to shade or getBSDF
    int seenFlags = -1;               ///< of getBSDF
    std::atomic<int> samplersOut{0};  ///< handed out and not released

    RecordingMaterial() : PelkRTMaterial(nullptr) {}
    ~RecordingMaterial() override { EXPECT_EQ(samplersOut, 0) << "a sampler was not released"; }

    PluginInterface* getInterface(u64 id) override {
        const bool isHidden = std::count(hiddenFaces.begin(), hiddenFaces.end(), id) > 0;
        return isHidden ? nullptr : PelkRTMaterial::getInterface(id);
    }
    void shade(PelkContext& context) override {
        if (note("shade"))
            seen = context;
        throwIf(throwsForMemory);
        setResults(context, results.color, results.transparency, results.alpha,
                   results.alphaTransparency);
        if (onShade)
            onShade(context);
    }
    BSDFSampler* getBSDF(PelkContext& context, int flags) override {
        if (note("getBSDF")) {
            seen = context;
            seenFlags = flags;
        }
        throwIf(throwsForMemory);
        samplersOut += givesSampler;
        return givesSampler ? &sampler : nullptr;
    }
    void releaseBSDF(PelkContext&, BSDFSampler* released) override {
        note("releaseBSDF");
        if (!released && takesNull)
            return;
        EXPECT_EQ(released, &sampler) << "got back what it did not give";
        --samplersOut;
    }
    int getOpaqueFlags() override {
        note("getOpaqueFlags");
        return opaqueFlags;
    }
    int getMaterialSource(void*, const char*, const char*, ShaderSource& source,
                          OCLData&) override {
        source.append(text.c_str());
        return 1;
    }
};

/// A texture with one value, through all faces. Its text is "texture <type> <name>\n".
struct FakeTexture
    : PluginWith<TextureInterface, TextureFloatInterface, TextureIntInterface, RTTexInterface> {
    AColor color;
    float number = 0.0f;
    int integer = 0;
    Vector bump;
    bool throwsForMemory = false;  ///< at every hit
    Color seenWeight;              ///< rayWeight at the last reading

    explicit FakeTexture(AColor value = {}) : color(value) {}

    AColor getTexColor(PelkContext& context) override {
        return read("getTexColor", color, context);
    }
    float getTexFloat(PelkContext& context) override {
        return read("getTexFloat", number, context);
    }
    int getTexInt(PelkContext& context) override { return read("getTexInt", integer, context); }
    Vector getTexBump(PelkContext&) override { return bump; }
    int writeTexSource(const char* type, const char* sourceName, const char*, ShaderSource& source,
                       OCLData&) override {
        source.printf("texture %s %s\n", type, sourceName);
        return 1;
    }

private:
    template <class T>
    T read(const char* call, const T& value, const PelkContext& context) {
        if (note(call))
            seenWeight = context.rayWeight;
        throwIf(throwsForMemory);
        return value;
    }
};

struct FakeChannel : PluginWith<RenderChannelInterface> {
    explicit FakeChannel(int channelIndex) : index(channelIndex) {}

    int getChannelIndex() override { return index; }

private:
    int index;
};

/// A fragment that keeps what is written to it, as colours, in order; a number as grey.
struct RecordingFragment : Fragment {
    std::vector<std::pair<int, Color>> channels;  ///< by position, -1 included
    std::vector<std::pair<int, Color>> aliases;
    std::vector<std::pair<Color, int>> multiplied;  ///< weights and flag
    bool hasAliases = false;  ///< who asks is told that each alias has a channel

    void multiply(const Color& weights, int flag) override {
        if (note("multiply"))
            multiplied.emplace_back(weights, flag);
    }
    void setChannel(int index, const void* value) override {
        if (note("setChannel"))
            channels.emplace_back(index, *static_cast<const Color*>(value));
    }
    void addAlias(int alias, const void* value) override {
        if (!note("addAlias"))
            return;
        const bool isNumber = alias == kAliasMaterialIDNumber;
        aliases.emplace_back(alias, isNumber ? Color(*static_cast<const int*>(value))
                                             : *static_cast<const Color*>(value));
    }
    int clear(int) override {
        note("clear");
        return 0;
    }

    int getTag() override { return 0; }
    void setTag(int) override {}
    void addFragment(Fragment*, const Color&, int) override {}
    void setColor(const Color&) override {}
    void getChannel(int, void*) override {}
    void* getChannelPtr(int) override { return nullptr; }
    void getAlias(int, void*) override {}
    void* getAliasPtr(int) override {
        static thread_local Color slot;  // threads of a test share fragments
        return hasAliases ? &slot : nullptr;
    }
    void applyColorMapper(ColorMapper*, int) override {}
    AColor* getSampleColor(AColor* out) override { return out; }
};
