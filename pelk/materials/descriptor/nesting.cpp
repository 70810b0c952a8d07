#include "pelk/materials/descriptor/nesting.h"

#include <cassert>
#include <cstring>

namespace Tarnkit {
namespace {

/// The tag is looked for as plain text: in the value of a line it counts like a block.
int countBlocks(const ShaderSource& text) {
    constexpr std::size_t kTagLength = sizeof(kLayerBegin) - 1;
    int count = 0;
    for (const char* at = text.c_str(); (at = std::strstr(at, kLayerBegin)); at += kTagLength)
        ++count;
    return count;
}

/// Writes the child in its block and returns the number of blocks that this made. What the child
/// answers does not matter: without lines of its own it still has its block.
int writeChildBlock(RTMtlInterface* child, const SourceArgs& args, ShaderSource& blocks) {
    ShaderSource text;
    passThrough(child, args.into(text));
    writeBlock(blocks, [&] { blocks.append(text); });
    return 1 + countBlocks(text);
}

/// The nearest earlier position with the same plug-in, -1 if there is none.
int findEarlier(std::span<const LayerPosition> positions, int position) {
    for (int i = position - 1; i >= 0; --i) {
        if (positions[i].plugin == positions[position].plugin)
            return i;
    }
    return -1;
}

}  // namespace

int passThrough(RTMtlInterface* child, const SourceArgs& args) {
    return child
               ? child->getMaterialSource(args.owner, args.name, args.kind, args.source, args.data)
               : 0;
}

void writeChildren(std::span<RTMtlInterface* const> children, const SourceArgs& args) {
    int count = 0;
    for (const RTMtlInterface* child : children)
        count += child ? 1 : 0;
    args.source.printf("Num_children: %d\n", count);
    for (RTMtlInterface* child : children) {
        if (child && passThrough(child, args) == 0)
            args.source.append("Num_children: 0\n");
    }
}

void writeBlocksWithOffsets(std::span<const LayerPosition> positions, SamePlugin same,
                            const SourceArgs& args, ShaderSource& blocks, std::span<int> offsets) {
    assert(offsets.size() >= positions.size());
    const int fallback = !positions.empty() && findRTMtl(positions[0].plugin) ? 1 : 0;
    int next = 1;
    for (int i = 0; i < static_cast<int>(positions.size()); ++i) {
        RTMtlInterface* child = positions[i].enabled ? findRTMtl(positions[i].plugin) : nullptr;
        const int earlier = child && same == SamePlugin::Shared ? findEarlier(positions, i) : -1;
        if (!child) {
            offsets[i] = fallback;
        } else if (earlier >= 0) {
            offsets[i] = offsets[earlier];
        } else {
            offsets[i] = next;
            next += writeChildBlock(child, args, blocks);
        }
    }
}

}  // namespace Tarnkit
