#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "frame/material.h"

// A renderer without a scene: it answers what the test has set and remembers what it was asked.
// The names noted in the call log are those of the operations.

/// Keeps the warnings, the one level that materials use.
class FakeLog : public MessageLog {
public:
    std::vector<std::string> warnings;

    void debug(const char*, ...) override {}
    void warning(const char* format, ...) override __attribute__((format(printf, 2, 3)));
    void error(const char*, ...) override {}
    void info(const char*, ...) override {}
    void finish() override {}
};

class FakeLights : public LightManager {
public:
    Color light;                                              ///< the answer
    std::function<void(PelkContext&, BRDFSampler*)> onLight;  ///< shines on the sampler

    void computeDirectLight(Color& out, PelkContext& context, BRDFSampler* sampler) override;
};

class FakeCamera : public PelkCamera {
public:
    ScreenPoint point;  ///< where every hit is mapped to
    int answer = 1;
    Point seenHit;

    int mapToScreen(PelkContext& context, ScreenPoint& out, float* distance) override;
};

/// Moves every point.
class FakeWorldTransform : public WorldTransform {
public:
    Vector offset;

    void transformPoint(Point& out, const Point& p, double) override { out = p + offset; }
};

class FakeGi : public DefaultGlobalLightManager {
public:
    Color light;  ///< the irradiance
    int mis = 0;
    Color matteUnshadowed, matteShadowed;

    void irradiance(Color& out, PelkContext& context) override;
    int usesLightMis(PelkContext& context) override;
    void evalMatte(PelkContext& context, Color& unshadowed, Color& shadowed) override;
};

class FakeStringTable : public StringTable {
public:
    StringHandle intern(const char* text) override;

private:
    std::map<std::string, u32> ids;
};

class FakeRenderer : public PelkRenderer {
public:
    FakeRenderer();

    FakeLog log;
    FakeLights lights;
    FakeGi gi;
    FakeCamera camera;  // these two: in the sequence data only if the test puts them there
    FakeWorldTransform world;
    FakeStringTable strings;

    Color environmentColor;                     ///< what evalEnvironment writes
    Color tracedColor, tracedAlpha;             ///< what traceRay writes
    std::vector<PelkContext> environmentReads;  ///< the contexts as they came
    std::vector<PelkContext> traced;

    void evalEnvironment(PelkContext& context) override;
    void traceRay(PelkContext& context) override;
    StringTable* getStringTable() override { return &strings; }
};

/// What newSpawnedContext was asked for.
struct SpawnRequest {
    int index;
    Color weight;
    u32 flags;
    Vector direction;
};

/// What setEnvironment was called with.
struct EnvironmentRequest {
    TextureInterface* texture;
    int priority, flag;

    bool operator==(const EnvironmentRequest&) const = default;
};

/// A hit in no scene. Fails the test if it goes while a spawned context is still out.
class FakeContext : public PelkContext {
public:
    FakeContext() = default;
    /// A hit of a camera ray, straight down on the front of a plane.
    FakeContext(FakeRenderer& fakeRenderer, ThreadData& thread);
    ~FakeContext() override;
    FakeContext(const FakeContext&) = delete;
    FakeContext& operator=(const FakeContext&) = delete;

    Color directLight;                          ///< what computeDirectLighting writes
    PelkVolume* volumeAround = nullptr;         ///< what currentVolume answers
    std::function<void(BSDFSampler*)> onLight;  ///< looks at the sampler while it is lit
    bool refusesToSpawn = false;
    bool spawnsOrphans = false;  ///< spawned contexts have no parent
    std::vector<SpawnRequest> spawnRequests;
    std::vector<EnvironmentRequest> environmentRequests;

    /// Makes the contexts that will be spawned now, so that the heap stays out of the hit.
    void prepareToSpawn(int count);
    int spawnedOut() const;

    void releaseContext() override;
    PelkContext* newSpawnedContext(int index, const Color& weight, u32 rayFlags,
                                   const Vector& direction) override;
    void computeDirectLighting(Color& out, BSDFSampler* sampler) override;
    PelkVolume* currentVolume(PelkVolume* skip) override;
    void flipSide() override;
    void setEnvironment(TextureInterface* texture, int priority, int flag) override;
    void shadeWithBSDF(BSDFSampler* bsdf, int flag) override;

private:
    std::vector<std::unique_ptr<FakeContext>> spawned;
    bool isOut = false;
};

/// Fails the test if a field of the ray or the hit differs from what it was.
void expectRayAndHitAsBefore(const PelkContext& before, const PelkContext& context);
