// UTF-8 to UTF-16 beside ICU, which converts without keeping what is no UTF-8.

#include <unicode/ustring.h>

#include <string>
#include <vector>

#include "comparison.h"
#include "pelk/support/utf.h"

namespace {

std::string repeated(const std::string& text) {
    std::string all;
    while (all.size() < 64 * 1024)
        all += text;
    return all;
}

/// Names and sentences in several scripts, as they stand side by side in a list of files.
const std::string& mixed() {
    static const std::string text = repeated(
        "shots/010/Küche_größer.0001.exr, Кухня вечером: свет из окна, 台所の光と影, "
        "la lumière d'été, 😀 final-final_v2.exr\n");
    return text;
}

const std::string& ascii() {
    static const std::string text = repeated("/shots/sequence 010/kitchen_bigger.0001.exr\n");
    return text;
}

void convert(benchmark::State& state, const std::string& text) {
    std::vector<char16_t> out(text.size() + 1);
    for (auto _ : state) {
        benchmark::DoNotOptimize(Tarnkit::utf8ToUtf16(text.c_str(), out.data(), out.size()));
        benchmark::ClobberMemory();
    }
}

void convertByIcu(benchmark::State& state, const std::string& text) {
    std::vector<char16_t> out(text.size() + 1);
    for (auto _ : state) {
        UErrorCode error = U_ZERO_ERROR;
        int32_t length = 0;
        // Its length is handed over, which spares this peer the search for the end.
        benchmark::DoNotOptimize(u_strFromUTF8(out.data(), static_cast<int32_t>(out.size()),
                                               &length, text.data(),
                                               static_cast<int32_t>(text.size()), &error));
        benchmark::ClobberMemory();
    }
}

void oursAscii(benchmark::State& state) {
    convert(state, ascii());
}
BENCHMARK(oursAscii);
void icuAscii(benchmark::State& state) {
    convertByIcu(state, ascii());
}
BENCHMARK(icuAscii);
void oursMixed(benchmark::State& state) {
    convert(state, mixed());
}
BENCHMARK(oursMixed);
void icuMixed(benchmark::State& state) {
    convertByIcu(state, mixed());
}
BENCHMARK(icuMixed);

}  // namespace

int main(int argc, char** argv) {
    Comparison table(argc, argv);
    table.row("UTF-8 to UTF-16: 64 KiB of ASCII", "oursAscii", "icuAscii", "ICU", 0.5);
    table.row("UTF-8 to UTF-16: 64 KiB, mixed", "oursMixed", "icuMixed", "ICU", 1.0);
    return 0;
}
