#pragma once

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "pelk/support/regions/region_data.h"

namespace Tarnkit {

/// A render channel with plain arithmetic on the floats of its slot; it remembers its calls.
struct TestChannel : RenderChannel {
    struct Stored {
        void* pixel;
        Fragment *front, *total;
        int index;
    };

    TestChannel(int ofType, int ofAlias, std::string named = "", int withFlags = 0)
        : type(ofType), alias(ofAlias), name(std::move(named)), flags(withFlags) {}

    void fillPixels(void* pixels, int count) override { fill(pixels, start, count); }
    void clearData(void* data, int mode) override { fill(data, 100.0f + mode); }
    void setValue(void* data, const void* value) override {
        std::memcpy(data, value, channelTypeSize(type));
    }
    void addData(void* dst, const void* src, const Color& by, int hasData, int) override {
        added.push_back(hasData);
        *static_cast<float*>(dst) += *static_cast<const float*>(src) * by.r;
    }
    void multiplyData(void* data, const Color& by, int) override {
        *static_cast<float*>(data) *= by.r;
    }
    void setColorData(void* data, const Color& color) override { fill(data, color.g); }
    void mapData(void* data, Fragment*, ColorMapper*, int) override { fill(data, 1.0f); }
    void storePixel(int, int, void* pixel, Fragment* front, Fragment* total, float,
                    int index) override {
        stored.push_back({pixel, front, total, index});
    }
    int getType() override { return type; }
    int getAlias() override { return alias; }
    const char* getName() override { return name.c_str(); }
    int getFlags() override { return flags; }
    Color getColorValue(const void* data) override { return *static_cast<const Color*>(data); }

    int type, alias;
    std::string name;
    int flags;
    float start = 0.25f;     ///< what fillPixels writes
    std::vector<int> added;  ///< what addData was told of data in the slot
    std::vector<Stored> stored;

private:
    void fill(void* data, float value, int items = 1) {
        std::fill_n(static_cast<float*>(data), items * channelTypeSize(type) / 4, value);
    }
};

/// Adds 1 to colours of fragments, the background's too; at pixels it scales, and writes its name
/// down.
struct TestMapper : ColorMapper {
    TestMapper(char named, float by) : name(named), factor(by) {}
    void mapColor(Color& out, const Color& in) override { out = in + Color(1.0f); }
    void mapPixel(Color& color, Color& alpha, int) override {
        log += name;
        color *= factor;
        alpha *= factor;
    }
    void beginMapping(int) override {}
    void endMapping(int) override {}
    int mapsBackground() override { return 1; }

    char name;
    float factor;
    static inline std::string log;
};

/// Channel objects of a test, and the list of them as a region takes it.
struct TestChannels {
    TestChannel& add(int type, int alias, std::string name = "", int flags = 0) {
        owned.push_back(std::make_unique<TestChannel>(type, alias, std::move(name), flags));
        list.push_back(owned.back().get());
        return *owned.back();
    }
    std::vector<std::unique_ptr<TestChannel>> owned;
    std::vector<RenderChannel*> list;
};

}  // namespace Tarnkit
