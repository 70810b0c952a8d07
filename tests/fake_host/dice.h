#pragma once

#include <initializer_list>
#include <random>

#include "pelk/base/color.h"
#include "pelk/base/vector.h"

/// Random numbers of a test, the same in each run.
struct Dice {
    float between(float low, float high) {
        return std::uniform_real_distribution<float>(low, high)(engine);
    }
    int below(int count) { return std::uniform_int_distribution<int>(0, count - 1)(engine); }
    bool coin() { return below(2) == 0; }
    /// One of these.
    template <class T>
    T of(std::initializer_list<T> choices) {
        return choices.begin()[below(static_cast<int>(choices.size()))];
    }
    Tarnkit::Color color(float high) {
        return {between(0, high), between(0, high), between(0, high)};
    }
    /// In the cube around the origin.
    Tarnkit::Vector vector() { return {between(-1, 1), between(-1, 1), between(-1, 1)}; }
    Tarnkit::Vector direction() {
        for (;;) {
            const Tarnkit::Vector v = vector();
            if (const float len = length(v); len > 0.1f && len <= 1.0f)
                return v * (1.0f / len);
        }
    }

protected:
    std::mt19937 engine{1};
};
