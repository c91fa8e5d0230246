#pragma once

#include "panes/PaneSettings.h"
#include "platform/EntryRef.h"
#include "platform/Errors.h"
#include "widgets/CLVListItem.h"
#include "widgets/ColumnListView.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <unordered_map>
#include <vector>

class QObject;

namespace kestrin {

class DirListItem;

// One listing of a pane, read off the GUI thread: a local folder (its
// entries and their stat data) or the entries of query results. The rows
// come back made and sorted, ".." first, then folders, then files, so the
// GUI thread only has to show them.
class FolderLister
{
public:
    struct Request
    {
        int32_t mode = 0;            // kModeFolder or kModeQuery
        std::string path;            // the folder (kModeFolder)
        std::vector<entry_ref> refs; // the entries (kModeQuery)
        RowColors colors;
        std::string dateFormat = "%D %R";
        int32_t sortKey = 1;
        CLVSortMode sortMode = Ascending;
    };

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

        // The result of opening the folder: B_OK or why not.
        status_t openStatus = B_OK;
        // How reading ended: B_ENTRY_NOT_FOUND at the normal end.
        status_t readStatus = B_ENTRY_NOT_FOUND;
        struct stat folderInfo = {};
        std::vector<std::unique_ptr<CLVListItem>> rows;
        std::unordered_map<std::string, DirListItem *> byName;
    };

    using Done = std::function<void(std::shared_ptr<Job>)>;

    // Reads on a worker of the thread pool; `done` is called on the GUI
    // thread through `context`, and not at all once `context` is gone.
    static std::shared_ptr<Job> Start(Request request, QObject *context, Done done);

    // The same on the calling thread, for the benchmark and the tests.
    static void Run(const Request &request, Job &job);

    // Orders rows as a listing shows them: ".." first, folders, then files,
    // each group by the key and mode with the list's stable sort.
    static void SortRows(std::vector<std::unique_ptr<CLVListItem>> &rows,
                         int32_t sortKey,
                         CLVSortMode sortMode);
};

} // namespace kestrin
