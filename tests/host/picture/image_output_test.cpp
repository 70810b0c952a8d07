#include "pelk/host/picture/image_output.h"

#include <OpenImageIO/imageio.h>
#include <gmock/gmock.h>

#include <cmath>
#include <cstring>
#include <map>
#include <memory>
#include <vector>

#include "pelk/support/regions/channel_kinds.h"
#include "temporary_directory.h"

namespace Tarnkit {
namespace {

class ImageOutputTest : public testing::Test {
protected:
    /// Gives the picture channels of these names, beauty and alpha first.
    void begin(int width, int height, std::initializer_list<const char*> names) {
        std::vector<std::unique_ptr<RenderChannel>> channels;
        std::vector<RenderChannel*> list;
        for (const char* name : names) {
            channels.push_back(newChannel(findChannelAlias(name)->alias));
            list.push_back(channels.back().get());
        }
        picture.begin(width, height, list);
    }
    template <class Value>
    void store(int channel, int x, int y, const Value& value) {
        ChannelBuffer& pixels = *picture.getRegion().getChannels()[channel].buffer;
        std::memcpy(pixels.item(y * picture.getWidth() + x), &value, sizeof value);
    }
    void setPixel(int x, int y, const AColor& value) {
        store(0, x, y, value.color);
        store(1, x, y, Color(value.alpha));
    }
    bool write(const std::string& name, PixelDepth depth = PixelDepth::Float) {
        const PictureInfo info{
            .scene = "box.json", .samples = 64, .seconds = 1.5, .host = "pelk", .version = "1.2.3"};
        return writePicture(picture, dir.file(name), info, depth, error);
    }
    template <class T>
    std::vector<T> read(const std::string& name) {
        OIIO::ImageSpec asked;
        asked.attribute("oiio:UnassociatedAlpha", 1);
        const auto input = OIIO::ImageInput::open(dir.file(name), &asked);
        spec = input->spec();
        std::vector<T> values(spec.image_pixels() * static_cast<std::size_t>(spec.nchannels));
        input->read_image(0, 0, 0, -1, OIIO::BaseTypeFromC<T>::value, values.data());
        return values;
    }

    TemporaryDirectory dir;
    Picture picture;
    OIIO::ImageSpec spec;
    std::string error;
};

TEST_F(ImageOutputTest, ExrHoldsEveryChannelAndTellsHowItWasMade) {
    begin(1, 1, {"beauty", "alpha", "depth", "render_id", "normals", "front"});
    setPixel(0, 0, {{-0.25f, 0.5f, 1e6f}, 1.0f});
    store(2, 0, 0, 7.5f);
    store(3, 0, 0, 16777217);  // no float holds it
    store(4, 0, 0, Vector(-1, 0.25f, 2));
    store(5, 0, 0, AColor{{4, 5, 6}, 0.5f});
    for (const PixelDepth depth : {PixelDepth::Float, PixelDepth::Half}) {
        ASSERT_TRUE(write("a.EXR", depth)) << error;
        const std::vector<float> values = read<float>("a.EXR");
        std::map<std::string, float> layers;
        for (std::size_t i = 0; i < values.size(); ++i)
            layers[spec.channelnames[i]] = values[i];
        layers.erase("render_id.ID");
        EXPECT_EQ(spec.channelformat(0) == OIIO::TypeDesc::HALF, depth == PixelDepth::Half);
        const float bright = depth == PixelDepth::Half ? 65504.0f : 1e6f;
        const std::map<std::string, float> expected{
            {"R", -0.25f},     {"G", 0.5f},       {"B", bright},        {"A", 1},
            {"depth.Z", 7.5f}, {"normals.X", -1}, {"normals.Y", 0.25f}, {"normals.Z", 2},
            {"front.R", 4},    {"front.G", 5},    {"front.B", 6},       {"front.A", 0.5f}};
        EXPECT_EQ(layers, expected);
        const int id = spec.channelindex("render_id.ID");
        std::uint32_t readID = 0;
        OIIO::ImageInput::open(dir.file("a.EXR"))
            ->read_image(0, 0, id, id + 1, OIIO::TypeDesc::UINT, &readID);
        EXPECT_EQ(readID, 16777217u);
    }
    EXPECT_EQ(spec.get_string_attribute("scene"), "box.json");
}

TEST_F(ImageOutputTest, PngIsEncodedAndRounded) {
    begin(2, 2, {"beauty", "alpha"});
    setPixel(0, 0, {{0.25f, 0.5f, 1e6f}, 1.0f});
    setPixel(1, 0, {{-1.0f, 0.001f, 2.0f}, 1.0f});
    setPixel(1, 1, {{0.125f, 0.0625f, 0.0f}, 0.25f});
    ASSERT_TRUE(write("a.png")) << error;
    const auto encoded = [](double x) {
        const double y = x <= 0.0031308 ? 12.92 * x : 1.055 * std::pow(x, 1 / 2.4) - 0.055;
        return static_cast<unsigned char>(std::min(std::clamp(y, 0.0, 1.0) * 256, 255.0));
    };
    const std::vector<unsigned char> expected = {
        encoded(0.25), encoded(0.5),  255, 255, 0, encoded(0.001), 255, 255, 0, 0, 0, 0,
        encoded(0.5),  encoded(0.25), 0,   64};
    EXPECT_EQ(read<unsigned char>("a.png"), expected);

    setPixel(0, 1, {{0.5f, 0, 0}, 0.0f});
    ASSERT_TRUE(write("b.png")) << error;
    EXPECT_EQ(read<unsigned char>("b.png")[6], encoded(0.5)) << "hidden by an alpha of 0";
}

}  // namespace
}  // namespace Tarnkit
