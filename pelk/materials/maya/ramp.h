#pragma once

#include "pelk/contract/material.h"

namespace Tarnkit {

// Ramps: one-dimensional transfer functions, given by control points and looked up at each hit with
// a position between 0 and 1, such as the cosine between the surface and the viewer. Nothing is
// resampled into a fixed-size table: a ramp holds the control points of the scene themselves, so
// their textures are read at the hit, and steps stay sharp.

/// Values of `interpolation`: how a ramp leads from one control point to the next. Any other value
/// is a step.
enum RampInterpolation : int {
    kRampStep = 0,    ///< holds the value of the lower point up to the next
    kRampLinear = 1,  ///< linear in the position
    kRampSmooth = 2,  ///< the cubic f^2 (3 - 2 f), level at both ends
    kRampSpline = 3   ///< half a cosine wave, which looks at no further points either
};

/// One control point of a ramp. Plain, as the table copies it by its bytes.
template <class Value, class Texture>
struct RampEntry {
    int interpolation = kRampStep;  ///< of the segment from here to the next higher point
    /// Gives the position in place of `position`, at each hit; null for none.
    TextureFloatInterface* positionTexture = nullptr;
    float position = 0.0f;            ///< 0 to 1 to be of use; any value will do
    Texture* valueTexture = nullptr;  ///< gives the value in place of `value`; null for none
    Value value{};
};

using ColorRampEntry = RampEntry<AColor, TextureInterface>;
using FloatRampEntry = RampEntry<float, TextureFloatInterface>;

/// What the position is computed from at a hit, as `color_input` gives it. Ramps themselves don't
/// read it: who looks one up does.
enum RampInput : int {
    kRampLightAngle = 0,        ///< 1.1 (1 - angle / pi), angle being that of normal and light
    kRampFacingAngle = 1,       ///< cosine between the normal and the direction to the viewer
    kRampBrightness = 2,        ///< diffuse light that arrives, summed over the lights
    kRampNormalBrightness = 3,  ///< the same without the lights' colours: the sum of cosines
    kRampWhole = 4              ///< always 1: the end of the ramp
};

/// A ramp as a frame has it. Written by loadRamp in frameBegin, on one thread; all render threads
/// read it.
template <class Entry>
struct Ramp {
    GrowTable<Entry> entries{100};
    int input = kRampFacingAngle;  ///< a RampInput
    /// Whether a position has a texture, so that the order of the points is known at the hit alone.
    /// Once set it stays for the life of the plug-in: a ramp whose textures were taken away is
    /// searched in the slow way, with the same answers.
    bool hasTexturedPositions = false;
};

using ColorRamp = Ramp<ColorRampEntry>;
using FloatRamp = Ramp<FloatRampEntry>;

/// The three list parameters that a ramp is read from. Items of the same index make one control
/// point.
struct RampParamNames {
    const char *positions, *values, *interpolations;
};

/// Reads a ramp from an instance's parameters at the scene time `time`. The shortest of the three
/// lists gives the number of points; a list that is missing or isn't one makes the ramp empty. An
/// object without the interface of a texture counts as a plain value. Unless a position has a
/// texture, the points are then ordered by position, those of one position kept as they come from a
/// selection sort. For frameBegin. Throws ExceptionMsg if there is no memory.
void loadRamp(ColorRamp& ramp, const PelkParameterList& params, const RampParamNames& names,
              double time);
void loadRamp(FloatRamp& ramp, const PelkParameterList& params, const RampParamNames& names,
              double time);

/// The ramp's value at `position`. A position above 1 counts as 1; beyond the lowest and the
/// highest point their values hold. One point answers everywhere with its value; an empty ramp is
/// black with alpha 0, or 0. At most two textures of values are read; of a ramp with textured
/// positions, each position is read once, and once more where the segment has to be found.
///
/// Called at hits from all render threads at once; nothing is allocated. Throws what the textures
/// throw. A NaN that a texture answers as a value comes out; as a position it is passed over.
AColor evalColorRamp(const ColorRamp& ramp, PelkContext& context, float position);
float evalFloatRamp(const FloatRamp& ramp, PelkContext& context, float position);

}  // namespace Tarnkit
