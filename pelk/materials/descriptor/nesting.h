#pragma once

#include <span>

#include "pelk/contract/pelk_material.h"
#include "pelk/contract/shader_source.h"
#include "pelk/materials/descriptor/sections.h"

namespace Tarnkit {

/// The arguments of getMaterialSource, as they go from a material to those below it.
struct SourceArgs {
    void* owner;
    const char* name;
    const char* kind;
    ShaderSource& source;
    OCLData& data;

    /// The same, but written to another text.
    SourceArgs into(ShaderSource& other) const { return {owner, name, kind, other, data}; }
};

/// The interface by which a plug-in describes itself as text; null if it offers none or there is no
/// plug-in.
inline RTMtlInterface* findRTMtl(PluginBase* plugin) {
    return findInterface<RTMtlInterface>(plugin);
}

/// The material behind `plugin` that chooses among sub-materials by id; null without.
inline RTMtlInterface* findMultiMtl(PluginBase* plugin) {
    RTMtlInterface* material = findRTMtl(plugin);
    return material ? material->getMultiMtl() : nullptr;
}

/// Lets a sub-material write its lines and returns its answer; without one, 0.
int passThrough(RTMtlInterface* child, const SourceArgs& args);

/// Writes a block into `source`: the tags of a sub-material, and between them what `writeLayer`
/// writes to the same text.
template <class WriteLayer>
void writeBlock(ShaderSource& source, WriteLayer writeLayer) {
    source.append(kLayerBegin);
    source.append("\n");
    writeLayer();
    source.append(kLayerEnd);
    source.append("\n");
}

/// The hierarchy lines of a material with children of its own: their number, then each one's
/// lines, where a child that has none counts as a leaf. Null entries don't count.
void writeChildren(std::span<RTMtlInterface* const> children, const SourceArgs& args);

/// One of the places at which a material has a sub-material that is addressed by its offset.
struct LayerPosition {
    PluginBase* plugin = nullptr;
    bool enabled = true;  ///< false: the plug-in is not described here
};

/// What becomes of a plug-in that stands at more than one position.
enum class SamePlugin {
    WrittenAgain,  ///< a block for each position
    Shared         ///< takes the offset of the nearest earlier position, which may be disabled
};

/// Writes a block into `blocks` for each position that has a plug-in that describes itself, and
/// stores the position's offset: the number of its block among all blocks of the text, nested ones
/// included, counted from 1. A position without text takes 1 if the first position has a plug-in
/// that describes itself, else 0. `offsets` has room for all positions. The source of `args` is
/// not written to: a material first writes a header that holds the offsets, then appends `blocks`.
void writeBlocksWithOffsets(std::span<const LayerPosition> positions, SamePlugin same,
                            const SourceArgs& args, ShaderSource& blocks, std::span<int> offsets);

}  // namespace Tarnkit
