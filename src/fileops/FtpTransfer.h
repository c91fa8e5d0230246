#pragma once

#include "ftp/FtpCertificateTrust.h"
#include "platform/Message.h"
#include "platform/SocketInterrupt.h"

#include <cstdint>
#include <ctime>
#include <memory>
#include <optional>
#include <string>

namespace kestrin {

class CopyControl;
class clsFTP;

// One FTP request of the panes over a connection of its own: an upload
// ('DATA' with "Session": the "refs" into the remote folder "FtpPath") or a
// download (604: every "FtpFile" and "FtpDir" of "FtpPath" into the
// destination folder), folders with everything in them. Both take the TLS
// choice and the trusted certificate of the session that "Session" names. Progress, pause,
// stop and every failure go through `control`, as for local copies.
//
// A download is written under a hidden name of its own and renamed into place
// once whole, so a stopped or failed one leaves nothing behind and a file it
// replaces stays until the new one is complete. A name from the server that
// holds "/" or is made of dots is never used as a local name: that item is
// refused with an alert and the rest goes on.
//
// A file, listing or folder change cut short by a lost connection logs in
// again and goes on where it broke (REST for a download, APPE for an upload,
// where the server has them; else from the start), up to kResumeAttempts
// times, before it fails as any transfer does.
//
// Dates travel where the server allows: a download keeps the modification
// time the server tells (a machine listing's, MDTM, else the listing's date
// when it names a year),
// a folder's set once its contents are in; an upload sets the local file's
// on the server (MFMT). A server without either command is asked once.
class FtpTransfer
{
public:
    // The client waits this long for any answer of the server.
    static constexpr unsigned kTimeoutMs = 60000;
    // How often a transfer cut short by a lost connection is taken up again
    // over a new one before it fails.
    static constexpr int kResumeAttempts = 3;

    FtpTransfer(const platform::Message &request, std::string destination, CopyControl &control);
    ~FtpTransfer();

    FtpTransfer(const FtpTransfer &) = delete;
    FtpTransfer &operator=(const FtpTransfer &) = delete;

    void Run();

    // The client's callback; `data` is the transfer. Log lines are not
    // shown here. A progress call moves the bars and answers 0 once the
    // user has stopped the request, which ends a download at once.
    static int CopyFtpCallback(int code, int count, const char *text, void *data);

    // Whether a name from a server may name a local file or folder (and
    // travel in a command).
    static bool IsSafeLocalName(const std::string &name);

private:
    // What a listing said of a file: its size (-1 when it said none, so
    // the server is asked), its time, and whether that is to the second.
    struct Listed
    {
        int64_t size = -1;
        std::optional<time_t> time;
        bool exact = false;
    };

    bool Connect();
    // Logs `ftp` in to the request's server, with the TLS its session asks
    // for ("Session"): 0, or the client's code.
    int LogIn(clsFTP &ftp);
    void UploadAll();
    void DownloadAll();
    void UploadItem(const std::string &localPath);
    void UploadFile(const std::string &localPath, const std::string &name, time_t modified);
    // Deletes what a lost connection left of an upload, over a new one.
    void RemovePartialUpload(const std::string &name);
    // Makes the remote folder, changes into it, sends its files and then its
    // sub-folders, and changes back.
    void UploadDir(const std::string &localPath, const std::string &name, time_t modified);
    // Gives the remote entry `name` of the current folder the time `modified`
    // where the server takes it; silent either way.
    void SetRemoteTime(const std::string &name, time_t modified);
    // A listed time to the day only serves when the server tells none.
    void DownloadFile(const std::string &localFolder, const std::string &name, Listed listed);
    // The modification time of the remote file `name`: the listing's when
    // exact, else as the server tells it, else the listing's.
    std::optional<timespec> RemoteTime(const std::string &name, const Listed &listed);
    // The mirror: lists the remote folder, makes the local one, fetches its
    // files and sub-folders, and changes back; the folder takes the time
    // `listed`, when known, after its contents.
    void DownloadDir(const std::string &localFolder,
                     const std::string &name,
                     std::optional<time_t> listed = std::nullopt);
    bool EnterRemoteFolder(const std::string &name, const std::string &verb);
    void LeaveRemoteFolder(const std::string &parent);
    bool MakeLocalFolder(const std::string &path, const std::string &name);
    bool ListRemoteFolder(std::string *listing);

    // Passive first; active for the rest of the request once the server
    // refuses PASV. `op` is given the mode and answers the client's result.
    template<typename Op>
    int Transfer(Op op);
    // Whether a step that answered `code` was cut short by a lost
    // connection (or a broken data connection) and may be taken up again.
    bool CutShort(int code);
    // Logs in again, where the connection is gone, and changes back to the
    // folder the request is in.
    bool Reconnected();
    // After a step answered `code`: while it was cut short, reconnects and
    // runs `resume`, kResumeAttempts times at most. The last code.
    template<typename Op>
    int GoOn(int code, Op resume);
    int Progress(int percent, int count);
    void StartFile(const std::string &source, const std::string &target, const std::string &name);
    // A failed transfer of `name`: the alert, and the end of the request
    // when the connection is lost or the disk is full.
    void TransferFailed(const std::string &verb, const std::string &name, int code);
    void Refuse(const std::string &verb, const std::string &name, const std::string &why);
    // True once the user stopped or the request cannot go on; waits while paused.
    bool Ended();
    // True, and the request stopped, when the window cut the connection
    // because the server kept a stop waiting.
    bool Interrupted();

    const platform::Message &fRequest;
    const std::string fDestination;
    CopyControl &fControl;
    // Every socket the client opens on this worker; triggered from the GUI
    // thread.
    platform::SocketInterrupt fInterrupt;
    std::unique_ptr<clsFTP> fFtp;
    bool fDownload = false;
    FtpCertificateTrust fTrust;
    bool fPassive = true;
    bool fStopped = false;
    bool fAborted = false;
    // Until the server answers that it has no MDTM, or no MFMT.
    bool fServerTellsTimes = true;
    bool fServerSetsTimes = true;
    // Where the conversation stands on the server, for the progress lines.
    std::string fRemoteFolder;
    // The file in transfer: its name, the percentage last shown, when it
    // began, and the bytes of the files finished before it.
    std::string fFileName;
    int fPercent = 0;
    std::time_t fFileStart = 0;
    int64_t fFileBytes = 0;
    int64_t fDoneBytes = 0;
};

} // namespace kestrin
