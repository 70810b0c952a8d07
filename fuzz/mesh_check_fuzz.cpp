// The check that comes before the import library sees a mesh file.

#include "pelk/host/plugins/mesh_check.h"

#include "fuzz/fuzz_input.h"

using namespace Tarnkit;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    constexpr const char* kEndings[] = {".obj", ".ply", ".gltf", ".glb"};
    const char* const ending = kEndings[input.between(0, 3)];
    const std::vector<std::uint8_t> bytes = input.rest();
    std::string error;
    const bool whole =
        checkMeshText({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, ending, error);
    require(whole == error.empty(), "a refusal has words");
    require(error.size() < 4096 && error.find('\n') == std::string::npos, "on one line");
    return 0;
}
