#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "pelk/host/render/render_job.h"
#include "pelk/host/scene/host_session.h"
#include "pelk/host/scene/scene_reader.h"
#include "temporary_directory.h"

namespace Tarnkit {

/// Renders small scenes with the built module, as any host would.
class RenderFixture : public testing::Test {
protected:
    RenderFixture() { session.loadModules(PELK_MODULE_DIR "/", nullptr); }

    std::unique_ptr<Scene> read(const std::string& plugins, const std::string& settings) {
        directory.write("scene.json", R"({"settings": {)" + settings + R"(}, "plugins": {
            "camera": {"type": "CameraPerspective", "position": [0, 0, 5], "fov": 30},)" +
                                          plugins + "}}");
        std::string error;
        auto scene = readScene(session, directory.file("scene.json"), {}, error);
        EXPECT_TRUE(scene) << error;
        return scene;
    }

    static RenderOptions optionsOf(int samples, int width = 16, int height = 16) {
        RenderOptions options;
        options.width = width;
        options.height = height;
        options.samples = samples;
        options.threads = 2;
        return options;
    }
    void render(Scene& scene, Picture& picture, const RenderOptions& options) {
        const RenderResult result = renderScene(scene, options, nullptr, nullptr, false, picture);
        EXPECT_TRUE(result.ok) << result.error;
    }
    void render(Scene& scene, Picture& picture, int samples) {
        render(scene, picture, optionsOf(samples));
    }
    /// The pixels of a channel, row by row. `Value` is what the channel holds.
    template <class Value>
    static std::vector<Value> pixelsOf(Picture& picture, int channel) {
        ChannelBuffer& buffer = *picture.getRegion().getChannels()[channel].buffer;
        EXPECT_EQ(buffer.getItemSize(), static_cast<int>(sizeof(Value)));
        std::vector<Value> pixels(static_cast<std::size_t>(picture.getWidth()) *
                                  static_cast<std::size_t>(picture.getHeight()));
        for (std::size_t i = 0; i < pixels.size(); ++i)
            std::memcpy(&pixels[i], buffer.item(static_cast<int>(i)), sizeof(Value));
        return pixels;
    }

    /// The mean of the picture of a scene.
    Color meanOf(const std::string& plugins, const std::string& settings, int samples = 256) {
        const auto scene = read(plugins, settings);
        if (!scene)
            return {};
        Picture picture;
        render(*scene, picture, samples);
        return meanOf(pixelsOf<Color>(picture, 0));
    }
    static Color meanOf(const std::vector<Color>& pixels) {
        double sum[3] = {};
        for (const Color& c : pixels) {
            sum[0] += c.r;
            sum[1] += c.g;
            sum[2] += c.b;
        }
        const double n = double(pixels.size());
        return {float(sum[0] / n), float(sum[1] / n), float(sum[2] / n)};
    }

    static void expectNear(Color c, Color expected, float tolerance) {
        EXPECT_NEAR(c.r, expected.r, tolerance);
        EXPECT_NEAR(c.g, expected.g, tolerance);
        EXPECT_NEAR(c.b, expected.b, tolerance);
    }

    TemporaryDirectory directory;
    HostSession session;
};

}  // namespace Tarnkit
