#pragma once

#include "platform/Message.h"

#include <string>

namespace kestrin {

class CopyControl;
class KestrinEntry;
class OverwritePolicy;
class Trash;

// Carries out one request of the panes: copy, move or link the "refs" of a
// 'DATA' message into the destination folder, or trash/delete the "refs" of a
// 606 (the destination is then the folder the pane shows, which decides
// between the Trash and deleting for good), or unpack members of an archive
// into it (618, see ArchiveExtractor), or pack the "refs" of a 615 into a
// zip there (ArchivePacker), or upload the "refs" of a 'DATA' with "Session"
// to an FTP server or download the items of a 604 from one (FtpTransfer),
// or the same with an SFTP server, 651 and 650 (SftpTransfer).
//
// Run() does the whole request synchronously on the calling thread: a test
// calls it directly, the progress window calls it on a worker thread. Progress,
// questions and every error alert go through `control`.
class CopyEngine
{
public:
    CopyEngine(platform::Message request, std::string destination, CopyControl &control);

    void Run();

private:
    // 'DATA' without "Session": copy, move or link the "refs".
    void PerformLocal();
    // 606: the "refs" go to the Trash, or for good when the pane shows the Trash.
    void PerformDelete();
    // 'DATA' with "Session" (upload) and 604 (download), see FtpTransfer.
    void PerformFtp();
    // Measures the "refs" and announces the batch on the overall bar:
    // "<verb> N files or directories". False when there are no "refs".
    bool StartBatch(const char *verb);
    // One item of a link request: a link to its absolute path in the
    // destination. A link that cannot be made is reported.
    void LinkItem(KestrinEntry &item);
    // One item of a move; false when the request is to end.
    bool MoveItem(KestrinEntry &item, OverwritePolicy &overwrite);
    // For good, with its record in the Trash when it is an item there.
    void DeleteForGood(KestrinEntry &item, Trash &trash);
    // An item on another device than the Trash: copied in under a name of
    // its own, with its .trashinfo, then deleted once the copy is whole.
    void TrashByCopy(KestrinEntry &item, Trash &trash);

    platform::Message fRequest;
    std::string fDestination;
    CopyControl &fControl;
};

} // namespace kestrin
