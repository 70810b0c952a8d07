#include "pelk/host/plugins/mesh_check.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <nlohmann/json.hpp>
#include <vector>

namespace Tarnkit {

namespace {

std::string_view takeLine(std::string_view& text) {
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (!line.empty() && line.back() == '\r')
        line.remove_suffix(1);
    return line;
}

/// The next word of `text`, empty at the end.
std::string_view takeWord(std::string_view& text) {
    constexpr std::string_view kBlanks = " \t\r\n\v\f";
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    const std::string_view word = text.substr(0, text.find_first_of(kBlanks));
    text.remove_prefix(word.size());
    return word;
}

bool parseNumber(std::string_view word, long long& out) {
    return std::from_chars(word.data(), word.data() + word.size(), out).ec == std::errc();
}

/// Words that a statement needs behind its keyword.
int wordsNeeded(std::string_view keyword) {
    if (keyword == "v" || keyword == "vn" || keyword == "f")
        return 3;
    return keyword == "vt" || keyword == "l" ? 2 : 0;
}

/// An OBJ file doesn't say how much it holds. One that stops inside a line was cut if that line is
/// incomplete, or if vertices were read that no face has used yet. A last line that only lacks its
/// end is fine.
bool checkObj(std::string_view text, std::string& error) {
    if (text.empty() || text.back() == '\n')
        return true;
    long long vertices = 0, highest = 0;
    int missing = 0;
    while (!text.empty()) {
        std::string_view line = takeLine(text);
        const std::string_view keyword = takeWord(line);
        vertices += keyword == "v";
        missing = wordsNeeded(keyword);
        for (std::string_view word; !(word = takeWord(line)).empty(); --missing) {
            long long index = 0;
            if (keyword == "f" && parseNumber(word, index))
                highest = std::max(highest, index < 0 ? vertices + index + 1 : index);
        }
    }
    if (missing <= 0 && highest >= vertices)
        return true;
    error = "the file is cut short inside its last line";
    return false;
}

struct PlyProperty {
    int size = 0;       ///< bytes of a value
    int countSize = 0;  ///< bytes of the count of a list; 0 for a single value
};

struct PlyElement {
    std::string_view name;
    long long count = 0;
    std::vector<PlyProperty> properties;
};

enum class PlyFormat { Text, LittleEndian, BigEndian };

struct PlyHead {
    PlyFormat format = PlyFormat::Text;
    std::vector<PlyElement> elements;
};

int plyTypeSize(std::string_view type) {
    static constexpr struct {
        std::string_view name;
        int size;
    } kTypes[] = {{"char", 1},  {"uchar", 1},   {"int8", 1},   {"uint8", 1},
                  {"short", 2}, {"ushort", 2},  {"int16", 2},  {"uint16", 2},
                  {"int", 4},   {"uint", 4},    {"int32", 4},  {"uint32", 4},
                  {"float", 4}, {"float32", 4}, {"double", 8}, {"float64", 8}};
    for (const auto& known : kTypes) {
        if (known.name == type)
            return known.size;
    }
    return 0;
}

bool parsePlyProperty(std::string_view line, PlyHead& head) {
    if (head.elements.empty())
        return false;
    PlyProperty property;
    std::string_view type = takeWord(line);
    if (type == "list") {
        property.countSize = plyTypeSize(takeWord(line));
        type = takeWord(line);
        if (property.countSize == 0 || property.countSize > 4)
            return false;
    }
    property.size = plyTypeSize(type);
    head.elements.back().properties.push_back(property);
    return property.size > 0;
}

bool parsePlyLine(std::string_view line, PlyHead& head) {
    const std::string_view keyword = takeWord(line);
    if (keyword == "format") {
        const std::string_view format = takeWord(line);
        head.format = format == "ascii"                  ? PlyFormat::Text
                      : format == "binary_little_endian" ? PlyFormat::LittleEndian
                                                         : PlyFormat::BigEndian;
        return format == "ascii" || format.starts_with("binary_");
    }
    if (keyword == "element") {
        PlyElement element{takeWord(line), 0, {}};
        const bool known = parseNumber(takeWord(line), element.count) && element.count >= 0;
        head.elements.push_back(std::move(element));
        return known;
    }
    return keyword == "property" ? parsePlyProperty(line, head) : true;
}

/// Takes the head off `text`. False if it is broken or never ends.
bool takePlyHead(std::string_view& text, PlyHead& head) {
    if (takeLine(text) != "ply")
        return false;
    while (!text.empty()) {
        const std::string_view line = takeLine(text);
        if (line == "end_header")
            return true;
        if (!parsePlyLine(line, head))
            return false;
    }
    return false;
}

/// Takes one value, or one list with its count, off the body. False if the body ends before.
bool takePlyText(std::string_view& body, const PlyProperty& property) {
    long long values = 1;
    if (property.countSize > 0 && (!parseNumber(takeWord(body), values) || values < 0))
        return false;
    for (; values > 0; --values) {
        if (takeWord(body).empty())
            return false;
    }
    return true;
}

bool takePlyBytes(std::string_view& body, const PlyProperty& property, PlyFormat format) {
    std::uint64_t values = 1;
    if (property.countSize > 0) {
        const std::size_t size = static_cast<std::size_t>(property.countSize);
        if (body.size() < size)
            return false;
        values = 0;
        for (std::size_t i = 0; i < size; ++i) {
            const std::size_t place = format == PlyFormat::LittleEndian ? size - 1 - i : i;
            values = values << 8 | static_cast<unsigned char>(body[place]);
        }
        body.remove_prefix(size);
    }
    const std::uint64_t bytes = values * static_cast<std::uint64_t>(property.size);
    if (body.size() < bytes)
        return false;
    body.remove_prefix(bytes);
    return true;
}

bool checkPly(std::string_view text, std::string& error) {
    PlyHead head;
    if (!takePlyHead(text, head)) {
        error = "the head of the file is broken or cut short";
        return false;
    }
    for (const PlyElement& element : head.elements) {
        // Rows that take no bytes: a count without end would be gone through for nothing.
        if (element.properties.empty() && element.count > 0) {
            error = "the rows of \"" + std::string(element.name) + "\" have no properties";
            return false;
        }
        for (long long row = 0; row < element.count; ++row) {
            for (const PlyProperty& property : element.properties) {
                const bool there = head.format == PlyFormat::Text
                                       ? takePlyText(text, property)
                                       : takePlyBytes(text, property, head.format);
                if (there)
                    continue;
                error = "the file is cut short: " + std::to_string(row) + " of " +
                        std::to_string(element.count) + " rows of \"" + std::string(element.name) +
                        "\" are whole";
                return false;
            }
        }
    }
    return true;
}

/// Whether a mesh is the same without the extension, or the import library knows it.
bool isKnownExtension(std::string_view name) {
    // Looks, lamps and texture formats, of which a mesh takes nothing.
    static constexpr std::string_view kHarmless[] = {"KHR_materials_", "KHR_texture_",
                                                     "EXT_texture_",   "MSFT_texture_",
                                                     "KHR_lights_",    "EXT_lights_"};
    return name == "KHR_draco_mesh_compression" ||
           std::any_of(std::begin(kHarmless), std::end(kHarmless),
                       [&](std::string_view start) { return name.starts_with(start); });
}

/// A reader that lacks what a file requires must not read it: where the vertices are packed it
/// would find none, or wrong ones.
bool checkExtensions(const nlohmann::json& document, std::string& error) {
    const auto required = document.find("extensionsRequired");
    if (required == document.end() || !required->is_array())
        return true;
    for (const nlohmann::json& name : *required) {
        if (!name.is_string() || isKnownExtension(name.get_ref<const std::string&>()))
            continue;
        error = "it requires the extension \"" + name.get<std::string>() +
                "\", which can't be read here";
        return false;
    }
    return true;
}

bool checkGltf(std::string_view json, std::string& error) {
    constexpr int kMaxNesting = 64;
    // Names in other encodings than UTF-8 are read all the same.
    std::string plain(json);
    std::replace_if(
        plain.begin(), plain.end(), [](char c) { return static_cast<signed char>(c) < 0; }, ' ');
    int nesting = 0;
    const auto document = nlohmann::json::parse(
        plain,
        [&](int depth, nlohmann::json::parse_event_t, nlohmann::json&) {
            nesting = std::max(nesting, depth);
            return depth <= kMaxNesting;
        },
        false);
    // The import library's parser calls itself for each level.
    if (nesting > kMaxNesting)
        error = "its JSON is nested too deeply";
    else if (document.is_discarded() || !document.is_object())
        error = "the JSON of the file is broken or cut short";
    else
        return checkExtensions(document, error);
    return false;
}

constexpr std::size_t kGlbHead = 12, kGlbChunkHead = 8;

std::uint32_t readLittleEndian(std::string_view bytes, std::size_t at) {
    std::uint32_t value = 0;
    for (std::size_t i = 4; i-- > 0;)
        value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
    return value;
}

bool checkGlb(std::string_view bytes, std::string& error) {
    if (!bytes.starts_with("glTF")) {
        error = "it does not begin like a GLB file";
        return false;
    }
    const bool hasHead = bytes.size() >= kGlbHead + kGlbChunkHead;
    const std::uint64_t length = hasHead ? readLittleEndian(bytes, 8) : 0;
    const std::uint64_t jsonLength = hasHead ? readLittleEndian(bytes, kGlbHead) : 0;
    if (!hasHead || length > bytes.size() || kGlbHead + kGlbChunkHead + jsonLength > length) {
        error = "the file is cut short";
        return false;
    }
    return checkGltf(bytes.substr(kGlbHead + kGlbChunkHead, jsonLength), error);
}

}  // namespace

bool checkMeshText(std::string_view text, std::string_view ending, std::string& error) {
    if (ending == ".obj")
        return checkObj(text, error);
    if (ending == ".gltf")
        return checkGltf(text, error);
    if (ending == ".glb")
        return checkGlb(text, error);
    return ending == ".ply" ? checkPly(text, error) : true;
}

}  // namespace Tarnkit
