// File names with numbers of frames and variables of the environment.

#include "fuzz/fuzz_input.h"
#include "pelk/support/environment.h"
#include "pelk/support/frame_numbers.h"
#include "pelk/support/number_text.h"

using namespace Tarnkit;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const int ready = setenv("LOOP", "${LOOP}${LOOP}", 1) | setenv("OS", "x", 1) |
                             setenv("DIR_x", "/shots", 1) | setenv("GROWS", "<${GROWS}>", 1);
    require(ready == 0, "variables can be set");
    FuzzInput input(data, size);
    const int frame = input.number<int>(), room = input.between(1, 60);
    const int digits = input.between(-1, 40), base = input.between(0, 18);
    const bool addDot = input.between(0, 1);
    const std::string pattern = input.line(), text = input.line();

    const std::string name = textOf(expandFrameNumber(pattern.c_str(), frame));
    if (pattern.find_first_of("%<") == std::string::npos)
        require(pattern == name, "a name without placeholders stays");
    // Both spellings say the same, where % and < stand for nothing else.
    const CharString converted = convertFrameFormat(pattern.c_str());
    if (pattern.find("%%") == std::string::npos && pattern.find('<') == std::string::npos)
        require(textOf(expandFrameNumber(converted.c_str(), frame)) == name ||
                    pattern.find_first_of("uU") != std::string::npos,
                "both spellings of a placeholder agree");

    ExactBuffer out(room);
    insertFrameNumber(pattern.c_str(), digits, frame, out.get(), room, addDot);
    require(std::strlen(out.get()) < static_cast<std::size_t>(room), "terminated");
    insertBeforeExtension(pattern.c_str(), text.c_str(), out.get(), room, addDot);
    require(std::strlen(out.get()) < static_cast<std::size_t>(room), "terminated");
    intToText(frame, out.get(), base, room);
    if (base == 10 && room > 11)
        require(parseInt(out.get()) == frame, "a number comes back");

    CharString expanded(text.c_str());
    expandEnvironment(expanded);
    require(textOf(expanded).size() <= text.size() + 65536, "no text grows without end");
    if (text.find('}') == std::string::npos)
        require(text == textOf(expanded), "a text without references stays");
    return 0;
}
