#include "viewer/TextFinder.h"

#include "viewer/TextIndex.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace kestrin {

namespace {

constexpr int64_t kBlockBytes = 4 << 20;

bool Stopped(const std::atomic<bool> *stop)
{
    return stop != nullptr && stop->load(std::memory_order_relaxed);
}

} // namespace

int64_t TextFinder::Find(const TextIndex &index,
                         const std::string &pattern,
                         int64_t from,
                         bool forward,
                         const std::atomic<bool> *stop)
{
    if (pattern.empty() || int64_t(pattern.size()) > kBlockBytes)
        return -1;
    return forward ? FindForward(index, pattern, std::max<int64_t>(from, 0), stop)
                   : FindBackward(index, pattern, std::min(from, index.Size()), stop);
}

// Blocks overlap by the pattern's length less one, so a match across two
// blocks is seen whole in the second.
int64_t TextFinder::FindForward(const TextIndex &index,
                                const std::string &pattern,
                                int64_t from,
                                const std::atomic<bool> *stop)
{
    const int64_t overlap = int64_t(pattern.size()) - 1;
    std::vector<char> buffer(size_t(kBlockBytes + overlap));
    for (int64_t position = from; position + overlap < index.Size() && !Stopped(stop);
         position += kBlockBytes) {
        const int64_t got = index.ReadAt(position, buffer.data(), int64_t(buffer.size()));
        if (got <= overlap)
            break;
        if (const void *found = memmem(buffer.data(), size_t(got), pattern.data(), pattern.size()))
            return position + (static_cast<const char *>(found) - buffer.data());
    }
    return -1;
}

int64_t TextFinder::FindBackward(const TextIndex &index,
                                 const std::string &pattern,
                                 int64_t before,
                                 const std::atomic<bool> *stop)
{
    const int64_t overlap = int64_t(pattern.size()) - 1;
    std::vector<char> buffer(size_t(kBlockBytes + overlap));
    // Matches that start before `before` end before `end`.
    int64_t end = std::min(before + overlap, index.Size());
    while (end > overlap && !Stopped(stop)) {
        const int64_t begin = std::max<int64_t>(0, end - int64_t(buffer.size()));
        const int64_t got = index.ReadAt(begin, buffer.data(), end - begin);
        const char *last = nullptr;
        for (const char *cursor = buffer.data(); got > 0;) {
            const size_t left = size_t(buffer.data() + got - cursor);
            const void *found = memmem(cursor, left, pattern.data(), pattern.size());
            if (found == nullptr)
                break;
            last = static_cast<const char *>(found);
            cursor = last + 1;
        }
        if (last != nullptr)
            return begin + (last - buffer.data());
        if (begin == 0)
            break;
        end = begin + overlap;
    }
    return -1;
}

} // namespace kestrin
