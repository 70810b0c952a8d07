#include "pelk/materials/matte/matte_fragment.h"

#include <memory>
#include <utility>

#include "pelk/base/memory.h"

namespace {

/// The value of a fragment's channel. Channels of colours may come with an alpha, so there is room
/// for one.
Color aliasColor(Fragment& fragment, int alias) {
    AColor value;
    fragment.getAlias(alias, &value);
    return value.color;
}

}  // namespace

Color* MatteFragment::find(int alias) {
    switch (alias) {
        case kAliasReflection:
            return &reflection;
        case kAliasRefraction:
            return &refraction;
        case kAliasReflectionFilter:
            return &reflectionFilter;
        default:
            return nullptr;
    }
}

void MatteFragment::addFragment(Fragment* other, const Color& weights, int) {
    const Color by = weights;  // may be a field of this fragment
    reflection += aliasColor(*other, kAliasReflection) * by;
    refraction += aliasColor(*other, kAliasRefraction) * by;
    reflectionFilter += aliasColor(*other, kAliasReflectionFilter) * by;
}

void MatteFragment::multiply(const Color& weights, int) {
    const Color by = weights;
    reflection *= by;
    refraction *= by;
    reflectionFilter *= by;
}

void MatteFragment::getAlias(int alias, void* out) {
    if (const Color* color = find(alias))
        *static_cast<Color*>(out) = *color;
}

void MatteFragment::addAlias(int alias, const void* value) {
    if (Color* color = find(alias))
        *color += *static_cast<const Color*>(value);
}

int MatteFragment::clear(int) {
    reflection = refraction = reflectionFilter = Color(0);
    return 0;
}

AColor* MatteFragment::getSampleColor(AColor* out) {
    *out = AColor();
    return out;
}

Fragment* MatteFragmentManager::newFragment() {
    MatteFragment* fragment = entry.take();
    fragment->nextFragment = nullptr;
    fragment->setTag(0);
    fragment->clear(0);
    return fragment;
}

void MatteFragmentManager::deleteFragment(Fragment* fragment) {
    entry.giveBack(static_cast<PoolElement<MatteFragment>*>(fragment));
}

void MatteFragmentManagers::resize(int n) {
    destroy();
    if (n < 1)
        return;
    managers = allocateArray<MatteFragmentManagerAligned>(n);
    for (; numManagers < n; ++numManagers)
        ::new (managers + numManagers) MatteFragmentManagerAligned;
}

void MatteFragmentManagers::destroy() {
    std::destroy_n(managers, std::exchange(numManagers, 0));
    freeMemory(std::exchange(managers, nullptr));
}
