#include "pelk/host/render/tile_sums.h"

#include <cstring>
#include <type_traits>

#include "pelk/support/regions/region_data.h"

namespace Tarnkit {

namespace {

/// The main values of a packed fragment; the bytes of its slots follow.
struct PackedFragment {
    int tag, renderID;
    float zDepth, weight;
    Color color, alpha, background, transparency, alphaTransparency;
    Vector normal;
};
static_assert(std::is_trivially_copyable_v<PackedFragment> && sizeof(PackedFragment) == 88,
              "checkpoints hold these bytes");

void pack(const PKFragment& from, int dataSize, u8* out) {
    const PackedFragment packed{from.tag,        from.renderID,     from.zDepth,
                                from.weight,     from.color,        from.alpha,
                                from.background, from.transparency, from.alphaTransparency,
                                from.normal};
    std::memcpy(out, &packed, sizeof packed);
    std::memcpy(out + sizeof packed, from.channelData, static_cast<std::size_t>(dataSize));
}

void unpack(const u8* bytes, int dataSize, PKFragment& to) {
    PackedFragment packed;
    std::memcpy(&packed, bytes, sizeof packed);
    to.tag = packed.tag;
    to.renderID = packed.renderID;
    to.zDepth = packed.zDepth;
    to.weight = packed.weight;
    to.color = packed.color;
    to.alpha = packed.alpha;
    to.background = packed.background;
    to.transparency = packed.transparency;
    to.alphaTransparency = packed.alphaTransparency;
    to.normal = packed.normal;
    to.state = kFragmentHasData;  // and so its slots don't count as clear
    std::memcpy(to.channelData, bytes + sizeof packed, static_cast<std::size_t>(dataSize));
}

}  // namespace

std::size_t packedFragmentSize(int dataSize) {
    return sizeof(PackedFragment) + static_cast<std::size_t>(dataSize);
}

u32 packFragments(const FragmentList& list, PKRegionData& region, std::vector<u8>& bytes) {
    const int dataSize = region.getFragmentDataSize();
    const std::size_t step = packedFragmentSize(dataSize);
    const std::size_t before = bytes.size();
    for (const Fragment* fragment = list.head(); fragment; fragment = fragment->nextFragment) {
        bytes.resize(bytes.size() + step);
        pack(static_cast<const PKFragment&>(*fragment), dataSize, &bytes[bytes.size() - step]);
    }
    return static_cast<u32>(bytes.size() - before);
}

void FragmentReader::read(std::size_t index, PKRegionData& region, FragmentList& list) {
    const int dataSize = region.getFragmentDataSize();
    const std::size_t step = packedFragmentSize(dataSize);
    const std::size_t end = place + sums.fragmentBytes[index];
    Fragment** link = &list.first;
    while (*link)
        link = &(*link)->nextFragment;
    for (; place < end; place += step) {
        *link = region.newFragment();
        unpack(&sums.fragments[place], dataSize, static_cast<PKFragment&>(**link));
        link = &(*link)->nextFragment;
    }
}

}  // namespace Tarnkit
