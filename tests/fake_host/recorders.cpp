#include "fake_host/recorders.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "fake_host/call_log.h"
#include "frame/exception_msg.h"

namespace {

void throwIf(bool memoryIsOut) {
    if (memoryIsOut)
        throw ExceptionMsg("no memory");
}

}  // namespace

Color RecordingSampler::getDiffuseColor(Color& lightColor) {
    note("getDiffuseColor");
    return lightColor * diffuse;
}

Color RecordingSampler::getLightMult(Color& lightColor) {
    note("getLightMult");
    return lightColor * lightMult;
}

Color RecordingSampler::eval(PelkContext& context, const Vector&, Color&, Color&, float, int) {
    if (note("eval"))
        seenSide = sideOf(context);
    return evaluated;
}

void RecordingSampler::traceForward(PelkContext& context, int) {
    if (note("traceForward"))
        seenSide = sideOf(context);
    setResults(context, color, transparency, complement(transparency), transparency);
}

RecordingMaterial::~RecordingMaterial() {
    EXPECT_EQ(samplersOut.load(), 0) << "a sampler was not released";
}

PluginInterface* RecordingMaterial::getInterface(u64 id) {
    if (std::count(hiddenFaces.begin(), hiddenFaces.end(), id))
        return nullptr;
    switch (id) {
        case EXT_MATERIAL:
            return static_cast<MaterialInterface*>(this);
        case EXT_BSDF:
            return static_cast<BSDFInterface*>(this);
        case EXT_OPAQUE_SHADEABLE:
            return &opaqueFace;
        case EXT_RTMTL:
            return &textFace;
        default:
            return Plugin::getInterface(id);
    }
}

void RecordingMaterial::see(const PelkContext& context) {
    seenWeight = context.rayWeight;
    seenWeight2 = context.rayWeight2;
    seenSide = sideOf(context);
    seenShadeFlags = context.shadeFlags;
}

void RecordingMaterial::shade(PelkContext& context) {
    if (note("shade"))
        see(context);
    throwIf(throwsForMemory);
    setResults(context, results.color, results.transparency, results.alpha,
               results.alphaTransparency);
    if (onShade)
        onShade(context);
}

BSDFSampler* RecordingMaterial::getBSDF(PelkContext& context, int flags) {
    if (note("getBSDF")) {
        see(context);
        seenFlags = flags;
    }
    throwIf(throwsForMemory);
    samplersOut += givesSampler;
    return givesSampler ? givenSampler : nullptr;
}

void RecordingMaterial::releaseBSDF(PelkContext&, BSDFSampler* released) {
    note("releaseBSDF");
    if (!released && takesNull)
        return;
    EXPECT_EQ(released, givenSampler) << "got back what it did not give";
    --samplersOut;
}

int RecordingMaterial::OpaqueFace::getOpaqueFlags() {
    note("getOpaqueFlags");
    return owner.opaqueFlags;
}

int RecordingMaterial::TextFace::getMaterialSource(void* ownerArg, const char* name,
                                                   const char* kind, ShaderSource& source,
                                                   OCLData&) {
    note("getMaterialSource");
    owner.seenOwner = ownerArg;
    owner.seenName = name;
    if (!owner.textSection.empty() && owner.textSection != kind)
        return 0;
    source.append(owner.text.c_str());
    return 1;
}

PluginInterface* FakeTexture::getInterface(u64 id) {
    switch (id) {
        case EXT_TEXTURE:
            return static_cast<TextureInterface*>(this);
        case EXT_TEXTURE_FLOAT:
            return static_cast<TextureFloatInterface*>(this);
        case EXT_TEXTURE_INT:
            return static_cast<TextureIntInterface*>(this);
        case EXT_RTTEX:
            return describesItself ? static_cast<RTTexInterface*>(this) : nullptr;
        default:
            return Plugin::getInterface(id);
    }
}

AColor FakeTexture::getTexColor(PelkContext& context) {
    if (note("getTexColor"))
        seenWeight = context.rayWeight;
    throwIf(throwsForMemory);
    return color;
}

float FakeTexture::getTexFloat(PelkContext& context) {
    if (note("getTexFloat"))
        seenWeight = context.rayWeight;
    throwIf(throwsForMemory);
    return number;
}

int FakeTexture::getTexInt(PelkContext& context) {
    if (note("getTexInt"))
        seenWeight = context.rayWeight;
    throwIf(throwsForMemory);
    return integer;
}

int FakeTexture::writeTexSource(const char* type, const char* sourceName, const char*,
                                ShaderSource& source, OCLData&) {
    source.printf("texture %s %s\n", type, sourceName);
    return 1;
}

PluginInterface* FakeChannel::getInterface(u64 id) {
    return id == EXT_RENDER_CHANNEL ? static_cast<RenderChannelInterface*>(this)
                                    : Plugin::getInterface(id);
}

void RecordingFragment::multiply(const Color& weights, int flag) {
    if (note("multiply"))
        multiplied.emplace_back(weights, flag);
}

void RecordingFragment::setChannel(int index, const void* value) {
    if (note("setChannel"))
        channels.emplace_back(index, *static_cast<const Color*>(value));
}

void RecordingFragment::addAlias(int alias, const void* value) {
    if (!note("addAlias"))
        return;
    const bool isNumber = alias == kAliasMaterialIDNumber;
    aliases.emplace_back(alias, isNumber ? Color(*static_cast<const int*>(value))
                                         : *static_cast<const Color*>(value));
}

int RecordingFragment::clear(int mode) {
    if (note("clear"))
        clearMode = mode;
    return 0;
}
