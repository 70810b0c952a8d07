#include "pelk/support/environment.h"

#include <cstdlib>
#include <memory>
#include <string>

#include "pelk/base/text_or.h"
#include "pelk/platform/environment.h"
#include "pelk/support/text_tools.h"

namespace Tarnkit {

namespace {

constexpr int kMaxRounds = 1000;
constexpr int kMaxGrowth = 64 * 1024;
constexpr std::size_t kValueSize = 32768;

/// The reference that is to be replaced next, braces included; empty if there is none.
std::string nextReference(const std::string& text) {
    const std::size_t end = text.find('}');
    const std::size_t begin = end == text.npos ? end : text.rfind("${", end);
    return begin == text.npos ? "" : text.substr(begin, end + 1 - begin);
}

std::size_t countOf(const std::string& text, const std::string& sought) {
    std::size_t count = 0;
    for (std::size_t at = 0; (at = text.find(sought, at)) != text.npos; at += sought.size())
        ++count;
    return count;
}

/// The text with its references replaced. With `unset` the work ends at the first variable that has
/// no value, whose name is left there.
CharString expanded(const CharString& text, CharString* unset) {
    CharString result = text;
    const auto longest = static_cast<std::size_t>(text.length()) + kMaxGrowth;
    for (int round = 0; round < kMaxRounds; ++round) {
        const std::string current = textOrEmpty(result.c_str());
        const std::string reference = nextReference(current);
        if (reference.empty())
            break;
        const std::string name = reference.substr(2, reference.size() - 3);
        const char* const found = std::getenv(name.c_str());
        if (!found && unset) {
            *unset = name.c_str();
            break;
        }
        const std::string value = textOrEmpty(found);
        const std::size_t count = countOf(current, reference);
        if (current.size() + count * value.size() > longest + count * reference.size())
            break;
        replaceAll(result, reference.c_str(), value.c_str());
    }
    return result;
}

}  // namespace

void expandEnvironment(CharString& text) {
    text = expanded(text, nullptr);
}

CharString findUnsetVariable(const CharString& text) {
    CharString name;
    expanded(text, &name);
    return name;
}

void syncEnvironment() {
    const platform::Environment& environment = platform::environment();
    const auto value = std::make_unique<char[]>(kValueSize);
    for (const std::string& entry : environment.entries()) {
        const std::size_t equals = entry.find('=');
        // Some systems keep the directory of each drive in entries that begin with `=`.
        if (equals == 0 || equals == entry.npos)
            continue;
        const std::string name = entry.substr(0, equals), wanted = entry.substr(equals + 1);
        const long length = environment.read(name.c_str(), value.get(), kValueSize);
        const bool fits = length < static_cast<long>(kValueSize);
        if (length < 0 || (fits && wanted != value.get()))
            environment.write(name.c_str(), wanted.c_str());
    }
}

}  // namespace Tarnkit
