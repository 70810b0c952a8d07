#include "pelk/host/render/checkpoint.h"

#include <algorithm>
#include <filesystem>
#include <span>
#include <type_traits>

#include "pelk/host/render/render_job.h"
#include "pelk/platform/file.h"
#include "pelk/platform/system_info.h"

namespace Tarnkit {

namespace {

// The payload: SamplingTotals but for the seconds, which the header has; bytes of a packed
// fragment, and the size of tiles; then each tile, row by row from the upper left, as in TileSums.
// Numbers are as in the machine's memory, which is little-endian like the header.

constexpr u32 kLongestName = 1u << 16;
static_assert(std::is_trivially_copyable_v<PixelSums> && sizeof(PixelSums) == 72,
              "checkpoints hold these bytes");

template <class Value>
void writeValue(PayloadWriter& out, const Value& value) {
    out.write(&value, sizeof value);
}

template <class Value>
void writeAll(PayloadWriter& out, const std::vector<Value>& values) {
    if (!values.empty())
        out.write(values.data(), values.size() * sizeof(Value));
}

void writeTile(PayloadWriter& out, const TileSums& sums) {
    writeAll(out, sums.pixels);
    writeAll(out, sums.fragmentBytes);
    if (!sums.fragmentBytes.empty()) {
        writeValue(out, static_cast<u64>(sums.fragments.size()));
        writeAll(out, sums.fragments);
    }
}

/// Reads the payload of a checkpoint. What it says is compared with the bytes that there are before
/// memory is taken for them.
class CheckpointReader {
public:
    CheckpointReader(EnvelopeReader& envelope, std::size_t packedFragment, u32 mostSamplesAsked)
        : file(envelope), fragmentSize(packedFragment), mostSamples(mostSamplesAsked) {}

    template <class Value>
    bool read(Value& value) {
        return file.read(&value, sizeof value);
    }

    template <class Value>
    bool readAll(std::vector<Value>& values, u64 count) {
        if (count > file.left() / sizeof(Value))
            return false;
        values.resize(static_cast<std::size_t>(count));
        return values.empty() || file.read(values.data(), values.size() * sizeof(Value));
    }

    bool readText(std::string& text) {
        u32 size = 0;
        if (!read(size) || size > kLongestName || size > file.left())
            return false;
        text.resize(size);
        return file.read(text.data(), size);
    }

    bool readTile(const PictureRect& rect, TileSums& sums) {
        sums.rect = rect;
        const auto fits = [this](const PixelSums& pixel) {
            return pixel.formerKept <= pixel.kept && pixel.kept <= pixel.tried &&
                   pixel.tried <= mostSamples;
        };
        if (!readAll(sums.pixels, static_cast<u64>(rect.numPixels())) ||
            !std::all_of(sums.pixels.begin(), sums.pixels.end(), fits))
            return false;
        return fragmentSize == 0 || readFragments(sums);
    }

private:
    bool readFragments(TileSums& sums) {
        u64 size = 0;
        if (!readAll(sums.fragmentBytes, sums.pixels.size()) || !read(size) ||
            !readAll(sums.fragments, size))
            return false;
        u64 sum = 0;
        for (const u32 bytes : sums.fragmentBytes) {
            if (bytes % fragmentSize != 0)
                return false;
            sum += bytes;
        }
        return sum == size;
    }

    EnvelopeReader& file;
    const std::size_t fragmentSize;
    const u32 mostSamples;
};

/// Cuts a picture that comes row by row into the tiles of a store, which may be larger or smaller
/// than those that it comes from.
class RowCutter {
public:
    explicit RowCutter(SumStore& target) : store(target), grid(target.getGrid()) { beginBand(); }

    /// The next pixel of the picture, with the bytes of its fragments; null if there are none kept.
    void add(const PixelSums& pixel, const u32* bytes, const u8* fragments) {
        TileSums& tile = band[static_cast<std::size_t>(x / grid.getTileSize())];
        tile.pixels.push_back(pixel);
        if (bytes) {
            tile.fragmentBytes.push_back(*bytes);
            tile.fragments.insert(tile.fragments.end(), fragments, fragments + *bytes);
        }
        if (++x < grid.getArea().width())
            return;
        x = 0;
        if (++y % grid.getTileSize() == 0 || y == grid.getArea().height())
            endBand();
    }

private:
    void beginBand() {
        band.clear();
        for (int i = 0; i < grid.getColumns() && firstTile + i < grid.size(); ++i)
            band.emplace_back().rect = grid.at(firstTile + i);
    }

    void endBand() {
        for (const TileSums& tile : band)
            store.commit(firstTile++, tile);
        beginBand();
    }

