#include "query/QueryWalk.h"

#include "platform/PathNames.h"
#include "platform/WalkFolder.h"
#include "query/ContentSearch.h"
#include "query/QueryMatcher.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace kestrin {

namespace {

// Counts reach the window this often within one huge folder.
constexpr int64_t kCountBatch = 4096;

// One entry of an open folder, stat'ed only when asked.
class WalkCandidate : public QueryCandidate
{
public:
    WalkCandidate(const platform::WalkFolder &folder,
                  const std::string &folderPath,
                  std::string_view name)
        : fFolder(folder)
        , fFolderPath(folderPath)
        , fName(name)
    {}

    std::string_view Name() const override { return fName; }
    std::string Path() const override
    {
        return platform::JoinPath(fFolderPath, std::string(fName));
    }
    const struct stat *Info() override
    {
        if (!fStated)
            fStatus = fFolder.StatEntry(fName.data(), &fInfo);
        fStated = true;
        return fStatus == B_OK ? &fInfo : nullptr;
    }

private:
    const platform::WalkFolder &fFolder;
    const std::string &fFolderPath;
    std::string_view fName; // NUL-terminated: it points into the folder's record
    struct stat fInfo = {};
    status_t fStatus = B_OK;
    bool fStated = false;
};

} // namespace

QueryWalk::QueryWalk(QueryNode predicate, std::optional<std::string> textToFind)
    : fPredicate(std::move(predicate))
    , fTextToFind(std::move(textToFind))
{}

void QueryWalk::AddRoots(const std::vector<std::string> &roots)
{
    for (const std::string &root : roots) {
        const platform::WalkFolder folder(root);
        if (folder.InitCheck() == B_OK && fRoots.insert({folder.Device(), folder.Node()}).second)
            fPending.push_back({root, folder.Device(), true});
    }
    // Taken from the back: the first root is walked first.
    std::reverse(fPending.begin(), fPending.end());
}

void QueryWalk::Run(const std::vector<std::string> &roots, int threads)
{
    AddRoots(roots);
    if (threads <= 0)
        threads = std::max(2, int(std::thread::hardware_concurrency()));
    std::vector<std::thread> workers;
    for (int i = 1; i < threads; i++)
        workers.emplace_back([this] { Work(); });
    Work();
    for (std::thread &worker : workers)
        worker.join();
    if (fCancel)
        fResults.clear();
}

void QueryWalk::Work()
{
    std::vector<char> buffer;
    std::vector<Folder> subfolders;
    std::vector<entry_ref> found;
    for (;;) {
        Folder folder;
        {
            std::unique_lock lock(fLock);
            fChanged.wait(lock, [this] { return fCancel || !fPending.empty() || fBusy == 0; });
            if (fCancel || fPending.empty()) {
                fChanged.notify_all();
                return;
            }
            folder = std::move(fPending.back());
            fPending.pop_back();
            fBusy++;
        }
        ReadFolder(folder, buffer, &subfolders, &found);
        std::lock_guard lock(fLock);
        fBusy--;
        for (Folder &subfolder : subfolders)
            fPending.push_back(std::move(subfolder));
        std::move(found.begin(), found.end(), std::back_inserter(fResults));
        if (!subfolders.empty() || fBusy == 0)
            fChanged.notify_all();
        subfolders.clear();
        found.clear();
    }
}

void QueryWalk::ReadFolder(const Folder &folder,
                           std::vector<char> &buffer,
                           std::vector<Folder> *subfolders,
                           std::vector<entry_ref> *found)
{
    const platform::WalkFolder open(folder.path);
    // Another device is another volume: a mount inside this one.
    if (open.InitCheck() != B_OK || open.Device() != folder.device)
        return;
    if (!folder.isRoot && fRoots.count({open.Device(), open.Node()}) != 0)
        return;
    int64_t lookedAt = 0;
    open.ReadEntries(buffer, [&](std::string_view name, platform::EntryKind kind) {
        if (fCancel)
            return false;
        WalkCandidate candidate(open, folder.path, name);
        if (kind == platform::EntryKind::Unknown) {
            const struct stat *info = candidate.Info();
            kind = info ? platform::WalkFolder::KindOf(info->st_mode) : platform::EntryKind::Other;
        }
        if (kind == platform::EntryKind::Folder)
            subfolders->push_back({candidate.Path(), folder.device});
        if (QueryMatcher::Matches(fPredicate, candidate)
            && (!fTextToFind
                || (kind == platform::EntryKind::File && HoldsText(candidate.Path())))) {
            found->push_back({folder.device, open.Node(), std::string(name), candidate.Path()});
            fFound++;
        }
        if (++lookedAt == kCountBatch) {
            fLookedAt += lookedAt;
            lookedAt = 0;
        }
        return true;
    });
    fLookedAt += lookedAt;
}

bool QueryWalk::HoldsText(const std::string &path)
{
    switch (ContentSearch::Search(path, *fTextToFind, &fCancel)) {
    case ContentSearch::Result::Found:
        return true;
    case ContentSearch::Result::ReadError:
        if (onReadError && !fCancel)
            onReadError(path);
        return false;
    default:
        return false;
    }
}

} // namespace kestrin
