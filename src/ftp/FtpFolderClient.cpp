#include "ftp/FtpFolderClient.h"

#include "ftp/FtpListing.h"
#include "ftp/FtpSecurity.h"
#include "platform/PathNames.h"

namespace kestrin {

namespace {

// Deeper than any real tree; a server that lists a folder inside itself
// (through a link it calls a folder) stops here.
constexpr int kMaxDepth = 64;

// What a server answers PASV with when it does not know or allow it.
bool RefusesPassive(int code)
{
    return code >= 500 && code <= 502;
}

} // namespace

FtpFolderClient::FtpFolderClient(FtpSession session, unsigned timeoutMs, LogLine log)
    : fSession(std::move(session))
    , fLog(std::move(log))
    , fFtp(timeoutMs, &FtpFolderClient::Report, this)
    , fTrust(fSession.name, fSession.host)
{}

FtpFolderClient::~FtpFolderClient() = default;

int FtpFolderClient::Report(int code, int, const char *text, void *data)
{
    auto *self = static_cast<FtpFolderClient *>(data);
    if (code == -1 && text != nullptr && self->fLog)
        self->fLog(text);
    return 1;
}

int FtpFolderClient::Login()
{
    // A connection that was lost or cut under an earlier request ends here,
    // without waiting for an answer it would not give.
    fFtp.Leave();
    fFolder.clear();
    fPassive = true;
    fFtp.SetHost(fSession.host.c_str(), fSession.PortNumber(), nullptr, 0);
    // Read at each login: the choice, or a certificate trusted since, may
    // have changed in the meantime.
    fFtp.UseTls(FtpSecurity::Read(fSession.name).tls,
                [this](const platform::TlsCertificate &certificate) {
                    return fTrust.Accept(certificate);
                });
    const int code = fFtp.Connect(fSession.user.c_str(), fSession.pass.c_str(), nullptr);
    fLoggedIn = code == 0;
    if (fLoggedIn)
        fFtp.NegotiateFeatures();
    return code;
}

void FtpFolderClient::KeepAlive()
{
    if (!fLoggedIn)
        return;
    fFtp.Noop();
    if (!Lost())
        return;
    if (fLog)
        fLog("The server ended the connection; logging in again.");
    const std::string folder = fFolder;
    if (Login() != 0 || folder.empty())
        return;
    const int code = fFtp.ChangeDir(folder.c_str());
    if (code == 0 || code == 250)
        fFolder = folder;
}

FtpResult FtpFolderClient::Run(const FtpRequest &request, const std::function<void()> &connected)
{
    const bool loggingIn = request.step == FtpRequest::Step::Connect || !fLoggedIn;
    FtpResult result;
    if (loggingIn) {
        result = LogInAndVisit(request, connected);
    } else {
        // The step starts where the pane is, whatever a cancelled request
        // left behind.
        if (!request.base.empty() && request.base != fFolder)
            fFtp.ChangeDir(request.base.c_str());
        Visit(request, &result);
        // Servers end idle sessions, and restart: a connection found closed
        // is made once more at once. One that fell silent has cost the user
        // a whole time-out already; the next request tries again.
        if (fFtp.ControlLoss() == clsFTP::Loss::Dropped)
            result = LogInAndVisit(request, connected);
    }
    if (result.connectCode == 0 && Lost())
        result.connectCode = clsFTP::kNoReply;
    result.inClear = result.connectCode == 0 && fFtp.Tls().Outcome() == FtpTls::State::Refused;
    if (result.connectCode != 0) {
        GiveUp(&result);
    } else if (result.listCode == 0 && !result.folder.empty()) {
        fLastFolder = result.folder;
        fLastListing = result.listing;
    }
    return result;
}

FtpResult FtpFolderClient::LogInAndVisit(const FtpRequest &request,
                                         const std::function<void()> &connected)
{
    FtpResult result;
    result.connectCode = Login();
    if (result.connectCode != 0)
        return result;
    if (connected)
        connected();
    // The result of CWD is not judged: PWD says where we ended up.
    fFtp.ChangeDir(request.step == FtpRequest::Step::Connect ? fSession.remoteDir.c_str()
                                                             : request.base.c_str());
    Visit(request, &result);
    return result;
}

void FtpFolderClient::Visit(const FtpRequest &request, FtpResult *result)
{
    // Once the connection is lost every further command would only fail,
    // and on a silent server each would wait out its own time-out.
    if (Lost())
        return;
    Step(request);
    if (Lost())
        return;
    fFtp.PrintDir(&fFolder);
    if (Lost())
        return;
    result->folder = fFolder;
    result->listCode = List(nullptr, &result->listing);
}

void FtpFolderClient::GiveUp(FtpResult *result)
{
    fFtp.Leave();
    fLoggedIn = false;
    result->folder = fLastFolder;
    result->listing = fLastListing;
    result->listCode = 0;
}

void FtpFolderClient::Step(const FtpRequest &request)
{
    switch (request.step) {
    case FtpRequest::Step::Enter:
        fFtp.ChangeDir(request.name.c_str());
        break;
    case FtpRequest::Step::Up:
        fFtp.ChangeDir("..");
        break;
    case FtpRequest::Step::MakeDir:
        fFtp.MakeDir(request.name.c_str());
        break;
    case FtpRequest::Step::Remove:
        Remove(request);
        break;
    case FtpRequest::Step::Connect:
    case FtpRequest::Step::Stay:
        break;
    }
}

void FtpFolderClient::Remove(const FtpRequest &request)
{
    for (const auto &[name, folder] : request.entries) {
        if (Lost())
            return;
        if (!folder) {
            fFtp.DeleteFile(name.c_str());
            continue;
        }
        if (fFtp.RemoveDir(name.c_str()) != 550 || !IsPlainName(name) || !request.confirmNotEmpty
            || !request.confirmNotEmpty(name))
            continue;
        const std::string path = platform::JoinPath(request.base, name);
        EmptyFolder(path, 0);
        fFtp.RemoveDir(path.c_str());
    }
}

void FtpFolderClient::EmptyFolder(const std::string &path, int depth)
{
    if (depth >= kMaxDepth)
        return;
    std::string listing;
    if (List(path.c_str(), &listing) != 0)
        return;
    // Absolute paths throughout: a CWD that failed can never make a DELE
    // act on another folder.
    for (const FtpListingRow &row : GetEntries(listing)) {
        if (Lost())
            return;
        if (!IsPlainName(row.name))
            continue;
        const std::string inside = platform::JoinPath(path, row.name);
        if (!row.permissions.empty() && row.permissions[0] == 'd') {
            EmptyFolder(inside, depth + 1);
            fFtp.RemoveDir(inside.c_str());
        } else {
            fFtp.DeleteFile(inside.c_str());
        }
    }
}

int FtpFolderClient::List(const char *path, std::string *listing)
{
    char *text = nullptr;
    int code = fFtp.List(path, &text, fPassive);
    if (code != 0 && fPassive && RefusesPassive(fFtp.LastCode())) {
        clsFTP::DisposeBuffer(&text);
        fPassive = false;
        code = fFtp.List(path, &text, false);
    }
    if (text != nullptr)
        listing->assign(text);
    clsFTP::DisposeBuffer(&text);
    return code;
}

void FtpFolderClient::Quit()
{
    if (fLoggedIn)
        fFtp.Disconnect();
    fLoggedIn = false;
}

} // namespace kestrin
