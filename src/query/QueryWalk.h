#pragma once

#include "platform/EntryRef.h"
#include "query/QueryNode.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <sys/types.h>
#include <vector>

namespace kestrin {

// Walks folder trees and keeps the entries that match a predicate (and, with
// a text to find, hold it). Each root is walked on its own device only and
// once, however many roots lead to it; links are never followed; a folder
// that cannot be read, or is gone by the time it is read, is passed over
// without a word. An entry is stat'ed only when the predicate asks for more
// than its name (its folder's record tells a sub-folder from a file), and
// several threads read folders at once.
//
// Run blocks its caller, a worker: Cancel, LookedAt and Found may be called
// from any other thread meanwhile.
class QueryWalk
{
public:
    QueryWalk(QueryNode predicate, std::optional<std::string> textToFind);

    // `threads` 0: one per processor, at least two.
    void Run(const std::vector<std::string> &roots, int threads = 0);
    void Cancel() { fCancel = true; }
    bool Cancelled() const { return fCancel; }
    const std::atomic<bool> &CancelFlag() const { return fCancel; }

    int64_t LookedAt() const { return fLookedAt; }
    int64_t Found() const { return fFound; }
    // In the order found; Run's results once it has returned.
    std::vector<entry_ref> TakeResults() { return std::move(fResults); }

    // Called on a walking thread for a file whose content could not be
    // read to the end; the walk waits for it to return.
    std::function<void(const std::string &path)> onReadError;

private:
    struct Folder
    {
        std::string path;
        dev_t device = 0;
        bool isRoot = false;
    };

    void Work();
    void ReadFolder(const Folder &folder,
                    std::vector<char> &buffer,
                    std::vector<Folder> *subfolders,
                    std::vector<entry_ref> *found);
    bool HoldsText(const std::string &path);
    void AddRoots(const std::vector<std::string> &roots);

    const QueryNode fPredicate;
    const std::optional<std::string> fTextToFind;
    std::atomic<bool> fCancel = false;
    std::atomic<int64_t> fLookedAt = 0;
    std::atomic<int64_t> fFound = 0;

    std::mutex fLock;
    std::condition_variable fChanged;
    std::vector<Folder> fPending;    // guarded by fLock
    int fBusy = 0;                   // guarded by fLock
    std::vector<entry_ref> fResults; // guarded by fLock while running
    // The roots' folders: one met inside another root is left to its own walk.
    std::set<std::pair<dev_t, ino_t>> fRoots;
};

} // namespace kestrin
