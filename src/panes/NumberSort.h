#pragma once

#include <cstdint>
#include <span>

namespace kestrin {

// Sorts rows by a number, stably, a byte of the number at a time from the
// lowest (a radix sort): a million rows in a few passes over 12 bytes each,
// where a merge sort compares them twenty times over. Bytes that every number
// shares are skipped, so sizes and dates cost three or four passes.
class NumberSort
{
public:
    struct Entry
    {
        int64_t number = 0;
        uint32_t row = 0;
    };

    static void Sort(std::span<Entry> entries, bool descending);
};

} // namespace kestrin
