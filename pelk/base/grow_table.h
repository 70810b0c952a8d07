#pragma once

#include <cassert>
#include <climits>
#include <cstring>
#include <type_traits>
#include <utility>

#include "pelk/base/memory.h"

namespace Tarnkit {

/// A growable array of plain entries; they move by their bytes when it grows. The owner keeps
/// calls from overlapping. Memory failure is an ExceptionMsg and leaves the table as it was.
template <class T>
class GrowTable {
    static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>,
                  "entries of a GrowTable are moved by copying their bytes");

public:
    /// `step`: capacities are multiples of it; below 1, the capacity doubles instead.
    explicit GrowTable(int step = 0) : growthStep(step) {}
    GrowTable(GrowTable&& other) noexcept : growthStep(other.growthStep) { swap(other); }
    GrowTable& operator=(GrowTable&& other) noexcept {
        swap(other);
        return *this;
    }
    GrowTable(const GrowTable&) = delete;
    GrowTable& operator=(const GrowTable&) = delete;
    ~GrowTable() { freeMemory(items); }

    /// Adds a copy of `item`, which may be an entry of this table, at the end.
    T& append(const T& item) {
        const T copy = item;
        reserve(count + 1LL);
        return *::new (items + count++) T(copy);
    }

    /// Makes the table `size` entries long. New ones at the end are zero.
    void resize(int size) {
        assert(size >= 0);
        reserve(size);
        for (; count < size; ++count)
            ::new (items + count) T();
        count = size;
    }

    /// Removes an entry by moving the last one into its place.
    void removeBySwap(int index) {
        assert(index >= 0 && index < count);
        items[index] = items[count - 1];
        --count;
    }

    /// Forgets all entries and keeps the memory.
    void clear() { count = 0; }

    /// Forgets all entries and gives the memory back.
    void free() {
        freeMemory(std::exchange(items, nullptr));
        count = capacity = 0;
    }

    void swap(GrowTable& other) noexcept {
        std::swap(count, other.count);
        std::swap(growthStep, other.growthStep);
        std::swap(capacity, other.capacity);
        std::swap(items, other.items);
    }

    T& operator[](int index) {
        assert(index >= 0 && index < count);
        return items[index];
    }
    const T& operator[](int index) const {
        assert(index >= 0 && index < count);
        return items[index];
    }

    int size() const { return count; }
    int getCapacity() const { return capacity; }
    bool isEmpty() const { return count == 0; }
    T* begin() { return items; }
    T* end() { return items + count; }
    const T* begin() const { return items; }
    const T* end() const { return items + count; }

private:
    void reserve(long long size) {
        if (size > capacity)
            grow(size);
    }

    /// The capacity to take when `size` entries don't fit.
    long long grownCapacity(long long size) const {
        if (growthStep >= 1)
            return size + growthStep - size % growthStep;
        if (capacity < 1)
            return size;
        long long grown = capacity;
        while (grown < size)
            grown *= 2;
        return grown;
    }

    void grow(long long size) {
        const long long grown = grownCapacity(size);
        if (grown > INT_MAX)
            allocationFailed(static_cast<std::size_t>(grown) * sizeof(T));
        T* moved = allocateArray<T>(grown);
        if (count > 0)
            std::memcpy(static_cast<void*>(moved), items, count * sizeof(T));
        freeMemory(std::exchange(items, moved));
        capacity = static_cast<int>(grown);
    }

    int count = 0;
    int growthStep;
    int capacity = 0;
    T* items = nullptr;
};

}  // namespace Tarnkit
