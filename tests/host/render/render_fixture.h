#pragma once

#include <gmock/gmock.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "pelk/host/render/render_job.h"
#include "pelk/host/scene/host_session.h"
#include "pelk/host/scene/scene_reader.h"
#include "temporary_directory.h"

namespace Tarnkit {

/// Renders small scenes with the built module, as any host would. Every scene has a camera at
/// (0, 0, 5) that looks at the origin, and the materials "white", "black" and "silver", a mirror.
class RenderFixture : public testing::Test {
protected:
    RenderFixture() { session.loadModules(PELK_MODULE_DIR "/", nullptr); }

    std::unique_ptr<Scene> read(const std::string& plugins, const std::string& settings = "") {
        directory.write("scene.json", R"({"settings": {)" + settings + R"(}, "plugins": {
            "camera": {"type": "CameraPerspective", "position": [0, 0, 5], "fov": 30},
            "white": {"type": "MtlDiffuse", "diffuse": [1, 1, 1]},
            "black": {"type": "MtlDiffuse", "diffuse": [0, 0, 0]},
            "silver": {"type": "MtlDiffuse", "diffuse": [0, 0, 0], "reflection": [1, 1, 1]},)" +
                                          plugins + "}}");
        std::string error;
        auto scene = readScene(session, directory.file("scene.json"), {}, error);
        EXPECT_TRUE(scene) << error;
        return scene;
    }
    /// The entry of a square around the z axis that fills the picture; `more` are parameters.
    static std::string wallOf(const std::string& material, const std::string& more = "") {
        return R"("wall": {"type": "GeomQuad", "width": 200, "height": 200, "material": ")" +
               material + "\"" + more + "}";
    }

    static RenderOptions optionsOf(int samples, int width = 16, int height = 16,
                                   std::vector<std::string> channels = {}) {
        RenderOptions options;
        options.width = width;
        options.height = height;
        options.samples = samples;
        options.threads = 2;
        options.channels = std::move(channels);
        return options;
    }
    void render(Scene& scene, Picture& out, const RenderOptions& options) {
        const RenderResult result = renderScene(scene, options, nullptr, nullptr, false, out);
        EXPECT_TRUE(result.ok) << result.error;
    }
    /// Renders a scene into `picture`.
    void render(const std::string& plugins, const std::string& settings,
                const RenderOptions& options) {
        const auto scene = read(plugins, settings);
        if (scene)
            render(*scene, picture, options);
    }
    /// The pixels of a channel, row by row. `Value` is what the channel holds.
    template <class Value = Color>
    static std::vector<Value> pixelsOf(Picture& from, int channel = 0) {
        ChannelBuffer& buffer = *from.getRegion().getChannels()[channel].buffer;
        EXPECT_EQ(buffer.getItemSize(), static_cast<int>(sizeof(Value)));
        std::vector<Value> pixels(static_cast<std::size_t>(from.getWidth()) *
                                  static_cast<std::size_t>(from.getHeight()));
        for (std::size_t i = 0; i < pixels.size(); ++i)
            std::memcpy(&pixels[i], buffer.item(static_cast<int>(i)), sizeof(Value));
        return pixels;
    }

    /// The mean of the picture of a scene.
    Color meanOf(const std::string& plugins, const std::string& settings, int samples = 256) {
        render(plugins, settings, optionsOf(samples));
        return meanOf(pixelsOf(picture));
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
    Picture picture;
};

}  // namespace Tarnkit
