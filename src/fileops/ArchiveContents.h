#pragma once

#include "fileops/ArchiveReader.h"

#include <atomic>
#include <string>
#include <vector>

namespace kestrin {

// What an archive holds directly inside one of its folders: the listing of
// an archive shown as a pane. Core code, run on a worker.
class ArchiveContents
{
public:
    // One row's worth: `name` is a leaf, except for a member whose path may
    // not become a local path (absolute, or with "." or ".."): that one is
    // listed at the archive's top under its whole path, so it is seen, and
    // never used as a local name.
    struct Item
    {
        std::string name;
        struct stat info = {};
        bool isFolder = false;
    };

    // How one listing went.
    struct Result
    {
        // B_OK, or why the archive could not be opened at all.
        status_t openStatus = B_OK;
        // B_ENTRY_NOT_FOUND when every member was read, B_CANCELED, or the
        // error that ended reading early (what was read before is listed).
        status_t readStatus = B_ENTRY_NOT_FOUND;
        std::string problem;
        std::vector<Item> items;
    };

    // The members directly inside `subPath` ("" for the top, else a folder
    // path ending in "/"), folders that only deeper members imply included.
    // `percentRead` (when given) follows the reading, from 0 to 100; a set
    // `cancel` ends it.
    static Result List(const std::string &archive,
                       const std::string &subPath,
                       const std::atomic<bool> *cancel = nullptr,
                       std::atomic<int32_t> *percentRead = nullptr);
};

} // namespace kestrin
