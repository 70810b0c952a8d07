#include "pelk/host/render/merge_job.h"

#include <algorithm>
#include <cstring>
#include <set>

#include "pelk/base/thrown_text.h"
#include "pelk/contract/channel_alias.h"
#include "pelk/host/picture/coverage.h"
#include "pelk/host/picture/region_file.h"
#include "pelk/host/render/number_ranges.h"
#include "pelk/support/regions/channel_kinds.h"
#include "pelk/support/regions/channel_set.h"

namespace Tarnkit {

namespace {

/// One merge. Every step returns false after a failure, with `result` filled.
class Merge {
public:
    Merge(const MergeOptions& options_, const std::atomic<bool>& stop_, Picture& picture_,
          MergeResult& result_)
        : options(options_), stop(stop_), picture(picture_), result(result_) {}

    bool run() {
        if (!readHeaders() || !checkStrangers() || !checkSamples())
            return false;
        describe();
        return checkCoverage() && beginPicture() && addFiles();
    }

private:
    bool fail(const std::string& text) {
        result.error = text;
        return false;
    }
    bool fail(const EnvelopeReader& file, const std::string& text) {
        result.systemFault = file.isSystemFault();
        return fail(text);
    }
    std::string quoted(std::size_t file) const { return "\"" + options.files[file] + "\""; }

    bool readHeaders();
    bool checkStrangers();
    bool checkSamples();
    void describe();
    bool checkCoverage();
    void findMissingTiles();
    bool beginPicture();
    bool addFiles();
    bool addFile(std::size_t index, Coverage& coverage);
    int placePixels(int index, Coverage& coverage);
    void stamp(const FilePart& part, int channel);

