// Pixels read out in any format into buffers of just their size, and names stamped on pixels.

#include "fuzz/fuzz_input.h"
#include "pelk/base/memory.h"
#include "pelk/support/regions/text_stamp.h"
#include "support/regions/test_channels.h"

using namespace Tarnkit;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    TestChannels channels;
    for (int count = input.between(1, 4); count > 0; --count) {
        channels.add(input.between(1, 6), input.between(-1, 40), "c", input.between(0, 7) << 1);
        channels.owned.back()->start = input.number<float>();
    }
    PKRegionData region;
    const int width = input.between(0, 40), height = input.between(0, 40);
    region.setRect(-3, 5, width - 3, height + 5);
    region.setChannels(channels.list);
    region.beginRendering();
    TestMapper mapper('m', input.number<float>());
    ColorMapper* mappers[] = {&mapper, nullptr, &mapper};

    PixelRect rect{input.between(-2, 42),
                   input.between(-2, 42),
                   input.between(-2, 42),
                   input.between(-2, 42),
                   0,
                   0};
    rect.width = rect.x1 - rect.x0;
    rect.height = rect.y1 - rect.y0;
    const int formats[] = {100, 101, 102, 103, 104, 200, 201, 202, 203, 300, 301, 302, 303, 0};
    const int format = formats[input.between(0, 13)], spare = input.between(-1, 1);
    const std::int64_t needed =
        std::int64_t{std::max(rect.width, 0)} * std::max(rect.height, 0) * pixelFormatSize(format);
    ExactBuffer out(static_cast<int>(std::max<std::int64_t>(needed + spare, 0)));
    const int read = region.getPixels(input.between(-1, 5), input.between(-1, 5), rect, format,
                                      needed + spare, out.get(), input.between(0, 2),
                                      input.between(0, 3), mappers, input.between(0, 3));
    require(read == 0 || (rect.x0 >= 0 && rect.y0 >= 0 && rect.x1 <= width && rect.y1 <= height),
            "only pixels of the region are read");
    require(read == 0 || needed == 0 || spare >= 0,
            "nothing is written into a buffer that is too small");

    const int columns = input.between(1, 60);
    const std::string name = input.line();
    int inkWidth = 0, inkHeight = 0;
    u8* ink = renderText(name.c_str(), inkWidth, inkHeight, std::max(columns, 7));
    require(inkWidth >= 1 && inkHeight >= 8, "a bitmap has a size");
    for (int i = 0; i < inkWidth * inkHeight; ++i)
        require(ink[i] <= 1, "a bitmap is ink or empty");
    freeMemory(ink);
    ChannelBuffer pixels;
    pixels.resize(columns * 12, 12, 4096, columns);
    stampName(pixels, columns, 12, name.c_str(), input.between(-1, 4));
    return 0;
}
