#pragma once

#include "app/PaneSettings.h"
#include "panes/RowIndex.h"
#include "platform/Errors.h"
#include "widgets/CLVListItem.h"
#include "widgets/ColumnListModel.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <vector>

class QObject;

namespace kestrin {

class DirListItem;

// How a listing makes and orders its rows: what it needs of the pane's
// settings, copied, since the rows are made off the GUI thread.
struct RowStyle
{
    RowColors colors;
    std::string dateFormat = "%D %R";
    int32_t sortKey = 1;
    CLVSortMode sortMode = Ascending;
};

// The files among a list's rows (folders and links to them left out): how
// many, and their sizes added as 32-bit numbers, as the footer shows them.
struct FileTotals
{
    uint32_t bytes = 0;
    int32_t count = 0;

    void Add(const CLVListItem &row);
    void Remove(const CLVListItem &row);
};

// Runs one listing of a pane off the GUI thread: a source's reader fills the
// job with rows, then they are sorted, ".." first, then folders, then files,
// so the GUI thread only has to show them.
class FolderLister
{
public:
    // What one listing shares between the GUI thread and its worker. The
    // counters and the cancel flag are for both at any time; `rows`,
    // `byName` and the statuses belong to the worker until `finished` is
    // set, then to the GUI thread.
    struct Job
    {
        std::atomic<bool> cancel{false};
        std::atomic<bool> finished{false};
        std::atomic<int32_t> total{-1}; // entries, once they are counted
        std::atomic<int32_t> done{0};   // entries read so far

        // The result of opening the place: B_OK or why not.
        status_t openStatus = B_OK;
        // How reading ended: B_ENTRY_NOT_FOUND at the normal end.
        status_t readStatus = B_ENTRY_NOT_FOUND;
        // What the place's reader has to tell the user besides a status (a
        // damaged archive); empty for most.
        std::string problem;
        struct stat folderInfo = {};
        std::vector<std::unique_ptr<CLVListItem>> rows;
        RowIndex byName;
        FileTotals files;
    };

    // Reads a place into a job, on the worker. It owns everything it reads
    // from: the source that made it may be gone before it runs.
    using Reader = std::function<void(Job &)>;
    using Done = std::function<void(std::shared_ptr<Job>)>;

    // Rows as a reader makes them: folders and files apart, so that the
    // folders come first, each group in the order it was read.
    class Groups
    {
    public:
        void Add(Job &job, std::unique_ptr<DirListItem> row);
        void MoveInto(Job &job);
        void ReserveFiles(size_t count) { fFiles.reserve(count); }

    private:
        std::vector<std::unique_ptr<CLVListItem>> fFolders;
        std::vector<std::unique_ptr<CLVListItem>> fFiles;
    };

    // Reads on a worker of the thread pool; `done` is called on the GUI
    // thread through `context`, and not at all once `context` is gone or the
    // job was cancelled.
    static std::shared_ptr<Job> Start(Reader reader,
                                      const RowStyle &style,
                                      QObject *context,
                                      Done done);

    // The same on the calling thread, for the benchmark and the tests.
    static void Run(const Reader &reader, const RowStyle &style, Job &job);

    // Orders rows as a listing shows them: ".." first, folders, then files,
    // each group by the key and mode with the list's stable sort.
    static void SortRows(std::vector<std::unique_ptr<CLVListItem>> &rows,
                         int32_t sortKey,
                         CLVSortMode sortMode);

private:
    // Below this, what a listing frees is too little to be worth a walk
    // over the heap.
    static constexpr size_t kRowsWorthATrim = 20000;
};

} // namespace kestrin
