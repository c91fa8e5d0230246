#pragma once

#include "platform/Message.h"

#include <string>
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
// "..", that would be written through a link, or that is encrypted is
// refused with an alert and the others go on. An existing target is asked
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
    void Progress(ArchiveReader &reader, const std::string &member, int64_t done);

    std::string fArchive;
    std::string fFrom;
    std::vector<std::string> fFolders;
    std::vector<std::string> fFiles;
    std::string fDestination;
    CopyControl &fControl;
    OverwritePolicy *fOverwrite = nullptr;
    struct archive *fDisk = nullptr;
    bool fStopped = false;
};

} // namespace kestrin
