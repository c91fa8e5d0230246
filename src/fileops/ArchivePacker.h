#pragma once

#include "platform/Message.h"

#include <string>
#include <vector>

namespace kestrin {

class CopyControl;

// Packs the "refs" of a 615 request into a zip archive in the destination
// folder, named after the one entry, or after the folder the entries come
// from when there are several (".zip" appended). Folders go in with
// everything below them, under paths relative to that folder; links as
// links. An archive of that name already there is asked about.
//
// The zip is written under a temporary name beside its target and renamed
// into place once it is whole, so a stopped or failed pack leaves nothing.
// Core code, run on the copy engine's worker.
class ArchivePacker
{
public:
    ArchivePacker(const platform::Message &request, std::string destination, CopyControl &control);

    void Run();

    // The archive's name for these entries, coming from `sourceFolder`.
    static std::string ArchiveName(const std::vector<std::string> &paths,
                                   const std::string &sourceFolder);

private:
    // Whether the target may be written: free, or to be replaced.
    bool MayReplace(const std::string &target, double size);
    // Packs into a temporary file and renames it to `target`.
    void PackInto(const std::string &target);

    std::vector<std::string> fPaths;
    std::vector<std::string> fNames;
    std::string fSourceFolder;
    std::string fDestination;
    CopyControl &fControl;
    int32_t fTotalKiB = 0;
};

} // namespace kestrin
