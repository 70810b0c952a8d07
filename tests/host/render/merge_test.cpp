#include "pelk/host/render/merge_job.h"

#include <functional>
#include <random>

#include "host/render/render_fixture.h"
#include "pelk/contract/channel_alias.h"
#include "pelk/host/picture/region_file.h"

namespace Tarnkit {
namespace {

using testing::AllOf;
using testing::HasSubstr;

constexpr int kWidth = 23, kHeight = 17;

class MergeTest : public RenderFixture {
protected:
    MergeTest() {
        render(R"("light": {"type": "LightPoint", "position": [0, 3, 3]},
                  "ball": {"type": "GeomSphere", "material": "white"})",
               "", optionsOf(1, kWidth, kHeight, {"depth", "render_id", "normals", "host_stamp"}));
    }

    FileHeader headerOf(const PictureRect& rect) {
        FileHeader header{};
        header.fingerprint = {1, 2};
        header.width = kWidth;
        header.height = kHeight;
        header.rect = rect;
        header.samplesAsked = header.samplesLeast = header.samplesMost = 4;
        header.scene += "a.json";
        header.version += "1";
        header.channels = fileChannelsOf(whole);
        header.parts = {{rect, 0, 0, 0.5, "abc"}};
        return header;
    }
    /// Writes pixels of the whole picture, and returns the file's full name.
    std::string write(const std::string& name, const FileHeader& header) {
        std::string error;
        EXPECT_TRUE(writeRegionFile(directory.file(name), header, whole, error)) << error;
        return directory.file(name);
    }
    std::string write(const std::string& name, const PictureRect& rect) {
        return write(name, headerOf(rect));
    }
    MergeResult merge(const MergeOptions& options) {
        merged.emplace();
        return mergeRegions(options, false, *merged);
    }
    /// The pixels of all channels but the stamp, as they stand in memory.
    static std::string bytesOf(Picture& from) {
        std::string bytes;
        for (const ChannelRecord& record : from.getRegion().getChannels()) {
            if (record.alias != kAliasHostStamp)
                record.buffer->forEachRun(0, kWidth * kHeight, [&](const u8* data, int count) {
                    bytes.append(reinterpret_cast<const char*>(data),
                                 static_cast<std::size_t>(count) * record.buffer->getItemSize());
                });
        }
        return bytes;
    }

