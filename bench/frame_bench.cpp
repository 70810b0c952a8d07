// Pools and tables of the frame beside what a program would use without them.

#include <algorithm>
#include <cstdlib>
#include <string>
#include <unordered_map>
#include <vector>

#include <benchmark/benchmark.h>

#include "comparison.h"
#include "pelk/base/hash_table.h"
#include "pool_calls.h"

using namespace Tarnkit;

namespace {

void poolTakeGiveBack(benchmark::State& state) {
    Pools pools;
    pools.resize(1);
    for (auto _ : state)
        giveBackToPool(pools, 0, takeFromPool(pools, 0));
    pools.destroy();
}
BENCHMARK(poolTakeGiveBack);

void bareFreeList(benchmark::State& state) {
    for (auto _ : state)
        giveBackToList(takeFromList());
}
BENCHMARK(bareFreeList);

void mallocFree(benchmark::State& state) {
    for (auto _ : state) {
        void* memory = std::malloc(sizeof(Element));
        benchmark::DoNotOptimize(memory);
        std::free(memory);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(mallocFree);

constexpr int kNames = 1000;

const std::vector<std::string>& names() {
    static const std::vector<std::string> all = [] {
        std::vector<std::string> made;
        for (int i = 0; i < kNames; ++i)
            made.push_back("plugin_parameter_" + std::to_string(i * 7919));
        return made;
    }();
    return all;
}

void hashTableByName(benchmark::State& state) {
    HashTable<const char*, int> table;
    for (int i = 0; i < kNames; ++i)
        table.insert(names()[i].c_str(), i);
    int i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(table.find(names()[i].c_str()));
        i = i + 1 < kNames ? i + 1 : 0;
    }
}
BENCHMARK(hashTableByName);

void unorderedMapByName(benchmark::State& state) {
    std::unordered_map<std::string, int> map;
    for (int i = 0; i < kNames; ++i)
        map.emplace(names()[i], i);
    int i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(map.find(names()[i]));
        i = i + 1 < kNames ? i + 1 : 0;
    }
}
BENCHMARK(unorderedMapByName);

void hashTableByNumber(benchmark::State& state) {
    HashTable<u32, int> table;
    for (int i = 0; i < kNames; ++i)
        table.insert(static_cast<u32>(i) * 7919u, i);
    u32 i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(table.find(i * 7919u));
        i = i + 1 < kNames ? i + 1 : 0;
    }
}
BENCHMARK(hashTableByNumber);

void unorderedMapByNumber(benchmark::State& state) {
    std::unordered_map<u32, int> map;
    for (int i = 0; i < kNames; ++i)
        map.emplace(static_cast<u32>(i) * 7919u, i);
    u32 i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(map.find(i * 7919u));
        i = i + 1 < kNames ? i + 1 : 0;
    }
}
BENCHMARK(unorderedMapByNumber);

}  // namespace

int main(int argc, char** argv) {
    Comparison table(argc, argv);
    table.row("pool take + giveBack", "poolTakeGiveBack", "bareFreeList", "thread-local free list",
              1.5);
    table.row("pool take + giveBack", "poolTakeGiveBack", "mallocFree", "malloc + free", 1.0);
    table.row("HashTable by name", "hashTableByName", "unorderedMapByName", "unordered_map<string>",
              1.0);
    table.row("HashTable by number", "hashTableByNumber", "unorderedMapByNumber",
              "unordered_map<u32>", 2.0);
    return 0;
}
