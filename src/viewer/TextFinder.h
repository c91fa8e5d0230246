#pragma once

#include <atomic>
#include <cstdint>
#include <string>

namespace kestrin {

class TextIndex;

// Looks for a text in a file's bytes, block by block as grep does, not in
// what a widget holds: a match is found wherever it lies in a file of any
// size. Safe on a worker while the GUI thread reads the same index.
class TextFinder
{
public:
    // The offset of the first match starting at or after `from` (forward),
    // or of the last one starting before `from` (backward); -1 when there
    // is none or `stop` was raised.
    static int64_t Find(const TextIndex &index,
                        const std::string &pattern,
                        int64_t from,
                        bool forward,
                        const std::atomic<bool> *stop = nullptr);

private:
    static int64_t FindForward(const TextIndex &index,
                               const std::string &pattern,
                               int64_t from,
                               const std::atomic<bool> *stop);
    static int64_t FindBackward(const TextIndex &index,
                                const std::string &pattern,
                                int64_t before,
                                const std::atomic<bool> *stop);
};

} // namespace kestrin
