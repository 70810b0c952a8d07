#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "fake_host/print.h"
#include "frame/material.h"

// Made-up plug-ins that stand around the material under test.

class FakeVolume : public PelkVolume {
public:
    float ior = 1.5f;

    PluginBase* getPlugin() override { return nullptr; }
    float getIOR(PelkContext&) override { return ior; }
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

/// A sampler that answers what is set, with a face for both sides.
class RecordingSampler : public BSDFSampler, public BRDFSampler {
public:
    bool hasFace[2] = {true, true};  ///< by BSDFSide
    Color color;                     ///< what traceForward finds
    Color transparency;
    Color diffuse, lightMult, evaluated;
    Vector diffuseNormal;
    PelkVolume* volume = nullptr;
    SeenSide seenSide;  ///< by eval or traceForward

    BRDFSampler* getBRDF(BSDFSide side) override { return hasFace[side] ? this : nullptr; }
    PelkVolume* getVolume(PelkContext&) override { return volume; }

    Color getDiffuseColor(Color& lightColor) override;
    Vector getDiffuseNormal(PelkContext&) override { return diffuseNormal; }
    Color getLightMult(Color& lightColor) override;
    Color eval(PelkContext& context, const Vector& direction, Color& lightColor,
               Color& origLightColor, float probLight, int flags) override;
    void traceForward(PelkContext& context, int doDiffuse) override;
    Color getTransparency(PelkContext&) override { return transparency; }
};

/// A plug-in with every face that one material asks of another. It shades what is set, hands out
/// its one sampler, writes its text, and remembers what it saw.
class RecordingMaterial : public Plugin, public MaterialInterface, public BSDFInterface {
public:
    // What it answers.
    std::vector<u64> hiddenFaces;  ///< ids of the faces that it doesn't have
    Results results;               ///< of shade
    RecordingSampler sampler;
    BSDFSampler* givenSampler = &sampler;
    bool givesSampler = true;
    bool throwsForMemory = false;               ///< at every hit, whatever is asked of it
    bool takesNull = false;                     ///< releaseBSDF of a null is no fault
    std::function<void(PelkContext&)> onShade;  ///< writes channels, after the results
    int materialID = 0;
    int opaqueFlags = 0;
    std::string text;         ///< its descriptor text
    std::string textSection;  ///< the section that it handles; empty: all
    RTMtlInterface* multiMtl = nullptr;

    // What it saw.
    Color seenWeight, seenWeight2;
    SeenSide seenSide;
    u32 seenShadeFlags = 0;
    int seenFlags = -1;               ///< of getBSDF
    std::atomic<int> samplersOut{0};  ///< handed out and not released
    void* seenOwner = nullptr;
    std::string seenName;

    ~RecordingMaterial() override;
    PluginInterface* getInterface(u64 id) override;
    PluginBase* getPlugin() override { return this; }

    void shade(PelkContext& context) override;
    int getMaterialID(PelkContext&) override { return materialID; }
    BSDFSampler* getBSDF(PelkContext& context, int flags) override;
    void releaseBSDF(PelkContext& context, BSDFSampler* released) override;

private:
    class OpaqueFace : public OpaqueShadeableInterface {
    public:
        explicit OpaqueFace(RecordingMaterial& material) : owner(material) {}
        PluginBase* getPlugin() override { return &owner; }
        int getOpaqueFlags() override;

    private:
        RecordingMaterial& owner;
    };
    class TextFace : public RTMtlInterface {
    public:
        explicit TextFace(RecordingMaterial& material) : owner(material) {}
        PluginBase* getPlugin() override { return &owner; }
        int getMaterialSource(void* ownerArg, const char* name, const char* kind,
                              ShaderSource& source, OCLData& data) override;
        RTMtlInterface* getMultiMtl() override { return owner.multiMtl; }

    private:
        RecordingMaterial& owner;
    };

    void see(const PelkContext& context);

    OpaqueFace opaqueFace{*this};
    TextFace textFace{*this};
};

/// A texture with one value, through all faces. Its text is "texture <type> <name>\n".
class FakeTexture : public Plugin,
                    public TextureInterface,
                    public TextureFloatInterface,
                    public TextureIntInterface,
                    public RTTexInterface {
public:
    explicit FakeTexture(AColor value = {}) : color(value) {}

    AColor color;
    float number = 0.0f;
    int integer = 0;
    Vector bump;
    bool describesItself = true;
    bool throwsForMemory = false;  ///< at every hit
    Color seenWeight;              ///< rayWeight at the last reading

    PluginInterface* getInterface(u64 id) override;
    PluginBase* getPlugin() override { return this; }

    AColor getTexColor(PelkContext& context) override;
    float getTexFloat(PelkContext& context) override;
    int getTexInt(PelkContext& context) override;
    Vector getTexBump(PelkContext&) override { return bump; }
    int writeTexSource(const char* type, const char* name, const char* kind, ShaderSource& source,
                       OCLData& data) override;
};

class FakeChannel : public Plugin, public RenderChannelInterface {
public:
    explicit FakeChannel(int channelIndex) : index(channelIndex) {}

    PluginInterface* getInterface(u64 id) override;
    PluginBase* getPlugin() override { return this; }
    int getChannelIndex() override { return index; }

private:
    int index;
};

/// A fragment that keeps what is written to it, as colours, in order; a number as grey.
class RecordingFragment : public Fragment {
public:
    int clearMode = -1;                           ///< of the last clear
    std::vector<std::pair<int, Color>> channels;  ///< by position, -1 included
    std::vector<std::pair<int, Color>> aliases;
    std::vector<std::pair<Color, int>> multiplied;  ///< weights and flag

    int getTag() override { return tag; }
    void setTag(int value) override { tag = value; }
    void addFragment(Fragment*, const Color&, int) override {}
    void multiply(const Color& weights, int flag) override;
    void setColor(const Color&) override {}
    void getChannel(int, void*) override {}
    void setChannel(int index, const void* value) override;
    void* getChannelPtr(int) override { return nullptr; }
    void getAlias(int, void*) override {}
    void addAlias(int alias, const void* value) override;
    void* getAliasPtr(int) override { return nullptr; }
    int clear(int mode) override;
    void applyColorMapper(ColorMapper*, int) override {}
    AColor* getSampleColor(AColor* out) override { return out; }

private:
    int tag = 0;
};
