// Renders that are cut into passes, stopped, kept and gone on with, or ended by their noise.

#include <chrono>
#include <random>
#include <thread>

#include "host/render/render_fixture.h"
#include "pelk/host/render/checkpoint.h"
#include "pelk/host/render/sample_goal.h"
#include "pelk/host/render/tile_worker.h"

namespace Tarnkit {
namespace {

class PassesTest : public RenderFixture {
protected:
    PassesTest()
        : scene(read(R"(
        "mirror": {"type": "MtlDiffuse", "diffuse": [0.2, 0.3, 0.4], "reflection": [0.5, 0.5, 0.5]},
        "veil": {"type": "MtlDiffuse", "transparency": [0.5, 0.3, 1]},
        "ball": {"type": "GeomSphere", "material": "mirror"},
        "curtain": {"type": "GeomQuad", "material": "veil", "translate": [0, 0, 2]},
        "matte": {"type": "MtlWrapper", "base_material": "mirror", "matte_surface": true,
                  "shadows": true, "shadow_tint_color": [0.3, 0.1, 0]},
        "faint": {"type": "MtlRenderStats", "base_mtl": "matte", "visibility": 0.37},
        "floor": {"type": "GeomQuad", "material": "faint", "width": 9, "height": 9,
                  "rotate": [-90, 0, 0], "translate": [0, -1, 0]},
        "lamp": {"type": "LightSphere", "radius": 0.3, "position": [1, 1, 0]},
        "dome": {"type": "LightDome", "intensity": 0.3})")) {
        kept.file = directory.file("kept.pkc");
        kept.header.width = 45;
        kept.header.height = 33;
        kept.resume = true;
    }

    static RenderOptions optionsOf(int samples) {
        return RenderFixture::optionsOf(samples, 45, 33, {"all"});
    }
    /// Renders until it is finished or `milliseconds` are over.
    RenderResult renderFor(int milliseconds, const RenderOptions& options) {
        std::atomic<bool> stop{false}, ended{false};
        std::thread clock([&] {
            const auto end =
                std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
            while (!ended && std::chrono::steady_clock::now() < end)
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            stop = true;
        });
        const RenderResult result = renderScene(*scene, options, nullptr, nullptr, stop, picture);
        ended = true;
        clock.join();
        return result;
    }
    /// Renders with the checkpoint, which is to be refused with these words and left as it is.
    void expectRefused(const RenderOptions& options, const std::string& words) {
        const std::string before = directory.read("kept.pkc");
        const RenderResult result = renderScene(*scene, options, nullptr, nullptr, false, picture);
        EXPECT_FALSE(result.ok);
        EXPECT_THAT(result.error, testing::HasSubstr(words));
        EXPECT_EQ(directory.read("kept.pkc"), before);
    }
    static void expectSameBits(Picture& a, Picture& b) {
        for (int i = 0; i < a.getRegion().getNumChannels(); ++i) {
            ChannelBuffer& left = *a.getRegion().getChannels()[i].buffer;
            ChannelBuffer& right = *b.getRegion().getChannels()[i].buffer;
            for (int pixel = 0; pixel < 45 * 33; ++pixel)
                ASSERT_EQ(0, std::memcmp(left.item(pixel), right.item(pixel),
                                         static_cast<std::size_t>(left.getItemSize())))
                    << a.getRegion().getChannels()[i].name << " at " << pixel;
        }
    }

