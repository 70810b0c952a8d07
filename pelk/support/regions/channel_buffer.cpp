#include "pelk/support/regions/channel_buffer.h"

#include <climits>
#include <cstring>
#include <memory>

namespace Tarnkit {

namespace {

struct FreeMemory {
    void operator()(u8* memory) const { freeMemory(memory); }
};

/// The page size to aim for: no more than is needed, and whole rows where a row fits.
std::int64_t fittedPageBytes(std::int64_t count, std::int64_t itemSize, std::int64_t pageBytes,
                             std::int64_t rowWidth) {
    if (count * itemSize < pageBytes)
        return count * itemSize;
    const std::int64_t rowBytes = itemSize * rowWidth;
    if (rowWidth <= 1 || pageBytes % rowBytes == 0)
        return pageBytes;
    return std::max<std::int64_t>(1, pageBytes / rowBytes) * rowBytes;
}

}  // namespace

void ChannelBuffer::resize(int count, int newItemSize, int wantedPageBytes, int rowWidth) {
    if (newItemSize < 1)
        return free();
    count = std::max(count, 0);
    const std::int64_t bytes = fittedPageBytes(count, newItemSize, wantedPageBytes, rowWidth);
    if (bytes > INT_MAX)  // one row alone is larger than any page can be
        allocationFailed(bytes);
    if (!keepsPages(count, newItemSize, bytes, rowWidth)) {
        free();
        setPageBytes(static_cast<int>(bytes), newItemSize);
    }
    if (capacity < count)
        addPages(count);
    used = std::max(used, count);
}

void ChannelBuffer::free() {
    for (u8* page : pages)
        freeMemory(page);
    pages.free();
    used = capacity = itemsPerPage = pageBytes = itemSize = 0;
}

bool ChannelBuffer::keepsPages(int count, int newItemSize, std::int64_t newPageBytes,
                               int rowWidth) const {
    const std::int64_t oldPageBytes = pageBytes;
    return !pages.isEmpty() && newItemSize == itemSize && newPageBytes <= 4 * oldPageBytes &&
           oldPageBytes <= 4 * newPageBytes && rowWidth > 0 && count % rowWidth == 0;
}

void ChannelBuffer::setPageBytes(int bytes, int newItemSize) {
    pageBytes = std::max(bytes, 64);
    pageBytes -= pageBytes % newItemSize;
    if (pageBytes == 0)
        pageBytes = newItemSize;
    itemSize = newItemSize;
    itemsPerPage = pageBytes / itemSize;
}

void ChannelBuffer::addPages(int count) {
    const int needed = (count - 1) / itemsPerPage + 1;
    while (pages.size() < needed) {
        std::unique_ptr<u8, FreeMemory> page(static_cast<u8*>(allocate(pageBytes)));
        pages.append(page.get());
        page.release();
        const std::int64_t items = std::int64_t{pages.size()} * itemsPerPage;
        capacity = static_cast<int>(std::min<std::int64_t>(items, INT_MAX));
    }
}

void copyItems(ChannelBuffer& from, int fromIndex, ChannelBuffer& to, int toIndex, int count) {
    from.forEachRun(fromIndex, count, [&](const u8* source, int sourceCount) {
        to.forEachRun(toIndex, sourceCount, [&](u8* target, int n) {
            const std::size_t bytes = static_cast<std::size_t>(n) * from.getItemSize();
            std::memmove(target, source, bytes);  // a region may be merged with itself
            source += bytes;
        });
        toIndex += sourceCount;
    });
}

}  // namespace Tarnkit
