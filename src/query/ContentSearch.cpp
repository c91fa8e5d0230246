#include "query/ContentSearch.h"

#include "platform/File.h"

#include <cstring>
#include <string_view>
#include <vector>

namespace kestrin {

ContentSearch::Result ContentSearch::Search(const std::string &path,
                                            const std::string &text,
                                            const std::atomic<bool> *cancel)
{
    platform::File file(path, B_READ_ONLY);
    if (file.InitCheck() != B_OK)
        return Result::CannotOpen;
    // A text as long as a block would never move the search on.
    const size_t step = text.size() < kBlockSize ? kBlockSize - text.size() : 1;
    std::vector<char> block(kBlockSize);
    for (off_t offset = 0;; offset += off_t(step)) {
        if (cancel != nullptr && *cancel)
            return Result::NotFound;
        const ssize_t read = file.ReadAt(offset, block.data(), block.size());
        if (read < 0)
            return Result::ReadError;
        const void *zero = std::memchr(block.data(), 0, size_t(read));
        const size_t length = zero ? size_t(static_cast<const char *>(zero) - block.data())
                                   : size_t(read);
        if (std::string_view(block.data(), length).find(text) != std::string_view::npos)
            return Result::Found;
        if (size_t(read) < kBlockSize)
            return Result::NotFound;
    }
}

} // namespace kestrin