    std::unique_ptr<Scene> scene;
    CheckpointOptions kept;
};

TEST_F(PassesTest, ThreadThatIsStoppedBeforeItsFirstSampleTakesNone) {
    const RenderOptions options = optionsOf(1);
    RenderSetup setup(*scene, options, 1, nullptr);
    std::string error;
    ASSERT_TRUE(setup.prepare(error)) << error;
    const PictureRect tile{0, 0, 8, 8};
    TileWorker worker(setup, tile, 0);
    TileSums sums(tile, worker.needsFragments());
    int abort = 1;
    const std::atomic<bool> stop{false};
    const Worker thread(0, abort);
    EXPECT_EQ(worker.sample(sums, {.samples = 1}, {stop, thread, {}}), 0);
    EXPECT_EQ(worker.sample(sums, {.samples = 1}, {}), 64);
}

TEST_F(PassesTest, BitsAreTheSameHoweverARenderIsCutAskedForAndInterrupted) {
    std::minstd_rand random(7);
    const auto below = [&](int end) { return static_cast<int>(random() % unsigned(end)); };
    Picture whole, fewer;
    render(*scene, fewer, optionsOf(50));
    render(*scene, whole, optionsOf(77));
    int interruptions = 0;
    for (const int samples : {50, 77}) {
        RenderResult result;
        double milliseconds = 2.0;  // more and more, or slow machines would never end
        do {
            RenderOptions options = optionsOf(samples);
            options.checkpoint = &kept;
            options.threads = 1 + below(3);
            options.tileSize = 1 + below(50);
            options.order = below(2) ? SampleOrder::Passes : SampleOrder::Tiles;
            result = renderFor(static_cast<int>(milliseconds *= 1.2), options);
            ASSERT_TRUE(result.ok) << result.error;
            interruptions += result.end == RenderEnd::Stopped && result.samples > 0;
        } while (result.end == RenderEnd::Stopped);
        EXPECT_EQ(result.samples, 45 * 33 * samples);
        expectSameBits(picture, samples == 50 ? fewer : whole);
    }
    EXPECT_GT(interruptions, 1);
    RenderOptions options = optionsOf(77);
    options.checkpoint = &kept;
    kept.header.fingerprint.low = 1;
    expectRefused(options, "of another render");
    kept.header.fingerprint.low = 0;
    options.region = {0, 0, 45, 32};
    expectRefused(options, "the pixels 0,0,45,33; expected 0,0,45,32");
    options.region = {};
    options.samples = 76;
    expectRefused(options, "77 samples in a pixel already");

    options = RenderFixture::optionsOf(50, 45, 33);  // no channels but colour and alpha
    options.tileSize = 1;
    options.order = SampleOrder::Tiles;
    render(*scene, picture, options);
    expectSameBits(picture, fewer);
}

TEST_F(PassesTest, PicturesInWorkAreWholeAndShowWhatIsInWork) {
    RenderOptions options = optionsOf(1 << 24);
    options.interimSeconds = 0.001;
    options.threads = 4;
    options.tileSize = 23;  // four of them
    int shown = 0;
    bool isShaded = false;
    options.interim = [&](Picture& interim, const RenderResult& soFar) {
        ++shown;
        EXPECT_GT(soFar.samplesOfPixels.least, 0u);
        // The dome in this corner is grey; in tiles that threads have it is shaded blue.
        const Color corner = pixelsOf(interim)[0];
        EXPECT_GT(corner.b, 0.0f);
        isShaded |= corner.b > corner.r * 1.5f;
    };
    EXPECT_EQ(renderFor(900, options).end, RenderEnd::Stopped);
    EXPECT_GT(shown, 0);
    EXPECT_TRUE(isShaded);
}

TEST_F(PassesTest, ADamagedCheckpointIsRefusedEvenIfItsCheckSumHolds) {
    RenderOptions options = optionsOf(1);
    options.checkpoint = &kept;
    render(*scene, picture, options);
    EnvelopeReader file(kept.file);
    ASSERT_TRUE(file.readHeader(FileKind::Checkpoint));
    const FileHeader header = file.getHeader();
    std::string payload(file.left(), '\0'), error;
    ASSERT_TRUE(file.read(payload.data(), payload.size()));
    const auto write = [&](const std::string& content) {
        ASSERT_TRUE(writeEnvelope(
            kept.file, header,
            [&](PayloadWriter& out) { out.write(content.data(), content.size()); }, error));
    };
    std::minstd_rand random(3);
    for (int i = 0; i < 40; ++i) {
        write(payload.substr(0, i < 20 ? std::size_t(i) : random() % payload.size()));
        expectRefused(options, "kept.pkc");
        // Some sums are as good as others: what is refused or not, nothing may break.
        std::string changed = payload;
        for (std::size_t at = random() % (i < 20 ? 4000 : changed.size()), n = 0; n < 4; ++n)
            changed[std::min(at + n, changed.size() - 1)] = static_cast<char>(random());
        write(changed);
        renderScene(*scene, options, nullptr, nullptr, false, picture);
    }
    write(payload + '\0');
    expectRefused(options, "kept.pkc");
}

TEST_F(PassesTest, NoiseEndsWhereItWasAskedForInBlocksThatDontDependOnTheCut) {
    constexpr float kLevel = 0.008f;
    RenderOptions options = RenderFixture::optionsOf(4096, 45, 33);
    options.noise = kLevel;
    Picture whole;
    render(*scene, whole, options);
    options.order = SampleOrder::Tiles;
    options.tileSize = 7;
    render(*scene, picture, options);
    expectSameBits(whole, picture);
    options.region = {13, 5, 40, 30};
    render(*scene, picture, options);
    const auto pixels = pixelsOf(whole), region = pixelsOf(picture);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const std::size_t x = i % 45, y = i / 45;
        const bool inside = x >= 13 && x < 40 && y >= 5 && y < 30;
        EXPECT_EQ(region[i], inside ? pixels[i] : Color()) << x << "," << y;
    }

    render(*scene, picture, RenderFixture::optionsOf(2048, 45, 33));
    const auto truth = pixelsOf(picture);
    double sum = 0.0;
    for (const std::size_t corner : {0, 16, 16 * 45, 16 * 45 + 16}) {
        double error = 0.0, light = 0.0;
        for (std::size_t i = 0; i < 256; ++i) {
            const std::size_t at = corner + i / 16 * 45 + i % 16;
            const Color off = pixels[at] - truth[at];
            error += off.r * off.r + off.g * off.g + off.b * off.b;
            light += truth[at].r + truth[at].g + truth[at].b;
        }
        sum += error / 768 / std::pow(light / 768, 2);
    }
    const double measured = std::sqrt(sum / 4);
    EXPECT_LT(measured, kLevel * 1.5);
    EXPECT_GT(measured, kLevel / 2.5);  // smooth pictures end better than they were asked to
}

}  // namespace
}  // namespace Tarnkit