    Picture& whole = picture;
    std::optional<Picture> merged;
};

TEST_F(MergeTest, AnyCutInAnyOrderAndWithRepeatsMakesTheWhole) {
    std::mt19937 random(3);
    for (int round = 0; round < 12; ++round) {
        // Cut in two again and again, each at some place of the longer side.
        std::vector<PictureRect> cut{{0, 0, kWidth, kHeight}};
        for (unsigned more = random() % 9; more > 0; --more) {
            PictureRect& r = cut[random() % cut.size()];
            PictureRect rest = r;
            const bool wide = r.x1 - r.x0 > r.y1 - r.y0;
            int &begin = wide ? rest.x0 : rest.y0, &end = wide ? r.x1 : r.y1;
            if (end - begin < 2)
                continue;
            begin += 1 + static_cast<int>(random() % static_cast<unsigned>(end - begin - 1));
            end = begin;
            cut.push_back(rest);
        }
        const double seconds = 0.5 * static_cast<double>(cut.size());
        if (round % 2 == 0)
            cut.insert(cut.begin() + random() % cut.size(), cut.back());
        MergeOptions options;
        for (std::size_t i = 0; i < cut.size(); ++i)
            options.files.push_back(write(std::to_string(i) + ".pkr", cut[i]));
        std::shuffle(options.files.begin(), options.files.end(), random);
        const MergeResult result = merge(options);
        ASSERT_TRUE(result.ok) << result.error;
        ASSERT_EQ(bytesOf(*merged), bytesOf(whole)) << round;
        EXPECT_EQ(result.header.seconds(), seconds) << "of a render that was there already";
        EXPECT_EQ(result.header.rect, (PictureRect{0, 0, kWidth, kHeight}));
        EXPECT_EQ(result.header.scene, "a.json");
        EXPECT_EQ(result.header.samplesAsked, 4);
    }
}

TEST_F(MergeTest, WhatIsNoPartOfThePictureIsRefusedByName) {
    const PictureRect lower{0, 9, kWidth, kHeight};
    const std::string good = write("good.pkr", {0, 0, kWidth, 9}), a = directory.file("a.pkr");
    const auto expectRefused = [&](const std::string& file, const char* says) {
        const MergeResult result = merge({.files = {good, file}});
        EXPECT_FALSE(result.ok || result.systemFault);
        EXPECT_THAT(result.error, HasSubstr(says));
    };
    const std::pair<const char*, std::function<void(FileHeader&)>> strangers[] = {
        {"a.pkr\" is of another picture", [](FileHeader& h) { h.fingerprint.high = 3; }},
        {"the sizes are 23x17 and 24x17", [](FileHeader& h) { ++h.width; }},
        {"a.pkr\" has 3, \"", [](FileHeader& h) { h.samplesLeast = 3; }},
        {"a gap: region 20,9,23,17", [](FileHeader& h) { h.rect.x1 = h.parts[0].rect.x1 = 20; }},
        {"a gap: region 0,9,23,10", [](FileHeader& h) { h.rect.y0 = h.parts[0].rect.y0 = 10; }},
    };
    for (const auto& [says, change] : strangers) {
        FileHeader header = headerOf(lower);
        change(header);
        expectRefused(write("a.pkr", header), says);
    }
    std::string bytes = directory.read(write("a.pkr", lower));
    bytes[bytes.size() - 99] ^= 4;
    directory.write("a.pkr", bytes);
    expectRefused(a, "a.pkr\": its content is damaged");
    directory.write("a.pkr", bytes.substr(0, 2000));
    expectRefused(a, "a.pkr\": it should have");
    expectRefused(directory.file("none.pkr"), "none.pkr\": No such file");

    // Check sums keep out damage, not somebody who computes them as well: pixels that are not those
    // of the header are refused before room is made for them.
    const std::pair<PictureRect, const char*> forged[] = {
        {{1, 0, kWidth + 1, kHeight}, "other rectangles"},
        {{0, 0, 65536, 4096}, "expected 15032385620"}};
    for (const auto& [rect, says] : forged) {
        FileHeader header = headerOf(rect);
        header.width = rect.x1;
        header.height = rect.y1;
        std::string error;
        EXPECT_TRUE(writeEnvelope(
            a, header,
            [&](PayloadWriter& out) {
                whole.getRegion().writeBuffer([&](const void* pixels, std::size_t count) {
                    out.write(pixels, count);
                    return true;
                });
            },
            error));
        EXPECT_THAT(merge({.files = {a}, .allowMissing = true}).error, HasSubstr(says));
    }
    FileHeader header = headerOf({0, 0, kWidth, kHeight});
    std::swap(header.channels[kBeautyChannel], header.channels[kAlphaChannel]);
    EXPECT_THAT(merge({.files = {write("a.pkr", header)}}).error, HasSubstr("first channels"));

    // The same pixels, but for one.
    whole.getRegion().getChannels()[2].buffer->item(kWidth * 8 + 22)[0] ^= 1;
    const std::string bit = write("bit.pkr", {22, 8, kWidth, kHeight});
    EXPECT_THAT(merge({.files = {good, bit}, .allowMissing = true}).error,
                AllOf(HasSubstr("bit.pkr\" overlaps"), HasSubstr("good.pkr")));
}

TEST_F(MergeTest, WhatIsMissingIsToldAndStaysAsIfNothingWereHit) {
    const auto tile = [&](int index, int count) {
        FileHeader header =
            headerOf({0, kHeight * (index - 1) / count, kWidth, kHeight * index / count});
        header.parts[0].tile = index;
        header.parts[0].tiles = count;
        header.samplesLeast = index;
        header.samplesMost = count;
        return write(std::to_string(index) + ".pkr", header);
    };
    MergeOptions options{.files = {tile(4, 8), tile(3, 8)}, .allowMissing = true};
    EXPECT_THAT(merge(options).error, HasSubstr("unequal numbers of samples"));
    options.allowUneven = true;
    const MergeResult result = merge(options);
    ASSERT_TRUE(result.ok) << result.error;
    EXPECT_THAT(result.missingTexts(), testing::ElementsAre("tiles 1-2,5-8 of 8"));
    EXPECT_EQ(result.header.rect, (PictureRect{0, 4, kWidth, 8}));
    EXPECT_EQ(result.header.samplesLeast, 3);
    EXPECT_EQ(pixelsOf<float>(*merged, 2)[0], 1e18f);

    options.rectangular = true;
    EXPECT_TRUE(merge(options).ok);
    options.files.push_back(tile(8, 8));
    EXPECT_THAT(merge(options).error, HasSubstr("takes a rectangle"));
    // Of a part that was merged before, its own tiles count.
    options.files = {write("band.pkr", result.header), tile(5, 8)};
    EXPECT_THAT(merge(options).missingTexts(), testing::ElementsAre("tiles 1-2,6-8 of 8"));
    options.files.push_back(write("odd.pkr", {0, 0, 5, 1}));
    EXPECT_THAT(merge(options).missingTexts(), testing::Contains("region 5,0,23,1"));
}

TEST_F(MergeTest, EachPartShowsTheNameOfItsComputer) {
    FileHeader header = headerOf({0, 0, kWidth, kHeight});
    const PictureRect left{0, 0, 11, kHeight}, right{11, 0, kWidth, kHeight};
    header.parts = {{left, 0, 0, 1, "abc"}, {right, 0, 0, 1, ""}, {left, 0, 0, 1, "unseen"}};
    ASSERT_TRUE(merge({.files = {write("a.pkr", header)}, .hostStamp = true}).ok);
    const int channel = merged->getRegion().findChannelByAlias(kAliasHostStamp);
    ASSERT_EQ(merged->getRegion().findChannelByName("host_stamp"), channel);
    const std::vector<Color> stamp = pixelsOf(*merged, channel);
    // The hash of "abc" ends in 44,252, a hue between blue and red.
    const float violet = static_cast<float>(44252 * 0.005493164 / 60 - 4) * 0.18f;
    const Color* const lastRow = &stamp[kWidth * (kHeight - 1)];
    expectNear(lastRow[0], {violet, 0, 0.18f}, 1e-5f);
    EXPECT_EQ(lastRow[10], lastRow[0]);
    EXPECT_NE(lastRow[11], lastRow[0]);
    EXPECT_NE(std::count(stamp.begin(), stamp.end(), Color(1)), 0) << "no text";
}

}  // namespace
}  // namespace Tarnkit
