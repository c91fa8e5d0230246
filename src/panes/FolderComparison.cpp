#include "panes/FolderComparison.h"

#include <cstdlib>
#include <unordered_map>

namespace kestrin {

namespace {

// Zip archives (and FAT volumes) keep times in steps of two seconds, so a
// file packed at 10:00:01 reads back as 10:00:00: times a second apart are
// taken as the same, as rsync's --modify-window=1 does.
constexpr time_t kTimeWindow = 1;

std::unordered_map<std::string, const FolderComparison::Entry *> ByName(
    const std::vector<FolderComparison::Entry> &entries)
{
    std::unordered_map<std::string, const FolderComparison::Entry *> names;
    names.reserve(entries.size());
    for (const FolderComparison::Entry &entry : entries)
        names.emplace(entry.name, &entry);
    return names;
}

} // namespace

bool FolderComparison::Differ(const Entry &left, const Entry &right, By by)
{
    if (left.folder != right.folder)
        return true;
    if (left.folder)
        return false;
    if (left.size != right.size)
        return true;
    const bool timesKnown = left.modified != 0 && right.modified != 0;
    return by == By::SizeAndTime && timesKnown
           && std::abs(left.modified - right.modified) > kTimeWindow;
}

FolderComparison::Result FolderComparison::Compare(const std::vector<Entry> &left,
                                                   const std::vector<Entry> &right,
                                                   By by)
{
    const auto rightNames = ByName(right);
    const auto leftNames = ByName(left);
    Result result;
    for (const Entry &entry : left) {
        const auto match = rightNames.find(entry.name);
        if (match == rightNames.end() || Differ(entry, *match->second, by)) {
            result.left.push_back(entry.name);
            if (match != rightNames.end())
                result.right.push_back(entry.name);
        } else if (by == By::Content && !entry.folder) {
            result.sameSize.push_back(entry);
        }
    }
    for (const Entry &entry : right) {
        if (leftNames.count(entry.name) == 0)
            result.right.push_back(entry.name);
    }
    return result;
}

} // namespace kestrin
