#pragma once

#include "fileops/AttributeText.h"

#include <cstdint>
#include <string>
#include <vector>

namespace kestrin {

// What the information window tells of one entry, worked out without a
// window: everything but a folder's total size, which needs a walk of the
// folder and is left to a worker (FolderSizeText).
struct EntryFacts
{
    enum class Kind { File, Folder, Link, Volume };

    std::string path;
    std::string name;
    Kind kind = Kind::File;
    // Empty for a folder until its walk is done.
    std::string sizeText;
    std::string created;
    std::string modified;
    std::string kindText;
    // Where a link leads, resolved through every link on the way; empty for
    // anything else, and for a link that leads nowhere.
    std::string linkTo;
    std::vector<AttributeText::Row> attributes;

    // Reads the entry at `path` (a link itself, not its target), its dates
    // written with `dateFormat`.
    static EntryFacts Read(const std::string &path, const std::string &dateFormat);

    // "<size text> (<count> files)".
    static std::string FolderSizeText(double size, int32_t count);
    // "<capacity>(<used> used -- <free> free)".
    static std::string VolumeSizeText(int64_t capacity, int64_t freeBytes);
};

} // namespace kestrin
