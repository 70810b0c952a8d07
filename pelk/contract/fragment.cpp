#include "pelk/contract/fragment.h"

namespace Tarnkit {

ColorMapper::~ColorMapper() = default;

Fragment::~Fragment() = default;

Fragment* FragmentList::getFragment(int tag, bool* found) {
    Fragment** link = &first;
    while (*link && (*link)->getTag() != tag)
        link = &(*link)->nextFragment;
    if (found)
        *found = *link != nullptr;
    if (!*link) {
        Fragment* fragment = manager->newFragment();
        fragment->nextFragment = nullptr;
        fragment->setTag(tag);
        *link = fragment;
    }
    return *link;
}

Fragment* FragmentList::addFront(int tag) {
    Fragment* fragment = manager->newFragment();
    fragment->setTag(tag);
    fragment->nextFragment = first;
    return first = fragment;
}

void FragmentList::merge(const FragmentList& other, float weight) {
    for (Fragment* from = other.first; from; from = from->nextFragment)
        getFragment(from->getTag())->addFragment(from, Color(weight), 0);
}

void FragmentList::multiplyAll(float weight) {
    for (Fragment* fragment = first; fragment; fragment = fragment->nextFragment)
        fragment->multiply(Color(weight), 0);
}

void FragmentList::setColorAll(const Color& color) {
    for (Fragment* fragment = first; fragment; fragment = fragment->nextFragment)
        fragment->setColor(color);
}

void FragmentList::mapAll(ColorMapper* mapper, int mode) {
    for (Fragment* fragment = first; fragment; fragment = fragment->nextFragment)
        fragment->applyColorMapper(mapper, mode);
}

void FragmentList::deleteAll() {
    while (Fragment* fragment = first) {
        // The link is read first: a manager may use the fragment's memory for its free list.
        first = fragment->nextFragment;
        manager->deleteFragment(fragment);
    }
}

void FragmentList::end() {
    if (manager)
        deleteAll();
    manager = nullptr;
    first = nullptr;
}

}  // namespace Tarnkit
