#include "fileops/ArchiveContents.h"

#include "fileops/ZipDirectory.h"

#include <algorithm>
#include <unordered_map>

namespace kestrin {

namespace {

// Collects the items of one folder, each name once: a folder seen first as
// implied by a deeper member takes the data of its own member when that
// comes later.
class Collector
{
public:
    explicit Collector(std::vector<ArchiveContents::Item> &items)
        : fItems(items)
    {}

    void Add(const std::string &name, const struct stat &info, bool isFolder, bool implied)
    {
        const auto [at, added] = fIndex.emplace(name, fItems.size());
        if (added) {
            fItems.push_back({name, info, isFolder});
            if (implied)
                fItems.back().info.st_mode = S_IFDIR | 0755;
            return;
        }
        if (!implied)
            fItems[at->second] = {name, info, isFolder};
    }

private:
    std::vector<ArchiveContents::Item> &fItems;
    std::unordered_map<std::string, size_t> fIndex;
};

void Place(Collector &collector, const ArchiveMember &member, const std::string &subPath)
{
    const std::string &path = member.path;
    if (path.empty())
        return; // the archive's own top folder
    if (!ArchiveReader::IsSafe(path)) {
        if (subPath.empty())
            collector.Add(path, member.info, false, false);
        return;
    }
    if (path.size() <= subPath.size() || path.compare(0, subPath.size(), subPath) != 0)
        return;
    const std::string rest = path.substr(subPath.size());
    const size_t slash = rest.find('/');
    if (slash != std::string::npos) {
        collector.Add(rest.substr(0, slash), member.info, true, true);
        return;
    }
    collector.Add(rest, member.info, S_ISDIR(member.info.st_mode), false);
}

} // namespace

ArchiveContents::Result ArchiveContents::List(const std::string &archive,
                                              const std::string &subPath,
                                              const std::atomic<bool> *cancel,
                                              std::atomic<int32_t> *percentRead)
{
    Result result;
    Collector collector(result.items);
    const status_t quick = ZipDirectory::Read(
        archive, [&](const ArchiveMember &member) { Place(collector, member, subPath); }, cancel);
    if (quick != B_UNSUPPORTED) {
        result.readStatus = quick == B_OK ? B_ENTRY_NOT_FOUND : quick;
        return result;
    }
    ArchiveReader reader(archive);
    result.openStatus = reader.InitCheck();
    if (result.openStatus != B_OK) {
        result.readStatus = result.openStatus;
        result.problem = reader.ErrorText();
        return result;
    }
    ArchiveMember member;
    for (;;) {
        if (cancel != nullptr && *cancel) {
            result.readStatus = B_CANCELED;
            return result;
        }
        const status_t status = reader.Next(&member);
        if (status != B_OK) {
            result.readStatus = status;
            if (status != B_ENTRY_NOT_FOUND)
                result.problem = reader.ErrorText();
            break;
        }
        Place(collector, member, subPath);
        if (percentRead != nullptr && reader.FileSize() > 0)
            *percentRead = int32_t(
                std::min<int64_t>(100, reader.BytesRead() * 100 / reader.FileSize()));
    }
    return result;
}

} // namespace kestrin
