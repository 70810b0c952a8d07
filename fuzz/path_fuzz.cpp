// Paths, masks and lists of files in buffers of every size: nothing beyond them, always terminated.

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "fuzz/fuzz_input.h"
#include "pelk/support/directory_list.h"
#include "pelk/support/paths.h"
#include "pelk/support/text_tools.h"

using namespace Tarnkit;

namespace {

/// A directory with some files, as long as the process runs.
const std::string& testDirectory() {
    static const std::string path = [] {
        char pattern[] = "/tmp/pelk_fuzz_XXXXXX";
        require(mkdtemp(pattern) != nullptr, "a directory can be made");
        for (const char* name : {"a", "ab", "a.exr", "b.exr", "aab.0001.exr", "x*y", "*"})
            std::ofstream(std::string(pattern) + "/" + name);
        return std::string(pattern) + "/";
    }();
    static const struct Remover {
        ~Remover() {
            std::error_code ignored;
            std::filesystem::remove_all(path, ignored);
        }
        std::string path;
    } remover{path};
    return path;
}

/// `*` stands for any text, `?` for one byte.
bool matches(const char* mask, const char* name) {
    if (*mask == '*')
        return matches(mask + 1, name) || (*name && matches(mask, name + 1));
    if (!*mask || !*name)
        return *mask == *name;
    return (*mask == '?' || *mask == *name) && matches(mask + 1, name + 1);
}

void listByMask(const std::string& mask) {
    if (mask.find_first_of("/\\") != std::string::npos || mask.size() > 24)
        return;
    DirectoryList list;
    const bool found = list.construct((testDirectory() + mask).c_str());
    require(found == !list.isEmpty(), "what was found is in the list");
    std::size_t expected = 0;
    for (const auto& entry : std::filesystem::directory_iterator(testDirectory()))
        expected += matches(mask.c_str(), entry.path().filename().c_str());
    // Of "." and ".." masks find nothing, as the iteration does.
    require(static_cast<std::size_t>(list.getCount()) == expected, "the names that match");
    for (int i = 1; i < list.getCount(); ++i)
        require(std::strcmp(list.getItem(i - 1), list.getItem(i)) < 0, "sorted");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    const int room = input.between(1, 80);
    const std::string mask = input.line(), path = input.line(), name = input.line();
    const auto rest = input.rest();
    const std::string replacement(rest.begin(), std::find(rest.begin(), rest.end(), 0));
    if (room % 8 == 0)  // it asks the system, which takes its time
        listByMask(mask);

    ExactBuffer joined(room, path);
    joinPath(joined.get(), name.c_str(), room);
    require(std::strlen(joined.get()) < static_cast<std::size_t>(room), "terminated");
    addTrailingSeparator(joined.get(), room);
    collapseSeparators(joined.get());
    require(isAbsolutePath(joined.get()) != isRelativePath(joined.get()), "one of the two");
    removeTrailingSeparators(joined.get(), room);
    const std::size_t length = std::strlen(joined.get());
    require(length < 2 || !std::strchr("/\\", joined.get()[length - 1]), "no separator at the end");
    sanitizeName(joined.get(), joined.get());

    ExactBuffer replaced(room, path);
    replaceInBuffer(replaced.get(), room, name.c_str(), replacement.c_str());
    CharString whole((std::string(path, 0, static_cast<std::size_t>(room) - 1)).c_str());
    replaceAll(whole, CharString(name.c_str()), CharString(replacement.c_str()));
    if (whole.length() < room && !name.empty())
        require(textOf(whole) == replaced.get(), "both ways of replacing agree");
    return 0;
}
