#pragma once

#include <vector>

#include "pelk/base/hash_table.h"
#include "pelk/contract/material.h"

namespace Tarnkit {
struct SourceArgs;
}

/// Parameters of MtlMulti, as the host refreshes them at each frameBegin. Its other lists are read
/// by name there.
struct MultiParams {
    PelkPluginList mtlsList;                         ///< the sub-materials; entries may be null
    TextureIntInterface* mtlidGen = nullptr;         ///< gives the id at the hit
    TextureFloatInterface* mtlidGenFloat = nullptr;  ///< gives it, rounded, if mtlidGen is null
    int wrapId = 0;  ///< not 0: ids above the largest that was given start over at 0

    static ParamRows<MultiParams> table();
};

/// One of the sub-materials. An interface is null where the plug-in doesn't offer it.
struct MtlMultiEntry {
    int id;
    MaterialInterface* mtl;
    BSDFInterface* bsdf;
};

/// What the last hit of each thread and trace depth picked. releaseBSDF finds the owner of a
/// sampler here: asking the textures again would cost a look-up and, for a texture that changes its
/// mind, give the sampler to a material that never made it. A thread uses its own list alone.
class PickCache {
public:
    /// Forgets all and makes an empty list for each thread.
    void resize(int numThreads);
    void destroy() { lists.clear(); }
    bool isEmpty() const { return lists.empty(); }
    /// Forgets all picks and keeps the memory.
    void reset();

    /// The position that was stored for this very hit, -1 if none was.
    int find(const PelkContext& context) const;
    /// Allocates only at depths that the thread has not been at before.
    void store(const PelkContext& context, int position);

private:
    struct Pick {
        int stamp;  // hitID of the hit; 0 is none
        int position;
    };
    struct List : GrowTable<Pick> {
        List() : GrowTable(30) {}
    };
    std::vector<List> lists;
};

/// Picks one of several materials for each hit, and hands the hit to it as it is: no blend, so its
/// BSDF and densities are those of the picked material.
///
/// The pick goes by an id: of a texture, else of the polygon (face) that was hit. The first entry
/// with that id wins, and the first entry of all stands in for ids that have none. If shader sets
/// are named, the name of the hit's set picks instead. A picked entry without material, and a table
/// without entries, shade opaque black and have no sampler.
class MtlMulti final : public WithParams<MultiParams, PelkRTMaterial> {
public:
    static constexpr const char* kName = "MtlMulti";
    static constexpr u32 kID = 0x7782AD1D;

    using WithParams::WithParams;

    void renderBegin(PelkRenderer& renderer) override;
    void renderEnd(PelkRenderer& renderer) override;
    void frameBegin(PelkRenderer& renderer) override;
    void frameEnd(PelkRenderer& renderer) override;

    void shade(PelkContext& context) override;
    BSDFSampler* getBSDF(PelkContext& context, int flags) override;
    void releaseBSDF(PelkContext& context, BSDFSampler* sampler) override;
    int getMaterialID(PelkContext& context) override;
    int getOpaqueFlags() override;

    int getMaterialSource(void* owner, const char* sourceName, const char* kind,
                          ShaderSource& source, OCLData& data) override;
    int getNumSubMtls() override { return table.size(); }
    int getSubMtlID(int index) override;
    /// Null for an id without entry: here the first entry does not stand in.
    RTMtlInterface* getSubMtlByID(int id) override;
    RTMtlInterface* getSubMtl(int index) override;
    int collectSubMtls(RTMtlList& list) override;
    RTMtlInterface* getMultiMtl() override { return this; }

private:
    void addPairs(PelkPluginParameter& pairs, double time);
    void addEntries(PelkRenderer& renderer);
    void indexShaderSets(PelkRenderer& renderer);
    PelkIntList readIds(PelkRenderer& renderer);
    void addEntry(int id, PluginBase* plugin);
    void freeTable();

    int wrapped(int id) const;
    int findID(int id) const;
    int pick(PelkContext& context) const;
    int pickShaderSet(PelkContext& context) const;
    int surfaceID(PelkContext& context) const;
    const MtlMultiEntry* pickEntry(PelkContext& context) const;
    void writeSwitch(const SourceArgs& args) const;

    // Written in frameBegin, read-only on the render threads.
    GrowTable<MtlMultiEntry> table;
    int maxId = -1;  // largest id that was given, -1 if none is above
    bool useShaderSets = false;
    HashTable<u32, int> shaderSetIndex;  // from the id of a name to a position in the table
    PickCache pickCache;                 // lives from renderBegin to renderEnd
};

using MtlMultiDesc = DescOf<MtlMulti>;