    SumStore& store;
    const TileGrid& grid;
    std::vector<TileSums> band;  // the tiles beside one another that get their pixels now
    int firstTile = 0;
    int x = 0, y = 0;  // of the next pixel, from the corner of the picture
};

/// Hands the pixels of tiles that lie beside one another to a RowCutter, row by row.
void cutBand(std::span<const TileSums> band, RowCutter& cutter) {
    std::vector<std::size_t> pixels(band.size()), bytes(band.size());  // places in each tile
    for (int row = 0; row < band[0].rect.height(); ++row) {
        for (std::size_t i = 0; i < band.size(); ++i) {
            const TileSums& tile = band[i];
            for (int x = 0; x < tile.rect.width(); ++x, ++pixels[i]) {
                const bool hasFragments = !tile.fragmentBytes.empty();
                const u32* const size = hasFragments ? &tile.fragmentBytes[pixels[i]] : nullptr;
                cutter.add(tile.pixels[pixels[i]], size, tile.fragments.data() + bytes[i]);
                bytes[i] += size ? *size : 0;
            }
        }
    }
}

bool readSums(EnvelopeReader& file, u32 mostSamples, SumStore& store, SamplingTotals& totals) {
    CheckpointReader in(file, store.getFragmentSize(), mostSamples);
    u32 fragmentSize = 0;
    int tileSize = 0;
    if (!in.read(totals.dropped) || !in.readText(totals.droppedBy) || !in.read(fragmentSize) ||
        !in.read(tileSize) || totals.dropped < 0 || fragmentSize != store.getFragmentSize() ||
        tileSize < 1 || tileSize > kMaxTileSize)
        return false;
    const TileGrid grid(store.getGrid().getArea(), tileSize);
    RowCutter cutter(store);
    std::vector<TileSums> band(static_cast<std::size_t>(grid.getColumns()));
    for (int tile = 0; tile < grid.size();) {
        for (TileSums& sums : band) {
            if (!in.readTile(grid.at(tile++), sums))
                return false;
        }
        cutBand(band, cutter);
    }
    return file.left() == 0;
}

std::string asText(const PictureRect& rect) {
    return std::to_string(rect.x0) + "," + std::to_string(rect.y0) + "," + std::to_string(rect.x1) +
           "," + std::to_string(rect.y1);
}

/// Why a render can't go on with a checkpoint; empty if it can.
std::string refusal(const FileHeader& found, const FileHeader& expected, const PictureRect& area,
                    bool inBlocks, u32 mostSamples) {
    if (found.fingerprint != expected.fingerprint || found.width != expected.width ||
        found.height != expected.height)
        return "it is of another render: of another scene, or of this one before it, a file that "
               "it reads, an option or the program changed";
    if (found.rect != area)
        return "it has the pixels " + asText(found.rect) + "; expected " + asText(area) +
               (inBlocks ? ", in the blocks that --noise goes by" : "");
    if (found.samplesMost > static_cast<int>(mostSamples))
        return "it has " + std::to_string(found.samplesMost) +
               " samples in a pixel already, more than the " + std::to_string(mostSamples) +
               " that are asked for";
    return {};
}

}  // namespace

bool writeCheckpoint(const CheckpointOptions& options, SumStore& store,
                     const SamplingTotals& totals, std::string& error) {
    const TileGrid& grid = store.getGrid();
    FileHeader header = options.header;
    header.kind = FileKind::Checkpoint;
    header.rect = grid.getArea();
    char computer[32] = "";
    platform::computerName(computer, sizeof computer);
    header.parts = {{.rect = header.rect, .seconds = totals.seconds, .computer = computer}};
    return writeEnvelope(
        options.file, header,
        [&](PayloadWriter& out) {
            writeValue(out, totals.dropped);
            writeValue(out, static_cast<u32>(totals.droppedBy.size()));
            out.write(totals.droppedBy.data(), totals.droppedBy.size());
            writeValue(out, static_cast<u32>(store.getFragmentSize()));
            writeValue(out, grid.getTileSize());
            TileSums sums;
            SampleRange range;  // of what is written: threads go on meanwhile
            for (int tile = 0; tile < grid.size(); ++tile) {
                store.load(tile, sums);
                range.add(sums.getRange());
                writeTile(out, sums);
            }
            header.samplesLeast = static_cast<int>(range.least);
            header.samplesMost = static_cast<int>(range.most);
        },
        error);
}

bool hasCheckpoint(const CheckpointOptions& options) {
    std::error_code none;
    return std::filesystem::exists(platform::nativePath(options.file), none);
}

bool readCheckpoint(const CheckpointOptions& options, u32 mostSamples, SumStore& store,
                    SamplingTotals& totals, std::string& error, bool& systemFault) {
    EnvelopeReader file(options.file);
    const auto fail = [&](const std::string& reason) {
        error = reason;
        systemFault = file.isSystemFault();
        return false;
    };
    if (!file.readHeader(FileKind::Checkpoint))
        return fail(file.getError());
    const FileHeader& header = file.getHeader();
    const std::string reason =
        refusal(header, options.header, store.getGrid().getArea(), options.inBlocks, mostSamples);
    if (!reason.empty())
        return fail("\"" + options.file + "\": " + reason);
    if (!file.checkPayload())
        return fail(file.getError());
    totals.seconds = header.seconds();
    if (!readSums(file, mostSamples, store, totals))
        return fail("\"" + options.file + "\": its content is not what its header says");
    return true;
}

}  // namespace Tarnkit
