#pragma once

#include <cassert>
#include <climits>
#include <cstring>
#include <type_traits>
#include <utility>

#include "pelk/base/memory.h"

namespace Tarnkit {

/// A growable array, the std::vector of this library: its layout is ours, so it may stand in an
/// interface between host and plug-ins, and its memory and failures are those of memory.h.
///
/// Entries are plain (pointers, numbers, records of them): they move by their bytes when the table
/// grows, and are forgotten without a destructor. Growing moves them to a new place, so pointers
/// and references to entries, and iterators, hold only until the next call that may grow. Where
/// they must hold longer, use Sequence.
///
///     GrowTable<PluginDesc*> descs(100);
///     descs.append(desc);
///     for (PluginDesc* each : descs)
///         use(each);
///
/// Which of the containers here to take:
///
///     GrowTable   an array: by index, in order, entries may move
///     Sequence    entries are taken one after the other and never move
///     HashTable   by a number or a name
///     PoolEntry   entries are taken and given back all the time, on one thread
///
/// Reads may overlap; the owner keeps any other call from overlapping. Memory failure is an
/// ExceptionMsg and leaves the table as it was. A table never gives memory back by itself: one that
/// is cleared and filled again at each hit soon allocates no more.
template <class T>
class GrowTable {
    static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>,
                  "entries of a GrowTable are moved by copying their bytes");

public:
    /// Allocates nothing yet. `step`: how the table grows, in entries. At least 1: to the next
    /// multiple of `step` that is above what is needed, so a table of 100 at a time has room for
    /// 100, 200, 300. That wastes little where the usual size is known, such as the plug-ins of a
    /// library, but n appends copy about n^2 / (2 step) entries. Below 1, the default: the capacity
    /// doubles, which keeps the cost of an append constant on average whatever the size.
    explicit GrowTable(int step = 0) : growthStep(step) {}
    /// Takes the entries of `other` and leaves it empty, with the same step.
    GrowTable(GrowTable&& other) noexcept : growthStep(other.growthStep) { swap(other); }
    /// Exchanges the two tables, so `other` frees what this one held.
    GrowTable& operator=(GrowTable&& other) noexcept {
        swap(other);
        return *this;
    }
    // A copy would be an allocation that no one sees; who means it appends one by one.
    GrowTable(const GrowTable&) = delete;
    GrowTable& operator=(const GrowTable&) = delete;
    ~GrowTable() { freeMemory(items); }

    /// Adds a copy of `item` at the end and returns it. `item` may be an entry of this table: it is
    /// copied first, since growing frees the place where it stands.
    /// Constant time on average if the capacity doubles, else see the constructor.
    T& append(const T& item) {
        const T copy = item;
        reserve(count + 1LL);
        return *::new (items + count++) T(copy);
    }

    /// Makes the table `size` entries long, at least 0. New ones at the end have their fields'
    /// default values, else zero. A smaller size forgets the entries behind it, keeps the memory
    /// and can't fail.
    void resize(int size) {
        assert(size >= 0);
        reserve(size);
        for (; count < size; ++count)
            ::new (items + count) T();
        count = size;
    }

    /// Removes an entry by moving the last one into its place, in constant time; the order of the
    /// others is lost. A loop that removes as it goes must look at `index` again, or run down.
    void removeBySwap(int index) {
        assert(index >= 0 && index < count);
        items[index] = items[count - 1];
        --count;
    }

    /// Forgets all entries and keeps the memory. Can't fail.
    void clear() { count = 0; }

    /// Forgets all entries and gives the memory back; the step stays. For the end of a render,
    /// where a material should hold nothing.
    void free() {
        freeMemory(std::exchange(items, nullptr));
        count = capacity = 0;
    }

    /// Exchanges entries and step in constant time; pointers to entries go with them.
    void swap(GrowTable& other) noexcept {
        std::swap(count, other.count);
        std::swap(growthStep, other.growthStep);
        std::swap(capacity, other.capacity);
        std::swap(items, other.items);
    }

    /// The entry at a place, from 0 to below `size`; tested by an assertion only, for tables are
    /// read at hits. The reference holds until the table grows.
    T& operator[](int index) {
        assert(index >= 0 && index < count);
        return items[index];
    }
    const T& operator[](int index) const {
        assert(index >= 0 && index < count);
        return items[index];
    }

    /// Entries in the table. An int, as all counts here are: see types.h.
    int size() const { return count; }
    /// Entries for which there is room without allocation.
    int getCapacity() const { return capacity; }
    /// Whether there are no entries; memory may be kept all the same.
    bool isEmpty() const { return count == 0; }
    // For loops over all entries. All are null for a table that never held one. Entries may be
    // written through, but no entry added or removed meanwhile.
    // Plain pointers: a walk costs what that of an array does.
    T* begin() { return items; }
    T* end() { return items + count; }
    const T* begin() const { return items; }
    const T* end() const { return items + count; }

private:
    /// Makes room for `size` entries in all; keeps what there is.
    void reserve(long long size) {
        if (size > capacity)
            grow(size);
    }

    /// The capacity to take when `size` entries don't fit. In 64 bits: doubling may leave the ints.
    long long grownCapacity(long long size) const {
        if (growthStep >= 1)
            return size + growthStep - size % growthStep;  // one step more if `size` is a multiple
        if (capacity < 1)
            return size;
        long long grown = capacity;
        while (grown < size)
            grown *= 2;
        return grown;
    }

    /// Allocates the new array before the old one is freed, so a failure changes nothing. A
    /// capacity that is no int counts as a failure of memory.
    void grow(long long size) {
        const long long grown = grownCapacity(size);
        if (grown > INT_MAX)
            allocationFailed(static_cast<std::size_t>(grown) * sizeof(T));
        // A new block: memory.h has no way to make one larger where it stands.
        T* moved = allocateArray<T>(grown);
        if (count > 0)
            std::memcpy(static_cast<void*>(moved), items, count * sizeof(T));
        freeMemory(std::exchange(items, moved));
        capacity = static_cast<int>(grown);
    }

    int count = 0;       // entries that are constructed, the first ones of `items`
    int growthStep;      // as the constructor got it; below 1 is doubling
    int capacity = 0;    // entries for which there is room
    T* items = nullptr;  // owned, room for `capacity` entries of which `count` are constructed
};

}  // namespace Tarnkit
