#pragma once

#include "fileops/OverwritePolicy.h"
#include "platform/Message.h"
#include "platform/SocketInterrupt.h"

#include <cstdint>
#include <ctime>
#include <memory>
#include <set>
#include <string>
#include <sys/types.h>
#include <vector>

namespace platform {
class SftpChannel;
}

namespace kestrin {

class CopyControl;
class SftpFolderClient;

// One SFTP request of the panes over an SSH connection of its own: a
// download (650: every "FtpFile" and "FtpDir" of the remote folder "FtpPath"
// into the destination folder) or an upload (651: the local "refs" into
// "FtpPath"), folders with everything in them. It logs in as a pane does:
// the host key checked against known_hosts (an unknown one asked about, a
// changed one refused), the agent, the user's keys, the password.
//
// The tree is walked first, so the bars count every byte of it. Each file
// travels under a hidden name of its own in its target folder and takes its
// name once whole, with its source's permission bits and access and
// modification times; a folder takes its bits and times after its contents.
// A stop or a failure removes the partial file, and a file it would have
// replaced stays. An existing target on either side is the user's
// question, as for a local copy.
//
// A file cut short by a lost connection logs in again and goes on from what
// arrived, up to kResumeAttempts times, before it fails as any transfer does.
class SftpTransfer
{
public:
    static constexpr unsigned kTimeoutMs = 60000;
    static constexpr int kResumeAttempts = 3;

    SftpTransfer(const platform::Message &request, std::string destination, CopyControl &control);
    ~SftpTransfer();

    SftpTransfer(const SftpTransfer &) = delete;
    SftpTransfer &operator=(const SftpTransfer &) = delete;

    void Run();

private:
    // One entry the request moves: where it is and where it goes, and what
    // it keeps of its source.
    struct Item
    {
        std::string from;
        std::string to;
        bool folder = false;
        uint64_t size = 0;
        time_t accessed = 0;
        time_t modified = 0;
        mode_t mode = 0;
    };

    bool Connect();
    platform::SftpChannel &Channel() const;
    // Logs in again after a lost connection.
    bool Reconnected();

    // The trees of the request, each folder before its contents.
    std::vector<Item> RemoteItems();
    void AddRemoteFolder(Item folder, int depth, std::vector<Item> *items);
    std::vector<Item> LocalItems();
    void AddLocal(const std::string &path, const std::string &to, std::vector<Item> *items);

    void MoveAll(const std::vector<Item> &items);
    bool MakeFolder(const Item &item);
    // False once the request is to end.
    bool MoveFile(const Item &item);
    // Whether the existing target may be replaced; the progress window shows
    // again afterwards.
    bool MayReplace(const Item &item);
    // Sends or fetches `item` into `partial` from `offset` on.
    status_t Carry(const Item &item, const std::string &partial, uint64_t offset);
    // The bytes of `partial` that arrived before the connection broke.
    uint64_t Arrived(const std::string &partial);
    // Gives `partial` the item's bits and times and then the item's name.
    status_t Finish(const Item &item, const std::string &partial);
    void RemovePartial(const std::string &partial);
    std::string PartialPath(const std::string &folder);
    // A folder's bits and times, once its contents are in.
    void KeepFolderFacts(const Item &item);

    bool Progress(uint64_t done);
    void Refuse(const std::string &name, const std::string &why);
    bool Ended();
    bool Interrupted();

    const platform::Message &fRequest;
    const std::string fDestination;
    CopyControl &fControl;
    OverwritePolicy fOverwrite;
    platform::SocketInterrupt fInterrupt;
    std::unique_ptr<SftpFolderClient> fClient;
    const bool fDownload;
    std::string fRemoteFolder;
    bool fStopped = false;
    bool fAborted = false;
    // The remote folders this upload made: no Stat need ask what is in them.
    std::set<std::string> fNewFolders;
    // The user refused the host's key, or was warned that it changed.
    bool fHostRefused = false;
    // The file in transfer: its name and the bytes already shown of it.
    std::string fFileName;
    uint64_t fShown = 0;
};

} // namespace kestrin
