#include "fileops/FtpTransfer.h"

#include "app/AppUtils.h"
#include "fileops/CopyControl.h"
#include "fileops/FileOpsMessages.h"
#include "fileops/KestrinEntry.h"
#include "ftp/FtpListing.h"
#include "ftp/FtpSecurity.h"
#include "ftp/clsFTP.h"
#include "platform/Directory.h"
#include "platform/Entry.h"
#include "platform/File.h"
#include "platform/FolderScan.h"
#include "platform/PathNames.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <utility>
#include <vector>

namespace kestrin {

namespace {

constexpr int kLoginRefused = 530;
// The client's code for a reply that never came: the server went away or
// fell silent.
constexpr int kNoReply = 2;
constexpr int kLocalFileFailed = 7;

platform::Alert TransferAlert(bool download, const std::string &text)
{
    return {download ? "Download" : "Upload", text, {"OK"}, B_WARNING_ALERT};
}

platform::Alert ConnectAlert(int code)
{
    const char *text = code == kLoginRefused
                           ? "The username or password supplied is incorrect.\nCheck your "
                             "settings and try to reconnect."
                           : "Failed to connect to ftp server.\nPlease check your internet "
                             "connection";
    if (const char *secure = FtpTls::ProblemText(code))
        text = secure;
    return {"Connect Failed", text, {"OK"}, B_WARNING_ALERT};
}

std::string StringOf(const platform::Message &request, const char *field)
{
    std::string value;
    request.FindString(field, &value);
    return value;
}

// A plain CWD answers 250, which the client does not count as success.
bool ChangedDir(int code)
{
    return code == 0 || code == 250;
}

std::string RemoteJoin(const std::string &folder, const std::string &name)
{
    if (folder.empty())
        return name;
    return folder.back() == '/' ? folder + name : folder + "/" + name;
}

// A name no other entry of the folder has, for a download until it is whole.
std::string PartialPath(const std::string &folder)
{
    for (unsigned n = 0;; n++) {
        std::string path = platform::JoinPath(folder, ".kestrin-part-" + std::to_string(n));
        if (!platform::Entry(path).Exists())
            return path;
    }
}

// A line end in a name would end the command that carries it, and the rest
// of the name would reach the server as a command of its own.
bool IsSafeRemoteName(const std::string &name)
{
    return name.find_first_of("\r\n") == std::string::npos;
}

bool IsRealFolder(const platform::ScannedEntry &entry)
{
    return entry.statStatus == B_OK && S_ISDIR(entry.info.st_mode);
}

// A regular file, or a link to one: what an upload can read to its end.
bool IsUploadableFile(const platform::ScannedEntry &entry)
{
    if (entry.statStatus != B_OK)
        return false;
    if (S_ISLNK(entry.info.st_mode))
        return entry.targetKnown && S_ISREG(entry.targetMode);
    return S_ISREG(entry.info.st_mode);
}

// What a server answers to a command it does not have.
bool IsUnknownCommand(int code)
{
    return code == 500 || code == 502;
}

// The modification time of what an upload of `entry` sends: a link's target.
time_t UploadedTime(const platform::ScannedEntry &entry, const std::string &path)
{
    time_t modified = entry.info.st_mtime;
    if (S_ISLNK(entry.info.st_mode))
        platform::Entry(path, true).GetModificationTime(&modified);
    return modified;
}

// A listing's size text as a number; -1 when it is none, so the server is
// asked instead.
int64_t ListedSize(const std::string &text)
{
    int64_t value = -1;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() ? value : -1;
}

} // namespace

FtpTransfer::FtpTransfer(const platform::Message &request,
                         std::string destination,
                         CopyControl &control)
    : fRequest(request)
    , fDestination(std::move(destination))
    , fControl(control)
    , fDownload(request.what == kMsgFtpDownload)
    , fTrust(StringOf(request, "Session"), StringOf(request, "Host"))
{}

FtpTransfer::~FtpTransfer() = default;

bool FtpTransfer::IsSafeLocalName(const std::string &name)
{
    // A line end cannot come from a listing, but a request could carry one
    // into the RETR or CWD that fetches the name.
    return !name.empty() && name.find('/') == std::string::npos
           && name.find_first_not_of('.') != std::string::npos && IsSafeRemoteName(name);
}

void FtpTransfer::Run()
{
    platform::SocketInterrupt::Scope scope(&fInterrupt);
    fControl.SetStopAction([this] { fInterrupt.Trigger(); });
    if (Connect()) {
        if (fDownload)
            DownloadAll();
        else
            UploadAll();
        fFtp->Leave();
    }
    fControl.SetStopAction(nullptr);
}

bool FtpTransfer::Connect()
{
    fRequest.FindString("FtpPath", &fRemoteFolder);
    fFtp = std::make_unique<clsFTP>(kTimeoutMs, &FtpTransfer::CopyFtpCallback, this);
    const int code = LogIn(*fFtp);
    if (code != 0) {
        // A refused certificate was the user's answer, or had its warning.
        if (!Interrupted() && code != FtpTls::kCertificateRefused)
            CopyControl::ReportError(&fControl, ConnectAlert(code));
        return false;
    }
    // Items sent into or fetched from another folder than the pane shows
    // would land where the user never looked.
    if (!ChangedDir(fFtp->ChangeDir(fRemoteFolder.c_str()))) {
        CopyControl::ReportError(&fControl,
                                 TransferAlert(fDownload,
                                               "Kestrin cannot open \"" + fRemoteFolder
                                                   + "\" on the server: " + fFtp->ReplyText()));
        fFtp->Leave();
        return false;
    }
    return true;
}

int FtpTransfer::LogIn(clsFTP &ftp)
{
    // The session's choice, as the pane takes it.
    ftp.UseTls(FtpSecurity::Read(StringOf(fRequest, "Session")).tls,
               [this](const platform::TlsCertificate &certificate) {
                   return fTrust.Accept(certificate);
               });
    std::string host, user, password;
    int32_t port = 0;
    fRequest.FindString("Host", &host);
    fRequest.FindString("User", &user);
    fRequest.FindString("Password", &password);
    fRequest.FindInt32("Port", &port);
    ftp.SetHost(host.c_str(), unsigned(port), nullptr, 0);
    const int code = ftp.Connect(user.c_str(), password.c_str(), nullptr);
    // The names the pane showed came in UTF-8 where the server can send
    // them so; the commands that name them must go the same way.
    if (code == 0)
        ftp.NegotiateFeatures();
    return code;
}

bool FtpTransfer::CutShort(int code)
{
    if (code == 0 || code == kLocalFileFailed || Ended() || Interrupted())
        return false;
    // 426: the server saw the data connection break, and still listens.
    return code == kNoReply || code == 426 || fFtp->ControlLoss() != clsFTP::Loss::None;
}

bool FtpTransfer::Reconnected()
{
    if (fFtp->ControlLoss() == clsFTP::Loss::None && fFtp->IsConnected())
        return true;
    fFtp->Leave();
    return LogIn(*fFtp) == 0 && ChangedDir(fFtp->ChangeDir(fRemoteFolder.c_str()));
}

template<typename Op>
int FtpTransfer::GoOn(int code, Op resume)
{
    for (int attempt = 0; attempt < kResumeAttempts && CutShort(code); attempt++)
        code = Reconnected() ? resume() : kNoReply;
    return code;
}

void FtpTransfer::UploadAll()
{
    type_code type = 0;
    int32_t count = 0;
    if (fRequest.GetInfo("refs", &type, &count) != B_OK)
        count = 0;
    for (int32_t i = 0; i < count && !Ended(); i++) {
        entry_ref ref;
        if (fRequest.FindRef("refs", i, &ref) == B_OK)
            UploadItem(ref.path);
    }
}

void FtpTransfer::UploadItem(const std::string &localPath)
{
    const std::string name = platform::LeafName(localPath);
    const platform::ScannedEntry entry = platform::ScanEntry(localPath, name);
    if (!IsSafeRemoteName(name))
        Refuse("upload", name, "nothing on the server can have that name");
    else if (IsRealFolder(entry))
        UploadDir(localPath, name, entry.info.st_mtime);
    else if (IsUploadableFile(entry))
        UploadFile(localPath, name, UploadedTime(entry, localPath));
    else
        Refuse("upload", name, "it is neither a file nor a folder");
}

void FtpTransfer::UploadFile(const std::string &localPath, const std::string &name, time_t modified)
{
    StartFile(localPath, RemoteJoin(fRemoteFolder, name), name);
    const auto whole = [&] {
        return Transfer([&](bool passive) {
            return fFtp->Upload(localPath.c_str(), name.c_str(), true, passive);
        });
    };
    // What the server received before the connection broke stays; the rest
    // is appended. A server without APPE, or one that holds more than there
    // is, takes the whole file again.
    const auto resume = [&] {
        int64_t received = 0;
        off_t size = 0;
        if (fFtp->FileSize(name.c_str(), &received) != 0 || received <= 0
            || platform::File(localPath, B_READ_ONLY).GetSize(&size) != B_OK || received > size)
            return whole();
        const int code = Transfer([&](bool passive) {
            return fFtp->ResumeUpload(localPath.c_str(), name.c_str(), received, true, passive);
        });
        return code == 0 || CutShort(code) ? code : whole();
    };
    const int code = GoOn(whole(), resume);
    if (fStopped) {
        // Half a file on the server is no copy of it.
        fFtp->DeleteFile(name.c_str());
        return;
    }
    if (CutShort(code))
        RemovePartialUpload(name);
    if (code != 0) {
        TransferFailed("upload", name, code);
        return;
    }
    fDoneBytes += fFileBytes;
    SetRemoteTime(name, modified);
}

void FtpTransfer::SetRemoteTime(const std::string &name, time_t modified)
{
    if (!fServerSetsTimes || Ended())
        return;
    // Many servers (vsftpd among them) have no MFMT: the copy stays dated
    // as the server dates it, which is no failure to tell the user of. Some
    // date files only, and refuse a folder.
    if (IsUnknownCommand(fFtp->SetModificationTime(name.c_str(), modified)))
        fServerSetsTimes = false;
}

void FtpTransfer::RemovePartialUpload(const std::string &name)
{
    // The server keeps what it received before the connection went; where it
    // still runs, a connection of its own takes that away. Its sockets are
    // the worker's, so a stop cuts it short as well.
    clsFTP ftp(kTimeoutMs, nullptr, nullptr);
    if (LogIn(ftp) != 0)
        return;
    if (ChangedDir(ftp.ChangeDir(fRemoteFolder.c_str())))
        ftp.DeleteFile(name.c_str());
    ftp.Leave();
}

void FtpTransfer::UploadDir(const std::string &localPath, const std::string &name, time_t modified)
{
    platform::FolderScan scan(localPath);
    std::vector<platform::ScannedEntry> entries;
    if (scan.InitCheck() != B_OK || scan.ReadNames() < 0
        || scan.StatEntries(&entries) != B_ENTRY_NOT_FOUND) {
        Refuse("upload", name, "the folder cannot be read");
        return;
    }
    // A folder that is there already takes the new entries in.
    fFtp->MakeDir(name.c_str());
    const std::string parent = fRemoteFolder;
    if (!EnterRemoteFolder(name, "upload"))
        return;
    // The files first, then the sub-folders, as a local copy goes.
    for (const bool folders : {false, true}) {
        for (const platform::ScannedEntry &entry : entries) {
            if (Ended())
                break;
            if (IsRealFolder(entry) == folders)
                UploadItem(platform::JoinPath(localPath, entry.name));
        }
    }
    LeaveRemoteFolder(parent);
    // After its contents, whose arrival changed its time.
    SetRemoteTime(name, modified);
}

void FtpTransfer::DownloadAll()
{
    type_code type = 0;
    int32_t files = 0, folders = 0;
    if (fRequest.GetInfo("FtpFile", &type, &files) != B_OK)
        files = 0;
    if (fRequest.GetInfo("FtpDir", &type, &folders) != B_OK)
        folders = 0;
    fControl.BatchStarted(100 * (files + folders),
                          std::to_string(files + folders) + " Files or Directories",
                          "");
    std::string name;
    for (int32_t i = 0; i < files && !Ended(); i++) {
        if (fRequest.FindString("FtpFile", i, &name) == B_OK)
            DownloadFile(fDestination, name, Listed());
    }
    for (int32_t i = 0; i < folders && !Ended(); i++) {
        if (fRequest.FindString("FtpDir", i, &name) == B_OK)
            DownloadDir(fDestination, name);
    }
}

void FtpTransfer::DownloadFile(const std::string &localFolder,
                               const std::string &name,
                               Listed listed)
{
    if (!IsSafeLocalName(name)) {
        Refuse("download", name, "a local file cannot have that name");
        return;
    }
    const std::string target = platform::JoinPath(localFolder, name);
    const std::string partial = PartialPath(localFolder);
    StartFile(RemoteJoin(fRemoteFolder, name), target, name);
    // Servers that announce no size in their reply to RETR would otherwise
    // leave the bars standing still for the whole file.
    if (listed.size < 0 && fFtp->FileSize(name.c_str(), &listed.size) != 0)
        listed.size = -1;
    const std::string partialName = platform::LeafName(partial);
    const auto whole = [&] {
        fFtp->ExpectSize(std::max<int64_t>(listed.size, 0));
        return Transfer([&](bool passive) {
            return fFtp->Download(name.c_str(),
                                  localFolder.c_str(),
                                  partialName.c_str(),
                                  true,
                                  passive);
        });
    };
    // Goes on from what arrived before the connection broke; a server
    // without REST sends the whole file again.
    const auto resume = [&] {
        off_t have = 0;
        if (platform::File(partial, B_READ_ONLY).GetSize(&have) != B_OK || have <= 0)
            return whole();
        fFtp->ExpectSize(std::max<int64_t>(listed.size, 0));
        const int code = Transfer([&](bool passive) {
            return fFtp->ResumeDownload(name.c_str(),
                                        localFolder.c_str(),
                                        partialName.c_str(),
                                        have,
                                        true,
                                        passive);
        });
        return code == 0 || CutShort(code) ? code : whole();
    };
    const int code = GoOn(whole(), resume);
    platform::Entry received(partial);
    if (code == 0 && !fStopped) {
        // Dated before it takes its name, so it never shows the time of the
        // download.
        if (const std::optional<timespec> time = RemoteTime(name, listed))
            received.SetModificationTime(*time);
        // Renaming replaces whatever had the name, a link included, and never
        // writes through it.
        const status_t status = received.MoveTo(localFolder, name.c_str(), true);
        if (status == B_OK) {
            fDoneBytes += fFileBytes;
            return;
        }
        KestrinEntry::ShowError(status, &fControl);
    }
    received.Remove();
    if (code != 0 && !fStopped)
        TransferFailed("download", name, code);
}

std::optional<timespec> FtpTransfer::RemoteTime(const std::string &name, const Listed &listed)
{
    // MDTM tells the second, a LIST line the day at best, a machine listing
    // the second too. A server without MDTM says so once, and only the
    // listings serve for the rest of the request.
    if (listed.exact && listed.time)
        return timespec{*listed.time, 0};
    if (fServerTellsTimes) {
        timespec told{};
        const int code = fFtp->ModificationTime(name.c_str(), &told);
        if (code == 0)
            return told;
        if (IsUnknownCommand(code))
            fServerTellsTimes = false;
    }
    if (listed.time)
        return timespec{*listed.time, 0};
    return std::nullopt;
}

void FtpTransfer::DownloadDir(const std::string &localFolder,
                              const std::string &name,
                              std::optional<time_t> listed)
{
    if (!IsSafeLocalName(name)) {
        Refuse("download", name, "a local folder cannot have that name");
        return;
    }
    const std::string local = platform::JoinPath(localFolder, name);
    const std::string parent = fRemoteFolder;
    if (!EnterRemoteFolder(name, "download"))
        return;
    std::string listing;
    if (ListRemoteFolder(&listing) && MakeLocalFolder(local, name)) {
        for (const FtpListingRow &row : GetEntries(listing)) {
            if (Ended())
                break;
            const std::optional<time_t> time = row.modified ? row.modified : ListedTime(row.date);
            // A link on the server may lead anywhere there; it is left out.
            if (row.permissions.starts_with("d"))
                DownloadDir(local, row.name, time);
            else if (row.permissions.starts_with("-"))
                DownloadFile(local,
                             row.name,
                             {ListedSize(row.size), time, row.modified.has_value()});
        }
        // Last: every entry made in it changed its time.
        if (listed && !Ended())
            platform::Entry(local).SetModificationTime({*listed, 0});
    }
    LeaveRemoteFolder(parent);
}

bool FtpTransfer::EnterRemoteFolder(const std::string &name, const std::string &verb)
{
    const auto enter = [&] {
        const int code = fFtp->ChangeDir(name.c_str());
        return ChangedDir(code) ? 0 : code;
    };
    if (GoOn(enter(), enter) != 0) {
        Refuse(verb, name, std::string("the server answered: ") + fFtp->ReplyText());
        return false;
    }
    fRemoteFolder = RemoteJoin(fRemoteFolder, name);
    return true;
}

void FtpTransfer::LeaveRemoteFolder(const std::string &parent)
{
    fRemoteFolder = parent;
    // A lost connection has nothing to change back in.
    if (!fAborted)
        fFtp->ChangeDir("..");
}

bool FtpTransfer::MakeLocalFolder(const std::string &path, const std::string &name)
{
    const status_t status = platform::Directory(platform::ParentPath(path)).CreateDirectory(name);
    // Only a real folder takes the files in: a link there could lead them
    // anywhere.
    if (status == B_OK || (status == B_FILE_EXISTS && IsRealFolder(platform::ScanEntry(path, name))))
        return true;
    if (status == B_FILE_EXISTS)
        Refuse("download", name, "something that is not a folder has its name here");
    else
        KestrinEntry::ShowError(status, &fControl);
    return false;
}

bool FtpTransfer::ListRemoteFolder(std::string *listing)
{
    const auto list = [&] {
        char *text = nullptr;
        const int code = Transfer([&](bool passive) { return fFtp->List(nullptr, &text, passive); });
        if (text != nullptr)
            *listing = text;
        clsFTP::DisposeBuffer(&text);
        return code;
    };
    const int code = GoOn(list(), list);
    if (code != 0)
        TransferFailed("download", platform::LeafName(fRemoteFolder), code);
    return code == 0;
}

template<typename Op>
int FtpTransfer::Transfer(Op op)
{
    int code = op(fPassive);
    if (code != 0 && Interrupted())
        return code;
    if (code != 0 && fPassive && fFtp->PassiveRefused() && !fStopped) {
        fPassive = false;
        code = op(false);
    }
    return code;
}

void FtpTransfer::StartFile(const std::string &source,
                            const std::string &target,
                            const std::string &name)
{
    fFileName = name;
    fPercent = 0;
    fFileBytes = 0;
    fFileStart = std::time(nullptr);
    // The file bar counts a file's percentage.
    fControl.FileStarted(source, target, 100);
}

int FtpTransfer::CopyFtpCallback(int code, int count, const char *, void *data)
{
    auto *transfer = static_cast<FtpTransfer *>(data);
    if (transfer == nullptr || code == -1)
        return 1;
    return transfer->Progress(code, count);
}

int FtpTransfer::Progress(int percent, int count)
{
    fFileBytes = count;
    const int advance = percent - fPercent;
    fPercent = percent;
    // Whole seconds, one more so that the first second never divides by zero.
    const double seconds = double(std::time(nullptr) - fFileStart + 1);
    char rate[32];
    snprintf(rate, sizeof rate, "%.1f", double(count) / (seconds * 1024.0));
    fControl.TransferProgress(advance,
                              fFileName,
                              std::to_string(count) + " Bytes @ " + rate + " kB/s",
                              std::to_string(int64_t(count) + fDoneBytes));
    if (!fControl.StopRequested())
        return 1;
    fStopped = true;
    // An upload does not stop for the answer alone.
    fFtp->CancelTransfer();
    return 0;
}

void FtpTransfer::TransferFailed(const std::string &verb, const std::string &name, int code)
{
    if (Interrupted())
        return;
    if (code == kLocalFileFailed && fFtp->LocalStatus() == B_DEVICE_FULL) {
        CopyControl::ReportError(&fControl,
                                 MsgBoxAlert(
                                     "Cannot Copy file.\nInsufficient space on destination."));
        fAborted = true;
    } else if (code == kLocalFileFailed) {
        Refuse(verb,
               name,
               fDownload ? "the local file cannot be written" : "the local file cannot be read");
    } else if (code == kNoReply) {
        Refuse(verb, name, "the connection to the server was lost");
        fAborted = true;
    } else {
        Refuse(verb, name, std::string("the server answered: ") + fFtp->ReplyText());
    }
}

void FtpTransfer::Refuse(const std::string &verb, const std::string &name, const std::string &why)
{
    if (Interrupted())
        return;
    CopyControl::ReportError(&fControl,
                             TransferAlert(fDownload,
                                           "Kestrin did not " + verb + " \"" + name + "\": " + why
                                               + "."));
}

bool FtpTransfer::Interrupted()
{
    if (fInterrupt.Triggered())
        fStopped = true;
    return fInterrupt.Triggered();
}

bool FtpTransfer::Ended()
{
    if (!fStopped && !fAborted && fControl.StopRequested())
        fStopped = true;
    return fStopped || fAborted;
}

} // namespace kestrin
