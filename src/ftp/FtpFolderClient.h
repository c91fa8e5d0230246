#pragma once

#include "ftp/FtpCertificateTrust.h"
#include "ftp/FtpRequest.h"
#include "ftp/FtpSession.h"
#include "ftp/clsFTP.h"

#include <functional>
#include <string>

namespace kestrin {

// The part of a pane's FTP conversation that talks to the server: one
// client, logged in once and kept, that takes a request's step and lists
// the folder it leads to. Lives on the conversation's worker.
class FtpFolderClient
{
public:
    using LogLine = std::function<void(const std::string &)>;

    FtpFolderClient(FtpSession session, unsigned timeoutMs, LogLine log);
    ~FtpFolderClient();

    // Logs in first when not logged in (or for a Connect step), then tells
    // `connected`. A connection the server dropped is made once more and the
    // request goes on from its base folder; when that fails too, or the
    // server fell silent, the request gives up with a nonzero connectCode
    // and the folder and listing of the last listing that came whole, and
    // the next request logs in again.
    FtpResult Run(const FtpRequest &request, const std::function<void()> &connected);
    // The connection was cut under a request: the next one logs in again.
    void ConnectionLost() { fLoggedIn = false; }
    bool LoggedIn() const { return fLoggedIn; }
    // For an idle connection: NOOP, so that the server does not end it for
    // idleness. One that the server ended all the same is made again at
    // once, in the folder it was in, and the log says so; when that fails,
    // the next request logs in.
    void KeepAlive();
    // QUIT, when still connected.
    void Quit();

private:
    static int Report(int code, int count, const char *text, void *data);
    // Logs in and takes up what the server offers beyond RFC 959.
    int Login();
    // Logs in, changes to where the request starts and runs it.
    FtpResult LogInAndVisit(const FtpRequest &request, const std::function<void()> &connected);
    // The step, then where it led and the listing there.
    void Visit(const FtpRequest &request, FtpResult *result);
    void GiveUp(FtpResult *result);
    bool Lost() const { return fFtp.ControlLoss() != clsFTP::Loss::None; }
    void Step(const FtpRequest &request);
    void Remove(const FtpRequest &request);
    // Deletes everything inside the folder `path`, folders depth first.
    void EmptyFolder(const std::string &path, int depth);
    // PASV first; active only when the server refuses PASV, from then on.
    int List(const char *path, std::string *listing);

    FtpSession fSession;
    LogLine fLog;
    clsFTP fFtp;
    FtpCertificateTrust fTrust;
    bool fLoggedIn = false;
    bool fPassive = true;
    std::string fFolder;
    // What the pane shows again when a request gives up.
    std::string fLastFolder;
    std::string fLastListing;
};

} // namespace kestrin
