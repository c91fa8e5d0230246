#pragma once

#include <atomic>
#include <string>

namespace kestrin {

// "Find Text:": whether a file holds a text, read the way Kestrin always
// read it. Blocks of kBlockSize bytes from offset 0; after each full block
// the next starts the text's length before the end of the last, so a text
// across a block border is found; in each block the text is looked for as
// plain, case-sensitive bytes up to the block's first zero byte; a block
// shorter than kBlockSize is the last.
class ContentSearch
{
public:
    static constexpr size_t kBlockSize = 10240;

    enum class Result { Found, NotFound, CannotOpen, ReadError };

    // Stops early, as NotFound, when `cancel` is set.
    static Result Search(const std::string &path,
                         const std::string &text,
                         const std::atomic<bool> *cancel = nullptr);
};

} // namespace kestrin
