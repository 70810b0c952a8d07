#pragma once

#include <deque>
#include <mutex>

namespace Tarnkit {

/// Hands the tiles of a picture to threads, and takes those back that need another pass. First in,
/// first out, so each pass goes over the whole picture before the next one begins; and a thread
/// with a cheap tile is back for the next one sooner. Only one thread has a tile at a time. A
/// thread that finds none can end: the tiles that are left are fewer than the threads that have
/// them.
class TileQueue {
public:
    explicit TileQueue(int count) : end(count) {}

    /// The next tile; -1 if there is none.
    int take() {
        const std::lock_guard lock(mutex);
        if (next < end)
            return next++;
        if (again.empty())
            return -1;
        const int tile = again.front();
        again.pop_front();
        return tile;
    }

    /// A tile that needs another pass.
    void putBack(int tile) {
        const std::lock_guard lock(mutex);
        again.push_back(tile);
    }

private:
    std::mutex mutex;
    int next = 0;  // of the tiles that no thread has had yet
    const int end;
    std::deque<int> again;
};

}  // namespace Tarnkit
