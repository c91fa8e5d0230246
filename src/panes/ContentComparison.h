#pragma once

#include "panes/FolderComparison.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

namespace kestrin {

// Which files of the same name and size in two local folders differ in their
// bytes. The two files are read side by side in blocks and compared; a pair
// stops at its first differing block, so only equal files are read whole.
// A file that cannot be read counts as differing: nothing shows it the same.
//
// Runs on a worker; the progress is read from any thread.
class ContentComparison
{
public:
    struct Progress
    {
        std::atomic<int64_t> bytes{0}; // of one side, of the files done so far
        std::atomic<int32_t> files{0};
    };

    // The names of `files` (entries of `leftFolder`, each also in
    // `rightFolder`) whose contents differ, in their order. Stops between
    // blocks once `stop` is set, with what it found by then.
    static std::vector<std::string> Differing(const std::string &leftFolder,
                                              const std::string &rightFolder,
                                              const std::vector<FolderComparison::Entry> &files,
                                              Progress &progress,
                                              const std::atomic<bool> &stop);

private:
    static bool SameBytes(const std::string &left,
                          const std::string &right,
                          Progress &progress,
                          const std::atomic<bool> &stop);
};

} // namespace kestrin
