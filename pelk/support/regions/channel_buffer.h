#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "pelk/base/grow_table.h"
#include "pelk/base/memory.h"
#include "pelk/base/types.h"

namespace Tarnkit {

/// A paged array of equal items, so that no single large allocation is needed. Item `i` lies in
/// page `i / itemsPerPage`, at byte `(i % itemsPerPage) * itemSize`.
class ChannelBuffer {
public:
    /// Items that stand one after the other in memory.
    struct Run {
        u8* data;
        int count;
    };

    ChannelBuffer() = default;
    ChannelBuffer(const ChannelBuffer&) = delete;
    ChannelBuffer& operator=(const ChannelBuffer&) = delete;
    ~ChannelBuffer() { free(); }

    /// Buffers take their memory where their pages do, so that its failure reads the same.
    static void* operator new(std::size_t size) { return allocate(size); }
    static void operator delete(void* memory) noexcept { freeMemory(memory); }

    /// Makes room for `count` items of `itemSize` bytes in pages of about `pageBytes`, cut down to
    /// whole rows of `rowWidth` items where a row fits. Pages of a similar size stay, with what is
    /// in them; what is new is not written. Memory failure is an ExceptionMsg, after which the
    /// buffer may be short of items.
    void resize(int count, int itemSize, int pageBytes, int rowWidth);

    /// Gives all memory back.
    void free();

    /// The address of an item, null outside of the items in use.
    u8* item(int index) { return index >= 0 && index < used ? address(index) : nullptr; }

    /// The items from `index` on, at most `wanted` of them: as many as the page and the items in
    /// use have. None outside of the items in use.
    Run run(int index, int wanted) {
        if (index < 0 || index >= used)
            return {nullptr, 0};
        const int inPage = itemsPerPage - index % itemsPerPage;
        return {address(index), std::min({wanted, inPage, used - index})};
    }

    /// Calls `visit(data, n)` for the first `count` items, page by page.
    template <class Visit>
    void forEachRun(int count, Visit&& visit) {
        for (int index = 0; index < std::min(count, used);) {
            const Run items = run(index, count - index);
            visit(items.data, items.count);
            index += items.count;
        }
    }

    int size() const { return used; }
    int getCapacity() const { return capacity; }
    int getItemsPerPage() const { return itemsPerPage; }
    int getPageBytes() const { return pageBytes; }
    int getItemSize() const { return itemSize; }

private:
    bool keepsPages(int count, int newItemSize, std::int64_t newPageBytes, int rowWidth) const;
    void setPageBytes(int bytes, int newItemSize);
    void addPages(int count);

    u8* address(int index) { return pages[index / itemsPerPage] + index % itemsPerPage * itemSize; }

    GrowTable<u8*> pages{100};
    int used = 0;      // items in use
    int capacity = 0;  // items that the pages hold
    int itemsPerPage = 0;
    int pageBytes = 0;
    int itemSize = 0;
};

}  // namespace Tarnkit
