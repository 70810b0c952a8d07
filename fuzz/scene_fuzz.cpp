// Scenes and settings from the command line: a scene, or words of one line that name the place.

#include "fuzz/fuzz_input.h"
#include "pelk/host/scene/host_session.h"
#include "pelk/host/scene/scene_reader.h"

using namespace Tarnkit;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static HostSession session;
    FuzzInput input(data, size);
    std::vector<std::string> overrides;
    for (int count = input.between(0, 2); count > 0; --count)
        overrides.push_back(input.line());
    const std::vector<std::uint8_t> text = input.rest();
    const MemoryFile file(text.data(), text.size());
    std::string error;
    const bool read = readScene(session, file.name(), overrides, error) != nullptr;
    require(read || !error.empty(), "a refusal has words");
    require(error.size() < 4096 && error.find('\n') == std::string::npos, "on one line");
    return 0;
}
