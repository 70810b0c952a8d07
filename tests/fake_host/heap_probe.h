#pragma once

/// Stands between the library and its heap while it lives: counts what is asked for and can
/// refuse it. Covers all memory of libpelk and of the module; one probe at a time.
class HeapProbe {
public:
    HeapProbe();
    ~HeapProbe();
    HeapProbe(const HeapProbe&) = delete;
    HeapProbe& operator=(const HeapProbe&) = delete;

    /// Requests so far, refused ones included.
    int requests() const;
    /// Refuses all requests after the next `granted` ones.
    void refuseAfter(int granted);
};
