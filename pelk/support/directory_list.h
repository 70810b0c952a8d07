#pragma once

namespace Tarnkit {

/// The files that match a mask, as of the moment of `construct`: a list to walk, once or again.
///
///     DirectoryList list;
///     if (list.construct("shots/*.exr"))
///         while (const char* file = list.next())
///             use(file);
///
/// The fields are open: a host may order the list in its own way, or take an item out by freeing it
/// and setting it to null. For one thread at a time.
class DirectoryList {
public:
    DirectoryList() = default;
    ~DirectoryList();
    DirectoryList(const DirectoryList&) = delete;
    DirectoryList& operator=(const DirectoryList&) = delete;

    /// Fills the list anew. `mask`: a directory, which may be missing, and a pattern in which `*`
    /// stands for any text and `?` for any one byte. Entries of every kind match, directories too,
    /// but for those whose names are "." or begin with "..". Each item is the directory just as
    /// `mask` has it, and the name. Sorted by bytes.
    /// False, with an empty list, if nothing matches or the directory can't be read.
    bool construct(const char* mask);

    bool isEmpty() const { return count == 0; }
    int getCount() const { return count; }
    /// The item at the cursor, which moves on; null at the end, and where an item is null.
    const char* next();
    /// Sets the cursor to the first item.
    void rewind() { cursor = 0; }
    /// Null if `index` is out of range. Valid until the list is filled anew or ends.
    const char* getItem(int index) const;
    /// Sorts ascending by bytes, as strcmp compares; null items come first. The cursor stays.
    void sort();

    char** items = nullptr;  ///< `count` texts from allocateArray, and so the array itself; owned
    int count = 0;
    int cursor = 0;  ///< index of what `next` gives, from 0 to `count`

private:
    void clear();
};

}  // namespace Tarnkit
