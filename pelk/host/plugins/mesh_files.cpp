#include "pelk/host/plugins/mesh_files.h"

#include <charconv>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string_view>

#include "pelk/host/plugins/mesh_loader.h"
#include "pelk/platform/file.h"

namespace Tarnkit {

namespace {

namespace fs = std::filesystem;

std::string trimmed(const std::string& text) {
    constexpr std::string_view kBlanks = " \t\r";
    const std::size_t first = text.find_first_not_of(kBlanks);
    return first == text.npos ? "" : text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

/// The library that each `mtllib` names, and the one that stands in for it if it isn't there.
std::vector<std::string> librariesOf(std::istream& obj, const fs::path& path) {
    constexpr std::string_view kKeyword = "mtllib";
    std::vector<std::string> files;
    for (std::string line; std::getline(obj, line);) {
        if (line.starts_with(kKeyword))
            files.push_back((path.parent_path() / trimmed(line.substr(kKeyword.size()))).string());
    }
    if (!files.empty())
        files.push_back(fs::path(path).replace_extension(".mtl").string());
    return files;
}

/// A relative URI as the file name that it stands for.
std::string decodeUri(const std::string& uri) {
    std::string name;
    for (std::size_t i = 0; i < uri.size(); ++i) {
        unsigned char byte = 0;
        const char* const digits = uri.data() + i + 1;
        if (uri[i] == '%' && i + 2 < uri.size() &&
            std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2) {
            name += static_cast<char>(byte);
            i += 2;
        } else {
            name += uri[i];
        }
    }
    return name;
}

std::vector<std::string> buffersOf(std::istream& gltf, const fs::path& path) {
    std::vector<std::string> files;
    const nlohmann::json document = nlohmann::json::parse(gltf, nullptr, false);
    const auto buffers = document.find("buffers");
    if (!document.is_object() || buffers == document.end() || !buffers->is_array())
        return files;
    for (const nlohmann::json& buffer : *buffers) {
        const auto uri = buffer.find("uri");
        if (uri == buffer.end() || !uri->is_string())
            continue;
        const std::string text = uri->get<std::string>();
        if (!text.starts_with("data:"))
            files.push_back((path.parent_path() / decodeUri(text)).string());
    }
    return files;
}

}  // namespace

std::vector<std::string> filesBehindMesh(const std::string& file) {
    const fs::path path = platform::nativePath(file);
    const std::string ending = meshEnding(file);
    std::ifstream stream;
    if (std::error_code none; fs::is_regular_file(path, none))
        stream.open(path, std::ios::binary);
    if (ending == ".obj")
        return librariesOf(stream, path);
    if (ending == ".gltf")
        return buffersOf(stream, path);
    return {};
}

}  // namespace Tarnkit
