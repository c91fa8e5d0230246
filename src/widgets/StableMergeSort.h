#pragma once

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace kestrin {

namespace detail {

// Merges the neighbouring runs [left, middle) and [middle, right) of `from`
// into the same places of `to`.
template<typename T, typename KeepLeft>
void MergeRuns(std::vector<T> &from,
               std::vector<T> &to,
               size_t left,
               size_t middle,
               size_t right,
               KeepLeft &keepLeft)
{
    size_t i = left;
    size_t j = middle;
    size_t out = left;
    while (i < middle && j < right) {
        if (keepLeft(std::as_const(from[i]), std::as_const(from[j])))
            to[out++] = std::move(from[i++]);
        else
            to[out++] = std::move(from[j++]);
    }
    while (i < middle)
        to[out++] = std::move(from[i++]);
    while (j < right)
        to[out++] = std::move(from[j++]);
}

} // namespace detail

// A stable bottom-up merge sort. Where two runs meet, the element of the left
// run is taken whenever keepLeft(left, right) is true, else the right one.
//
// keepLeft need not be a strict weak order, which is the point of this sort:
// the list's compare functions answer "0" for a folder against a file but
// compare names for a file against a folder, and std::sort may then scramble
// the rows (std::stable_sort is not even allowed such a predicate). Here every
// question is asked about two elements in their original left-to-right order,
// so rows that come in grouped (".." first, folders, then files) stay grouped.
//
// T must be default-constructible and movable; the sort uses one buffer of
// the same size as `items`.
template<typename T, typename KeepLeft>
void StableMergeSort(std::vector<T> &items, KeepLeft keepLeft)
{
    const size_t count = items.size();
    if (count < 2)
        return;
    std::vector<T> buffer(count);
    std::vector<T> *from = &items;
    std::vector<T> *to = &buffer;
    for (size_t width = 1; width < count; width *= 2) {
        for (size_t left = 0; left < count; left += 2 * width) {
            const size_t middle = std::min(left + width, count);
            const size_t right = std::min(left + 2 * width, count);
            detail::MergeRuns(*from, *to, left, middle, right, keepLeft);
        }
        std::swap(from, to);
    }
    // The passes alternate between the two vectors; the last one wrote `from`.
    if (from != &items)
        items.swap(buffer);
}

} // namespace kestrin
