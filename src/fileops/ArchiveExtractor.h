#pragma once

#include "platform/Message.h"

#include <cstdint>
#include <string>
#include <unordered_set>
#include <vector>

struct archive;

namespace kestrin {

struct ArchiveMember;
class ArchiveReader;
class CopyControl;
class OverwritePolicy;

// Unpacks members of an archive into a folder (a 618 request): "Archive",
// the folder inside it "CopyFrom", and the rows of that folder, "ZipDir"
// (with everything below) and "ZipFile". The archive is read once, start to
// end, and each chosen member is written straight to its place, so a solid
// archive is decompressed once.
//
// Archives come from strangers: a member whose path is absolute or holds
// "..", that would be written through a link, that is a device, a pipe or a
// socket, or that is encrypted is refused and the others go on; the
// refusals are told in one alert at the end. An existing target is asked
// about; a member cut short (Stop, a read or write error) leaves no partial
// file; modes and modification times are restored, links made as links.
// Core code, run on the copy engine's worker.
class ArchiveExtractor
{
public:
    ArchiveExtractor(const platform::Message &request,
                     std::string destination,
                     CopyControl &control);

    void Run();

private:
    enum class Outcome { Next, End };

    // The member's path below the destination, when the request asks for it.
    bool Chosen(const std::string &path, std::string *relative) const;
    Outcome Extract(ArchiveReader &reader, const ArchiveMember &member, const std::string &relative);
    // Whether a target in the way is to be replaced (asked when needed).
    bool MayWrite(const ArchiveMember &member, const std::string &target);
    bool HasRoomFor(const ArchiveMember &member, const std::string &target);
    Outcome CopyData(ArchiveReader &reader, const ArchiveMember &member, const std::string &target);
    void Refuse(const std::string &path, const std::string &why);
    // One alert for every refusal of the run, however many there were.
    void ReportRefusals();
    void Progress(ArchiveReader &reader, const std::string &member, int64_t done);

    std::string fArchive;
    std::string fFrom;
    // Sets: with every row of a big archive marked, each member is looked up.
    std::unordered_set<std::string> fFolders;
    std::unordered_set<std::string> fFiles;
    std::string fDestination;
    CopyControl &fControl;
    OverwritePolicy *fOverwrite = nullptr;
    struct archive *fDisk = nullptr;
    bool fStopped = false;
    // The first few refusals, each as "\"<member>\": <why>", and how many
    // there were in all.
    std::vector<std::string> fRefusals;
    int64_t fRefusalCount = 0;
};

} // namespace kestrin
