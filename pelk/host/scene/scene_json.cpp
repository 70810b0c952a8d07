#include "pelk/host/scene/scene_json.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <unordered_set>
#include <utility>
#include <vector>

namespace Tarnkit {

namespace {

constexpr std::size_t kMaxNesting = 64;

constexpr std::size_t kLongestNumber = 1000;

/// The place behind a text, as editors count it.
std::string lineAndColumn(std::string_view read) {
    const std::ptrdiff_t line = std::count(read.begin(), read.end(), '\n') + 1;
    const std::size_t column = read.size() - (read.rfind('\n') + 1) + 1;
    return std::to_string(line) + ":" + std::to_string(column);
}

/// Where a string or a comment that begins at `at` ends; `at` if none does.
std::size_t skipQuoted(std::string_view text, std::size_t at) {
    if (text.substr(at, 2) == "//")
        return std::min(text.find('\n', at), text.size());
    if (text.substr(at, 2) == "/*")
        return std::min(text.find("*/", at + 2), text.size());
    if (text[at] != '"')
        return at;
    for (++at; at < text.size() && text[at] != '"'; ++at)
        at += text[at] == '\\';
    return std::min(at, text.size());
}

/// Where a number stands that is longer than anybody writes one, npos if there is none. The parser
/// would take minutes for one of a gigabyte, and several copies of it.
std::size_t longNumberAt(std::string_view text) {
    constexpr std::string_view kNumber = "0123456789+-.eE";
    std::size_t length = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        i = skipQuoted(text, i);
        length = i < text.size() && kNumber.find(text[i]) != kNumber.npos ? length + 1 : 0;
        if (length > kLongestNumber)
            return i + 1 - length;
    }
    return std::string_view::npos;
}

/// Builds the document from the parser's events, since the ready-made builder lets a key that
/// stands twice pass.
class DocumentBuilder final : public nlohmann::json_sax<Json> {
public:
    DocumentBuilder(std::string_view text_, Json& root_, std::string& error_)
        : text(text_), root(root_), error(error_) {}

    bool null() override { return add(nullptr); }
    bool boolean(bool value) override { return add(value); }
    bool number_integer(number_integer_t value) override { return add(value); }
    bool number_unsigned(number_unsigned_t value) override { return add(value); }
    bool number_float(number_float_t value, const string_t&) override { return add(value); }
    bool string(string_t& value) override { return add(std::move(value)); }
    bool binary(binary_t&) override { return false; }

    bool start_object(std::size_t) override { return enter(Json::object()); }
    bool start_array(std::size_t) override { return enter(Json::array()); }
    bool end_object() override { return leave(); }
    bool end_array() override { return leave(); }

    bool key(string_t& name) override {
        Level& level = levels.back();
        level.key = name;
        if (level.keys.insert(name).second)
            return true;
        error = place() + ": the key stands here twice";
        return false;
    }

    bool parse_error(std::size_t position, const std::string&,
                     const nlohmann::detail::exception& exception) override {
        // What the library says comes with its own idea of the place; only the reason is wanted.
        std::string_view reason = exception.what();
        for (const std::string_view mark : {"] ", ", column "}) {
            const std::size_t at = reason.find(mark);
            if (at != std::string_view::npos)
                reason.remove_prefix(at + mark.size());
        }
        if (const std::size_t colon = reason.find(": "); colon != std::string_view::npos)
            reason.remove_prefix(colon + 2);
        const std::string_view read = text.substr(0, position == 0 ? 0 : position - 1);
        error = lineAndColumn(read) + ": " + std::string(reason);
        return false;
    }

private:
    struct Level {
        Json* value;
        std::string key;
        std::unordered_set<std::string> keys;
    };

    Json& insert(Json value) {
        if (levels.empty())
            return root = std::move(value);
        Level& level = levels.back();
        if (level.value->is_object()) {
            // At the end without a search, which is linear here: the key is known to be new.
            auto& members = level.value->get_ref<Json::object_t&>();
            members.emplace_back(level.key, std::move(value));
            return members.back().second;
        }
        level.value->push_back(std::move(value));
        return level.value->back();
    }

    bool add(Json value) {
        insert(std::move(value));
        return true;
    }

    bool enter(Json value) {
        if (levels.size() >= kMaxNesting) {
            error = place() + ": nested too deeply";
            return false;
        }
        levels.push_back({&insert(std::move(value)), {}, {}});
        return true;
    }

    bool leave() {
        levels.pop_back();
        return true;
    }

    std::string place() const {
        std::string pointer;
        for (const Level& level : levels)
            pointer = level.value->is_object()
                          ? pointerTo(pointer, level.key)
                          : pointerTo(pointer, level.value->empty() ? 0 : level.value->size() - 1);
        return pointer;
    }

    std::string_view text;
    Json& root;
    std::string& error;
    std::vector<Level> levels;
};

}  // namespace

bool parseSceneJson(std::string_view text, Json& out, std::string& error) {
    if (const std::size_t at = longNumberAt(text); at != std::string_view::npos) {
        error = lineAndColumn(text.substr(0, at)) + ": expected a number of at most " +
                std::to_string(kLongestNumber) + " characters";
        return false;
    }
    DocumentBuilder builder(text, out, error);
    return Json::sax_parse(text, &builder, nlohmann::detail::input_format_t::json, true, true);
}

bool toWholeNumber(const Json& value, int& out) {
    // As a double it can't wrap round to something small, and 32 bits are exact.
    const double number = value.is_number() ? value.get<double>() : 0.5;
    if (std::trunc(number) != number || number < std::numeric_limits<int>::min() ||
        number > std::numeric_limits<int>::max())
        return false;
    out = static_cast<int>(number);
    return true;
}

std::string pointerTo(const std::string& parent, std::string_view key) {
    std::string pointer = parent + "/";
    for (const char c : key) {
        if (c == '~')
            pointer += "~0";
        else if (c == '/')
            pointer += "~1";
        else
            pointer += c;
    }
    return pointer;
}

std::string pointerTo(const std::string& parent, std::size_t index) {
    return parent + "/" + std::to_string(index);
}

std::string shortText(const Json& value) {
    constexpr std::size_t kLongest = 40;
    // Cut before it is written out too: a text can be as long as the file.
    if (value.is_string() && value.get_ref<const std::string&>().size() > kLongest)
        return shortText(value.get_ref<const std::string&>().substr(0, kLongest));
    std::string text = value.dump(-1, ' ', false, Json::error_handler_t::replace);
    if (text.size() > kLongest)
        text = text.substr(0, kLongest) + "...";
    return text;
}

}  // namespace Tarnkit
