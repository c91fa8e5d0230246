#include "panes/FolderComparison.h"

#include <unordered_map>

namespace kestrin {

namespace {

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
    return by == By::SizeAndTime && timesKnown && left.modified != right.modified;
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
