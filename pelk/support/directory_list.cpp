#include "pelk/support/directory_list.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "pelk/base/memory.h"
#include "pelk/base/text_or.h"
#include "pelk/platform/file.h"

namespace Tarnkit {

namespace {

bool isListed(const std::string& name) {
    return name != "." && !name.starts_with("..");
}

char* newText(const std::string& text) {
    char* const copy = allocateArray<char>(text.size() + 1);
    std::memcpy(copy, text.c_str(), text.size() + 1);
    return copy;
}

}  // namespace

DirectoryList::~DirectoryList() {
    clear();
}

void DirectoryList::clear() {
    std::for_each(items, items + count, freeMemory);
    freeMemory(items);
    items = nullptr;
    count = cursor = 0;
}

bool DirectoryList::construct(const char* mask) {
    clear();
    const std::string pattern = textOrEmpty(mask);
    const std::string directory = pattern.substr(0, pattern.find_last_of("/\\") + 1);
    std::vector<std::string> names = platform::listFiles(pattern);
    std::erase_if(names, [](const std::string& name) { return !isListed(name); });
    if (names.empty())
        return false;
    items = allocateArray<char*>(names.size());
    for (const std::string& name : names) {
        items[count] = newText(directory + name);
        ++count;  // counted once it stands: what is thrown before that finds a whole list
    }
    return true;
}

const char* DirectoryList::next() {
    return cursor < count ? items[cursor++] : nullptr;
}

const char* DirectoryList::getItem(int index) const {
    return index >= 0 && index < count ? items[index] : nullptr;
}

void DirectoryList::sort() {
    std::sort(items, items + count,
              [](const char* a, const char* b) { return b && (!a || std::strcmp(a, b) < 0); });
}

}  // namespace Tarnkit
