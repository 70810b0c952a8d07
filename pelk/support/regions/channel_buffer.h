#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "pelk/base/grow_table.h"
#include "pelk/base/memory.h"
#include "pelk/base/types.h"

namespace Tarnkit {

/// The pixels of one channel: a paged array of equal items, so that a very large image asks the
/// heap for blocks of bounded size and not for one of gigabytes.
///
/// Item `i` lies in page `i / itemsPerPage`, at byte `(i % itemsPerPage) * itemSize`; inside a page
/// items follow one another without gaps or padding, in the byte order of the machine. The buffer
/// knows nothing of rows: a region gives the pixel (x, y) of its rectangle the index
/// `(x - x0) + (y - y0) * width`, so row y + 1 begins right behind the last pixel of row y. Code
/// that moves pixels goes by `run` and not by `item`: a row then costs one or two block copies.
///
/// Items have no type here and no alignment beyond a float's: a colour is three floats, 12 bytes.
/// Takes no lock. Threads may write different items at once; `resize` and `free` come alone.
class ChannelBuffer {
public:
    /// Items that stand one after the other in memory.
    struct Run {
        u8* data;   ///< the first of them; null if there are none
        int count;  ///< how many, 0 if there are none
    };

    ChannelBuffer() = default;
    ChannelBuffer(const ChannelBuffer&) = delete;
    ChannelBuffer& operator=(const ChannelBuffer&) = delete;
    ~ChannelBuffer() { free(); }

    /// Buffers take their own memory where their pages do, so that to whoever runs out of it both
    /// failures read the same: an ExceptionMsg with the size that was asked for.
    static void* operator new(std::size_t size) { return allocate(size); }
    static void operator delete(void* memory) noexcept { freeMemory(memory); }

    /// Makes room for `count` items of `itemSize` bytes in pages of about `pageBytes`, cut down to
    /// whole rows of `rowWidth` items where a row fits. Pages of a similar size stay, with what is
    /// in them (a factor of four up or down, and whole rows), since tiles of one picture follow one
    /// another in the same region and fresh memory is dear. What is new is not written; the caller
    /// fills it. Where pages stay, a smaller count leaves the items in use as many as they were. An
    /// `itemSize` below 1 frees all. Memory failure is an ExceptionMsg, after which the buffer may
    /// be short of items but is sound.
    void resize(int count, int itemSize, int pageBytes, int rowWidth);

    /// Gives all memory back; the buffer is as new.
    void free();

    /// The address of an item, null outside of the items in use. Good until `resize` or `free`.
    u8* item(int index) { return index >= 0 && index < used ? address(index) : nullptr; }

    /// The items from `index` on, at most `wanted` of them: as many as the page and the items in
    /// use have. None outside of the items in use.
    Run run(int index, int wanted) {
        if (index < 0 || index >= used)
            return {nullptr, 0};
        const int inPage = itemsPerPage - index % itemsPerPage;
        return {address(index), std::min({wanted, inPage, used - index})};
    }

    /// Calls `visit(data, n)` for `count` items from `first` on, run by run. Ends where the items
    /// in use do.
    template <class Visit>
    void forEachRun(int first, int count, Visit&& visit) {
        for (Run items; count > 0 && (items = run(first, count)).count > 0;) {
            visit(items.data, items.count);
            first += items.count;
            count -= items.count;
        }
    }

    /// Items in use. May be more than the last `resize` asked for, never fewer.
    int size() const { return used; }
    /// Items that the pages hold, those in use and those to spare in the last page.
    int getCapacity() const { return capacity; }
    /// Items of a page; the last one of the buffer is as large as the others.
    int getItemsPerPage() const { return itemsPerPage; }
    /// Bytes of a page: a multiple of the item size.
    int getPageBytes() const { return pageBytes; }
    int getItemSize() const { return itemSize; }

private:
    /// Whether the present pages serve as they are, by the rules that `resize` states.
    bool keepsPages(int count, int newItemSize, std::int64_t newPageBytes, int rowWidth) const;
    void setPageBytes(int bytes, int newItemSize);
    void addPages(int count);

    u8* address(int index) { return pages[index / itemsPerPage] + index % itemsPerPage * itemSize; }

    GrowTable<u8*> pages{100};  // owned, all of pageBytes
    int used = 0;
    int capacity = 0;
    int itemsPerPage = 0;
    int pageBytes = 0;
    int itemSize = 0;
};

/// Copies `count` items of equal size from one buffer to another, in block copies that end only
/// where a page does. Ends early where the items in use of either buffer do. The items may be the
/// same, not overlap by halves.
void copyItems(ChannelBuffer& from, int fromIndex, ChannelBuffer& to, int toIndex, int count);

}  // namespace Tarnkit
