// Runs a target over files and the files of directories, without a fuzzer: the inputs that are kept
// are tests in each build. Ends where a target aborts, or a file can't be read.

#include <filesystem>
#include <fstream>
#include <iterator>

#include "fuzz/fuzz_input.h"

namespace {

bool replay(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        std::fprintf(stderr, "can't read %s\n", path.c_str());
        return false;
    }
    const std::vector<char> content{std::istreambuf_iterator<char>(file), {}};
    // In memory of just its size, so that sanitizers see a read beyond it.
    std::vector<std::uint8_t> bytes(content.begin(), content.end());
    bytes.shrink_to_fit();
    std::printf("%s\n", path.c_str());
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    int files = 0;
    for (int i = 1; i < argc; ++i) {
        if (!std::filesystem::is_directory(argv[i])) {
            files += replay(argv[i]);
            continue;
        }
        for (const auto& entry : std::filesystem::directory_iterator(argv[i]))
            files += replay(entry.path());
    }
    return files >= 3 ? 0 : 1;
}
