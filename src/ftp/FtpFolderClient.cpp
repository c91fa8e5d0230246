#include "ftp/FtpFolderClient.h"

#include "ftp/FtpListing.h"
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
    // A connection cut under an earlier request ends here; its QUIT fails
    // at once on the shut socket.
    fFtp.Disconnect();
    fFolder.clear();
    fPassive = true;
    fFtp.SetHost(fSession.host.c_str(), fSession.PortNumber(), nullptr, 0);
    const int code = fFtp.Connect(fSession.user.c_str(), fSession.pass.c_str(), nullptr);
    fLoggedIn = code == 0;
    return code;
}

FtpResult FtpFolderClient::Run(const FtpRequest &request, const std::function<void()> &connected)
{
    FtpResult result;
    const bool connecting = request.step == FtpRequest::Step::Connect;
    if (connecting || !fLoggedIn) {
        result.connectCode = Login();
        if (result.connectCode != 0)
            return result;
        if (connected)
            connected();
        // The result of CWD is not judged: PWD says where we ended up.
        fFtp.ChangeDir(connecting ? fSession.remoteDir.c_str() : request.base.c_str());
    } else if (!request.base.empty() && request.base != fFolder) {
        // The step starts where the pane is, whatever a cancelled request
        // left behind.
        fFtp.ChangeDir(request.base.c_str());
    }
    Step(request);
    fFtp.PrintDir(&fFolder);
    result.folder = fFolder;
    result.listCode = List(nullptr, &result.listing);
    return result;
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
