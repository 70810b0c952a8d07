#include "render/image_output.h"

#include <OpenImageIO/imageio.h>
#include <gmock/gmock.h>

#include <cmath>
#include <filesystem>
#include <vector>

#include "temporary_directory.h"

namespace Tarnkit {
namespace {

using testing::HasSubstr;

class ImageOutputTest : public testing::Test {
protected:
    ImageOutputTest() {
        picture.resize(2, 2);
        picture.setPixel(0, 0, {{0.25f, 0.5f, 1e6f}, 1.0f});
        picture.setPixel(1, 0, {{-1.0f, 0.001f, 2.0f}, 1.0f});
        picture.setPixel(1, 1, {{0.1f, 0.05f, 0.0f}, 0.2f});
    }
    bool write(const std::string& name, PixelDepth depth = PixelDepth::Float) {
        const PictureInfo info{"box.json", 64, 1.5, "pelk", "1.2.3"};
        return writePicture(picture, dir.file(name), info, depth, error);
    }
    template <class T>
    std::vector<T> read(const std::string& name) {
        OIIO::ImageSpec asked;
        asked.attribute("oiio:UnassociatedAlpha", 1);
        const auto input = OIIO::ImageInput::open(dir.file(name), &asked);
        spec = input->spec();
        std::vector<T> values(spec.image_pixels() * static_cast<size_t>(spec.nchannels));
        input->read_image(0, 0, 0, -1, OIIO::BaseTypeFromC<T>::value, values.data());
        return values;
    }

    TemporaryDirectory dir;
    Picture picture;
    OIIO::ImageSpec spec;
    std::string error;
};

TEST_F(ImageOutputTest, ExrKeepsEveryBitAndTellsHowItWasMade) {
    ASSERT_TRUE(write("a.exr")) << error;
    const std::vector<float> values = read<float>("a.exr");
    const std::vector<float> expected = {0.25f, 0.5f, 1e6f, 1, -1.0f, 0.001f, 2.0f, 1,
                                         0,     0,    0,    0, 0.1f,  0.05f,  0.0f, 0.2f};
    EXPECT_EQ(values, expected);
    EXPECT_THAT(spec.channelnames, testing::ElementsAre("R", "G", "B", "A"));
    EXPECT_EQ(spec.get_string_attribute("scene"), "box.json");
    EXPECT_EQ(spec.get_string_attribute("samples"), "64");
    EXPECT_EQ(spec.get_string_attribute("seconds").substr(0, 3), "1.5");
    EXPECT_EQ(spec.get_string_attribute("Software"), "pelk 1.2.3");
}

TEST_F(ImageOutputTest, HalfStaysFinite) {
    ASSERT_TRUE(write("a.EXR", PixelDepth::Half)) << error;
    const std::vector<float> values = read<float>("a.EXR");
    EXPECT_EQ(spec.format, OIIO::TypeDesc::HALF);
    EXPECT_EQ(values[2], 65504.0f);
    EXPECT_NEAR(values[5], 0.001f, 1e-6f);
}

TEST_F(ImageOutputTest, PngIsEncodedAndRounded) {
    ASSERT_TRUE(write("a.png")) << error;
    const auto encoded = [](double x) {
        const double y = x <= 0.0031308 ? 12.92 * x : 1.055 * std::pow(x, 1 / 2.4) - 0.055;
        return static_cast<unsigned char>(std::floor(std::clamp(y, 0.0, 1.0) * 255 + 0.5));
    };
    const std::vector<unsigned char> expected = {
        encoded(0.25), encoded(0.5),  255, 255, 0, encoded(0.001), 255, 255, 0, 0, 0, 0,
        encoded(0.5),  encoded(0.25), 0,   51};
    EXPECT_EQ(read<unsigned char>("a.png"), expected);
    EXPECT_EQ(spec.get_string_attribute("scene"), "box.json");
}

TEST_F(ImageOutputTest, AFailureNamesTheFileAndLeavesWhatWasThere) {
    std::filesystem::create_directory(dir.file("folder.png"));
    for (const char* name : {"a.jpg", "a", "folder.png", "missing/a.exr"}) {
        SCOPED_TRACE(name);
        const auto entries = dir.entryCount();
        for (const bool ask : {true, false}) {
            error.clear();
            EXPECT_FALSE(ask ? canWritePicture(dir.file(name), error) : write(name));
            EXPECT_THAT(error, HasSubstr(dir.file(name)));
        }
        EXPECT_EQ(dir.entryCount(), entries);
    }
    dir.write("old.png", "an older picture");
    EXPECT_TRUE(canWritePicture(dir.file("old.png"), error));
    picture.resize(0, 0);  // no format takes this
    EXPECT_FALSE(write("old.png"));
    EXPECT_EQ(dir.read("old.png"), "an older picture");
    EXPECT_EQ(dir.entryCount(), 2) << "a temporary file was left";
}

}  // namespace
}  // namespace Tarnkit
