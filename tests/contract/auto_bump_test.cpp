#include <cmath>

#include "fake_host/fake_host.h"

namespace {

/// A height that grows with x, and remembers where it was read farthest from the origin.
struct HeightField : FakeTexture {
    Point farthest;

    float getTexFloat(PelkContext& context) override {
        if (length(context.hitPoint - Point()) > length(farthest - Point()))
            farthest = context.hitPoint;
        return static_cast<float>(context.hitPoint.x);
    }
};

class AutoBumpTest : public OneHit {
protected:
    AutoBumpTest() {
        context.rayOrigin = {0, 0, 2};
        context.hitPoint = {};
    }

    Vector bump(float amount) {
        return getAutoBump(context, static_cast<TextureFloatInterface*>(&field), 0, amount);
    }

    HeightField field;
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
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        context.originDerivX = c.originDerivX;
        context.rayDerivX = c.rayDerivX;
        context.rayDerivY = c.rayDerivY;
        field.farthest = {};
        bump(c.amount);
        EXPECT_NEAR(length(field.farthest - Point()), 0.5f * c.width, 1e-6f);
    }
}

TEST_F(AutoBumpTest, HasNoBumpWhereNoSlopeCanBeTold) {
    EXPECT_THAT(bump(1), VectorNear(Vector(0, 1, 0), 1e-4f));
    for (const float amount : {0.0f, -1.0f, NAN})
        EXPECT_EQ(bump(amount), Vector());
    for (const Vector n : {Vector(), Vector(NAN, 0, 0)}) {
        context.normal = n;
        EXPECT_EQ(bump(1), Vector());
    }
}

}  // namespace
