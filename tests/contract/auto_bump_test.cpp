#include <cmath>

#include "fake_host/fake_host.h"

namespace {

/// A height field in space, read at the hit point.
class HeightField : public FakeTexture {
public:
    std::function<double(Point)> height = [](Point) { return 0.0; };
    Point farthest;  ///< from the origin, where it was read

    float getTexFloat(PelkContext& context) override {
        if (length(context.hitPoint - Point()) > length(farthest - Point()))
            farthest = context.hitPoint;
        return static_cast<float>(height(context.hitPoint));
    }
};

class AutoBumpTest : public FakeHost {
protected:
    AutoBumpTest() {
        context.rayOrigin = {0, 0, 2};
        context.hitPoint = {0.25, 0.5, 0};
        context.rayDerivX = {0.001f, 0, 0};
        context.rayDerivY = {0, 0.001f, 0};
    }

    Vector ofNumber(float amount = 1.0f) {
        return getAutoBump(context, static_cast<TextureFloatInterface*>(&field), 0, amount);
    }

    HeightField field;
    FakeContext context = hit();
};

TEST_F(AutoBumpTest, ReadsWithinAPixelOfTheHitTimesTheAmount) {
    const Vector alongX = {0.001f, 0, 0}, none;
    const struct {
        const char* what;
        Vector originDerivX, rayDerivX, rayDerivY;
        float amount, width;
    } cases[] = {
        {"from the eye, two units off", none, alongX, none, 1, 0.002f},
        {"parallel", alongX, none, none, 1, 0.001f},
        {"the wider one", alongX, none, {0, 0.004f, 0}, 1, 0.008f},
        {"begun on a surface", {0.001f, 0, 0.03f}, none, none, 1, 0.001f},
        {"scaled", none, alongX, none, 8, 0.016f},
        {"nobody knows", none, none, none, 1, 0.002f},
        {"no number", none, {NAN, 0, 0}, none, 1, 0.002f},
    };
    context.hitPoint = {};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        context.originDerivX = c.originDerivX;
        context.rayDerivX = c.rayDerivX;
        context.rayDerivY = c.rayDerivY;
        field.farthest = {};
        ofNumber(c.amount);
        EXPECT_NEAR(length(field.farthest - Point()), 0.5f * c.width, 1e-6f);
    }
}

TEST_F(AutoBumpTest, HasNoBumpWhereNoSlopeCanBeTold) {
    field.height = [](Point p) { return p.x; };
    for (const float amount : {0.0f, -1.0f, NAN})
        EXPECT_EQ(ofNumber(amount), Vector());
    for (const Vector n : {Vector(), Vector(NAN, 0, 0)}) {
        context.normal = n;
        EXPECT_EQ(ofNumber(), Vector());
    }
}

}  // namespace