    const MergeOptions& options;
    const std::atomic<bool>& stop;
    Picture& picture;
    MergeResult& result;
    std::vector<FileHeader> headers;
    RegionPixels pixels;  // of the file in hand
};

bool Merge::readHeaders() {
    for (const std::string& name : options.files) {
        EnvelopeReader file(name);
        std::string error;
        if (!readRegionHeader(file, error))
            return fail(file, error);
        headers.push_back(file.getHeader());
    }
    return true;
}

/// In what two headers differ that can't be of one picture.
std::string differenceOf(const FileHeader& a, const FileHeader& b) {
    const auto sizeOf = [](const FileHeader& header) {
        return std::to_string(header.width) + "x" + std::to_string(header.height);
    };
    if (a.version != b.version)
        return "they were rendered by versions " + a.version + " and " + b.version;
    if (sizeOf(a) != sizeOf(b))
        return "the sizes are " + sizeOf(a) + " and " + sizeOf(b);
    if (a.channels != b.channels)
        return "the channels differ";
    if (a.scene != b.scene)
        return "the scenes are \"" + a.scene + "\" and \"" + b.scene + "\"";
    return "the scene, a setting, or a file that the scene reads is another one";
}

bool Merge::checkStrangers() {
    const FileHeader& first = headers.front();
    for (std::size_t i = 1; i < headers.size(); ++i) {
        const FileHeader& header = headers[i];
        const bool same = header.fingerprint == first.fingerprint && header.width == first.width &&
                          header.height == first.height && header.channels == first.channels &&
                          header.halfFloat == first.halfFloat;
        if (!same)
            return fail(quoted(i) + " is of another picture than " + quoted(0) + ": " +
                        differenceOf(first, header));
    }
    return true;
}

bool Merge::checkSamples() {
    const auto least = std::min_element(
        headers.begin(), headers.end(),
        [](const FileHeader& a, const FileHeader& b) { return a.samplesLeast < b.samplesLeast; });
    const auto most = std::max_element(
        headers.begin(), headers.end(),
        [](const FileHeader& a, const FileHeader& b) { return a.samplesMost < b.samplesMost; });
    if (least->samplesLeast == most->samplesMost || options.allowUneven)
        return true;
    const auto nameOf = [&](auto header) {
        return quoted(static_cast<std::size_t>(header - headers.begin()));
    };
    return fail("unequal numbers of samples per pixel: " + nameOf(least) + " has " +
                std::to_string(least->samplesLeast) + ", " + nameOf(most) + " has " +
                std::to_string(most->samplesMost) + "; --allow-uneven merges them as they are");
}

/// Says of the whole picture what the headers say of its parts, without the rectangle.
void Merge::describe() {
    FileHeader& merged = result.header = headers.front();
    merged.parts.clear();
    for (const FileHeader& header : headers) {
        merged.samplesAsked = std::max(merged.samplesAsked, header.samplesAsked);
        merged.samplesLeast = std::min(merged.samplesLeast, header.samplesLeast);
        merged.samplesMost = std::max(merged.samplesMost, header.samplesMost);
        if (header.ended != kFinished)
            merged.ended = header.ended;
    }
}

bool Merge::checkCoverage() {
    FileHeader& merged = result.header;
    Coverage coverage(merged.width, merged.height);
    for (const FileHeader& header : headers) {
        bool isNew = false;
        coverage.add(header.rect, 0, [&](int, int, int, int owner) {
            isNew = isNew || owner == Coverage::kNobody;
        });
        for (const FilePart& part : header.parts) {
            // A part that two merged files have was rendered once.
            const bool isKnown =
                std::find(merged.parts.begin(), merged.parts.end(), part) != merged.parts.end();
            if (isNew && !isKnown)
                merged.parts.push_back(part);
        }
    }
    merged.rect = coverage.bounds();
    result.missing = coverage.gaps({0, 0, merged.width, merged.height});
    if (result.missing.empty())
        return true;
    findMissingTiles();
    const std::string names =
        quoted(0) + (headers.size() == 1 ? " leaves" : " and the others leave");
    if (!options.allowMissing)
        return fail(names + " a gap: " + result.missingTexts().front() +
                    "; --allow-missing writes what is there");
    if (options.rectangular && !coverage.gaps(merged.rect).empty())
        return fail(names + " a gap inside what they hold: " + result.missingTexts().front() +
                    "; a region file takes a rectangle");
    return true;
}

/// The tiles that are missing, if all files have tiles of the same cut.
void Merge::findMissingTiles() {
    std::set<int> cuts, there;
    for (const FileHeader& header : headers) {
        for (const FilePart& part : header.parts) {
            cuts.insert(part.tiles);
            there.insert(part.tile);
        }
    }
    result.tiles = cuts.size() == 1 ? *cuts.begin() : 0;
    for (int tile = 1; tile <= result.tiles; ++tile) {
        if (!there.contains(tile))
            result.missingTiles.push_back(tile);
    }
}

/// A channel as the header names it, with the value for "nothing hit" that a render starts from.
std::unique_ptr<RenderChannel> channelOf(const FileChannel& channel) {
    std::unique_ptr<RenderChannel> known = newChannel(channel.alias);
    return known ? std::move(known)
                 : newCustomChannel(channel.name, static_cast<ChannelType>(channel.type));
}

bool Merge::beginPicture() {
    const FileHeader& header = result.header;
    ChannelSet channels;
    for (const FileChannel& channel : header.channels) {
        const int index = channels.add(channelOf(channel));
        const bool same = index == channels.size() - 1 &&
                          channels.at(index)->getName() == channel.name &&
                          channels.at(index)->getAlias() == channel.alias &&
                          channels.at(index)->getType() == channel.type;
        if (!same)
            return fail(quoted(0) + ": there can be no channel \"" + channel.name + "\" in it");
    }
    if (channels.size() < kFirstExtraChannel ||
        header.channels[kBeautyChannel].alias != kAliasImageColor ||
        header.channels[kAlphaChannel].alias != kAliasImageAlpha)
        return fail(quoted(0) + ": expected colour and alpha as its first channels");
    if (options.hostStamp)
        channels.add(newChannel(kAliasHostStamp));
    picture.begin(header.width, header.height, channels.getList());
    return true;
}

/// Calls `visit(target, source, bytes)` for the pixels of a row in one channel of the picture.
template <class Visit>
void forEachRun(Picture& picture, int channel, const RegionPixels& pixels, const PictureRect& rect,
                int y, int x0, int x1, Visit visit) {
    ChannelBuffer& buffer = *picture.getRegion().getChannels()[channel].buffer;
    const auto size = static_cast<std::size_t>(buffer.getItemSize());
    const std::int64_t first = std::int64_t{y - rect.y0} * (rect.x1 - rect.x0) + (x0 - rect.x0);
    const u8* source =
        pixels.channel(static_cast<std::size_t>(channel)) + static_cast<std::size_t>(first) * size;
    buffer.forEachRun(y * picture.getWidth() + x0, x1 - x0, [&](u8* target, int count) {
        const std::size_t bytes = static_cast<std::size_t>(count) * size;
        visit(target, source, bytes);
        source += bytes;
    });
}

bool Merge::addFiles() {
    Coverage coverage(picture.getWidth(), picture.getHeight());
    for (std::size_t i = 0; i < headers.size(); ++i) {
        result.stopped = stop;
        if (result.stopped || !addFile(i, coverage))
            return false;
    }
    const int channel = picture.getRegion().findChannelByAlias(kAliasHostStamp);
    // Of renders that overlap the first is seen, as its pixels are those of the picture.
    const std::vector<FilePart>& parts = result.header.parts;
    for (auto part = parts.rbegin(); part != parts.rend() && channel >= 0; ++part)
        stamp(*part, channel);
    return true;
}

bool Merge::addFile(std::size_t index, Coverage& coverage) {
    EnvelopeReader file(options.files[index]);
    std::string error;
    if (!readRegionHeader(file, error))
        return fail(file, error);
    if (file.getHeader() != headers[index])
        return fail(quoted(index) + " was changed while it was read");
    if (!pixels.read(file, error))
        return fail(file, error);
    const int rival = placePixels(static_cast<int>(index), coverage);
    return rival == Coverage::kNobody ||
           fail(quoted(index) + " overlaps " + quoted(static_cast<std::size_t>(rival)) +
                ", and has other pixels there");
}

/// Copies the pixels of the file in hand that are new, and compares the others with what is there.
/// The answer is a file that has other pixels in the same place, or kNobody.
int Merge::placePixels(int index, Coverage& coverage) {
    const FileHeader& header = headers[static_cast<std::size_t>(index)];
    int rival = Coverage::kNobody;
    coverage.add(header.rect, index, [&](int y, int x0, int x1, int owner) {
        const bool isNew = owner == Coverage::kNobody;
        int channel = 0;
        for (const FileChannel& kind : header.channels) {
            const bool mayDiffer = kind.alias == kAliasHostStamp;
            forEachRun(picture, channel++, pixels, header.rect, y, x0, x1,
                       [&](u8* target, const u8* source, std::size_t bytes) {
                           if (isNew)
                               std::memcpy(target, source, bytes);
                           else if (!mayDiffer && std::memcmp(target, source, bytes) != 0)
                               rival = owner;
                       });
        }
    });
    return rival;
}

/// Lets a part show the name of its computer, as a region does that comes from there in a block.
void Merge::stamp(const FilePart& part, int channel) {
    const PictureRect& r = part.rect;
    const TransferChannel colour{.type = kChannelColor};
    TransferHeader header{.x0 = r.x0, .y0 = r.y0, .x1 = r.x1, .y1 = r.y1, .channelCount = 1};
    part.computer.copy(header.hostName, sizeof header.hostName - 1);
    std::vector<u8> block(
        static_cast<std::size_t>(transferSize(std::span(&colour, 1), header.pixelCount())));
    std::memcpy(block.data(), &header, sizeof header);
    std::memcpy(block.data() + sizeof header, &colour.type, sizeof colour.type);
    PKRegionData region;
    region.setNumChannels(1);
    region.setChannelInfo(0, kChannelColor, kAliasHostStamp, "");
    region.setBuffer(block.data());
    picture.getRegion().copyChannelRect(*region.getChannels()[0].buffer, channel, r.x0, r.y0,
                                        r.x1 - r.x0, r.y1 - r.y0);
}

}  // namespace

std::vector<std::string> MergeResult::missingTexts() const {
    if (!missingTiles.empty())
        return {"tiles " + numberRanges(missingTiles, ",") + " of " + std::to_string(tiles)};
    std::vector<std::string> texts;
    for (const PictureRect& r : missing)
        texts.push_back("region " + std::to_string(r.x0) + "," + std::to_string(r.y0) + "," +
                        std::to_string(r.x1) + "," + std::to_string(r.y1));
    return texts;
}

MergeResult mergeRegions(const MergeOptions& options, const std::atomic<bool>& stop,
                         Picture& picture) {
    MergeResult result;
    try {
        result.ok = Merge(options, stop, picture, result).run();
    } catch (...) {
        // Of what is called here nothing throws but for lack of memory.
        result.systemFault = true;
        result.error = thrownText();
    }
    return result;
}

}  // namespace Tarnkit
