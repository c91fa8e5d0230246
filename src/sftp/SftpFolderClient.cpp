#include "sftp/SftpFolderClient.h"

namespace kestrin {

namespace {

// Deeper than any real tree; a tree that holds itself through a bind mount
// stops here.
constexpr int kMaxDepth = 64;

std::string Join(const std::string &folder, const std::string &name)
{
    return folder == "/" ? "/" + name : folder + "/" + name;
}

std::string ParentOf(const std::string &folder)
{
    const size_t slash = folder.find_last_of('/');
    return slash == 0 || slash == std::string::npos ? "/" : folder.substr(0, slash);
}

bool IsPlainName(const std::string &name)
{
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos;
}

} // namespace

SftpFolderClient::SftpFolderClient(FtpSession session,
                                   unsigned timeoutMs,
                                   Questions questions,
                                   LogLine log)
    : fSession(std::move(session))
    , fTimeoutMs(timeoutMs)
    , fQuestions(std::move(questions))
    , fLog(std::move(log))
{}

SftpFolderClient::~SftpFolderClient() = default;

std::string SftpFolderClient::Log(const std::string &line) const
{
    if (fLog)
        fLog(line);
    return line;
}

void SftpFolderClient::ConnectionLost()
{
    fChannel.reset();
    fSsh.reset();
}

std::string SftpFolderClient::Login()
{
    ConnectionLost();
    fSsh = std::make_unique<platform::SshSession>();
    Log("Connecting to " + fSession.host + " port " + std::to_string(fSession.PortNumber()) + "...");
    std::string why;
    if (fSsh->Connect(fSession.host,
                      uint16_t(fSession.PortNumber()),
                      fSession.user,
                      int(fTimeoutMs),
                      &why)
        != B_OK) {
        ConnectionLost();
        return Log(why);
    }
    why = CheckHost();
    if (why.empty() && !Authenticate())
        why = "The server did not let " + fSession.user + " in.";
    if (why.empty()) {
        fChannel = std::make_unique<platform::SftpChannel>(*fSsh);
        if (fChannel->Open() != B_OK)
            why = fChannel->Error();
    }
    if (!why.empty()) {
        ConnectionLost();
        return Log(why);
    }
    Log("Logged in as " + fSession.user + ".");
    return {};
}

std::string SftpFolderClient::CheckHost()
{
    platform::SshHostKey key;
    std::string why;
    switch (fSsh->CheckHost(&key, &why)) {
    case platform::SshHostState::Known:
        return {};
    case platform::SshHostState::Unknown:
        if (!fQuestions.trustHost || !fQuestions.trustHost(key))
            return "The host key of " + fSession.host + " was not accepted.";
        if (fSsh->TrustHost(&why) != B_OK)
            return why;
        Log("Added the " + key.type + " key " + key.fingerprint + " to the known hosts.");
        return {};
    case platform::SshHostState::Changed:
        if (fQuestions.warnChanged)
            fQuestions.warnChanged(why);
        return why;
    default:
        return why;
    }
}

bool SftpFolderClient::Authenticate()
{
    if (fSsh->AuthenticateWithAgent() || fSsh->AuthenticateWithKeys(fQuestions.passphrase))
        return true;
    if (!fSession.pass.empty())
        return fSsh->AuthenticateWithPassword(fSession.pass);
    const std::optional<std::string> password = fQuestions.password ? fQuestions.password()
                                                                    : std::nullopt;
    return password && fSsh->AuthenticateWithPassword(*password);
}

void SftpFolderClient::KeepAlive()
{
    std::string folder;
    if (LoggedIn() && fChannel->RealPath(".", &folder) == B_IO_ERROR) {
        Log("The server ended the connection.");
        ConnectionLost();
    }
}

SftpResult SftpFolderClient::Run(const SftpRequest &request, const std::function<void()> &connected)
{
    SftpResult result;
    const bool fresh = request.step == SftpRequest::Step::Connect || !LoggedIn();
    if (fresh) {
        result.connectError = Login();
        if (!result.connectError.empty())
            return result;
        if (connected)
            connected();
    }
    status_t listed = StepAndList(request, result);
    if (!fresh && !fSsh->IsConnected()) {
        // The server ended the session since the last request: logged in
        // again at once, the request is made once more.
        Log("The server ended the connection.");
        result = {};
        result.connectError = Login();
        if (!result.connectError.empty())
            return result;
        listed = StepAndList(request, result);
    }
    if (!result.stepError.empty())
        Log(result.stepError);
    if (listed == B_IO_ERROR) {
        // The connection is gone: the next request logs in again.
        result.connectError = Log("The connection was lost: " + fChannel->Error());
        ConnectionLost();
    } else if (listed != B_OK) {
        result.listError = Log(fChannel->Error());
    }
    return result;
}

status_t SftpFolderClient::StepAndList(const SftpRequest &request, SftpResult &result)
{
    result.stepError = Step(request, &result.folder);
    return fChannel->List(result.folder, &result.entries);
}

std::string SftpFolderClient::Step(const SftpRequest &request, std::string *folder)
{
    using Step = SftpRequest::Step;
    *folder = request.base;
    // Enter also takes a whole path, typed into the pane's path field.
    const bool wholePath = request.step == Step::Enter && request.name.starts_with('/');
    if (request.step != Step::Connect && request.step != Step::Stay && request.step != Step::Up
        && !wholePath && !IsPlainName(request.name) && request.entries.empty())
        return "\"" + request.name + "\" is not a name of this folder.";
    std::string error;
    switch (request.step) {
    case Step::Connect:
        if (!Resolve(fSession.remoteDir.empty() ? "." : fSession.remoteDir, folder)) {
            // A remote folder that is gone leaves the user at the login folder.
            error = fChannel->Error();
            fChannel->RealPath(".", folder);
        }
        return error;
    case Step::Stay:
        return {};
    case Step::Up:
        *folder = ParentOf(request.base);
        return {};
    case Step::Enter:
        if (!Resolve(wholePath ? request.name : Join(request.base, request.name), folder)) {
            *folder = request.base;
            return fChannel->Error();
        }
        return {};
    case Step::MakeDir:
        Log("Making the folder " + Join(request.base, request.name));
        return fChannel->MakeFolder(Join(request.base, request.name), 0777) == B_OK
                   ? std::string()
                   : fChannel->Error();
    case Step::Rename:
        if (!IsPlainName(request.newName))
            return "\"" + request.newName + "\" cannot be a name: it may not hold \"/\".";
        Log("Renaming " + Join(request.base, request.name) + " to " + request.newName);
        return fChannel->Rename(Join(request.base, request.name),
                                Join(request.base, request.newName))
                       == B_OK
                   ? std::string()
                   : fChannel->Error();
    case Step::Remove:
        for (const auto &[name, isFolder] : request.entries)
            if (error.empty())
                error = IsPlainName(name) ? Remove(Join(request.base, name), isFolder, 0)
                                          : "\"" + name + "\" is not a name of this folder.";
        return error;
    case Step::SetMode:
        for (const auto &[name, isFolder] : request.entries)
            if (error.empty() && fChannel->SetMode(Join(request.base, name), request.mode) != B_OK)
                error = fChannel->Error();
        return error;
    }
    return {};
}

bool SftpFolderClient::Resolve(const std::string &path, std::string *folder)
{
    // Servers canonicalise names that do not exist, too; only a folder is a
    // place to go to.
    std::string absolute;
    platform::SftpEntry entry;
    if (fChannel->RealPath(path, &absolute) != B_OK || fChannel->Stat(absolute, &entry) != B_OK)
        return false;
    if (entry.kind != platform::SftpEntry::Kind::Folder) {
        fChannel->SetError(path + ": not a folder.");
        return false;
    }
    *folder = absolute;
    return true;
}

std::string SftpFolderClient::Remove(const std::string &path, bool isFolder, int depth)
{
    if (!isFolder) {
        Log("Deleting " + path);
        return fChannel->RemoveFile(path) == B_OK ? std::string() : fChannel->Error();
    }
    if (depth > kMaxDepth)
        return path + ": the tree is too deep to delete.";
    std::vector<platform::SftpEntry> entries;
    if (fChannel->List(path, &entries) != B_OK)
        return fChannel->Error();
    for (const platform::SftpEntry &entry : entries) {
        // A link is removed itself, never what it leads to.
        const std::string error = Remove(Join(path, entry.name),
                                         entry.kind == platform::SftpEntry::Kind::Folder,
                                         depth + 1);
        if (!error.empty())
            return error;
    }
    Log("Deleting the folder " + path);
    return fChannel->RemoveFolder(path) == B_OK ? std::string() : fChannel->Error();
}

} // namespace kestrin
