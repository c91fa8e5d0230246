#include "fileops/SftpTransfer.h"

#include "fileops/CopyControl.h"
#include "fileops/FileOpsMessages.h"
#include "fileops/FtpTransfer.h"
#include "fileops/KestrinEntry.h"
#include "platform/Directory.h"
#include "platform/Entry.h"
#include "platform/FolderScan.h"
#include "platform/PathNames.h"
#include "platform/SftpChannel.h"
#include "sftp/SftpFolderClient.h"
#include "sftp/SftpQuestions.h"

#include <utility>

namespace kestrin {

namespace {

// Deeper than any real tree; a server's tree that holds itself through a
// bind mount stops here.
constexpr int kMaxDepth = 64;
constexpr mode_t kPermissionBits = 07777;

std::string StringOf(const platform::Message &request, const char *field)
{
    std::string value;
    request.FindString(field, &value);
    return value;
}

std::string RemoteJoin(const std::string &folder, const std::string &name)
{
    return folder.empty() || folder.back() == '/' ? folder + name : folder + "/" + name;
}

std::string RemoteParent(const std::string &path)
{
    const size_t slash = path.find_last_of('/');
    return slash == 0 || slash == std::string::npos ? "/" : path.substr(0, slash);
}

std::string RemoteLeaf(const std::string &path)
{
    const size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

// The session the request's fields name, as a pane's is.
FtpSession SessionOf(const platform::Message &request)
{
    FtpSession session;
    int32_t port = 0;
    request.FindInt32("Port", &port);
    session.name = StringOf(request, "Session");
    session.host = StringOf(request, "Host");
    session.user = StringOf(request, "User");
    session.pass = StringOf(request, "Password");
    session.remoteDir = StringOf(request, "FtpPath");
    session.port = port > 0 ? std::to_string(port) : std::string();
    return session;
}

// A plain file, or a link to one: what an upload can read to its end.
bool IsUploadableFile(const platform::ScannedEntry &entry)
{
    if (entry.statStatus != B_OK)
        return false;
    if (S_ISLNK(entry.info.st_mode))
        return entry.targetKnown && S_ISREG(entry.targetMode);
    return S_ISREG(entry.info.st_mode);
}

bool IsRealFolder(const platform::ScannedEntry &entry)
{
    return entry.statStatus == B_OK && S_ISDIR(entry.info.st_mode);
}

} // namespace

SftpTransfer::SftpTransfer(const platform::Message &request,
                           std::string destination,
                           CopyControl &control)
    : fRequest(request)
    , fDestination(std::move(destination))
    , fControl(control)
    , fOverwrite(control)
    , fDownload(request.what == kMsgSftpDownload)
    , fRemoteFolder(StringOf(request, "FtpPath"))
{}

SftpTransfer::~SftpTransfer() = default;

void SftpTransfer::Run()
{
    platform::SocketInterrupt::Scope scope(&fInterrupt);
    fControl.SetStopAction([this] { fInterrupt.Trigger(); });
    if (Connect()) {
        const std::vector<Item> items = fDownload ? RemoteItems() : LocalItems();
        if (!Ended())
            MoveAll(items);
    }
    fControl.SetStopAction(nullptr);
    fClient.reset();
}

bool SftpTransfer::Connect()
{
    const FtpSession session = SessionOf(fRequest);
    // A host key the user refused, or was warned of, needs no alert more.
    SftpFolderClient::Questions questions = SftpQuestions::ThroughAlerts(session);
    questions.trustHost = [this, ask = questions.trustHost](const platform::SshHostKey &key) {
        fHostRefused = !(ask && ask(key));
        return !fHostRefused;
    };
    questions.warnChanged = [this, warn = questions.warnChanged](const std::string &why) {
        fHostRefused = true;
        if (warn)
            warn(why);
    };
    fClient = std::make_unique<SftpFolderClient>(session, kTimeoutMs, questions, nullptr);
    const std::string why = fClient->Login();
    if (why.empty())
        return true;
    if (!Interrupted() && !fHostRefused)
        CopyControl::ReportError(&fControl, {"Connect Failed", why, {"OK"}, B_WARNING_ALERT});
    return false;
}

platform::SftpChannel &SftpTransfer::Channel() const
{
    return *fClient->Channel();
}

bool SftpTransfer::Reconnected()
{
    return !Ended() && fClient->Login().empty();
}

std::vector<SftpTransfer::Item> SftpTransfer::RemoteItems()
{
    std::vector<Item> items;
    for (const char *field : {"FtpFile", "FtpDir"}) {
        std::string name;
        for (int32_t i = 0; fRequest.FindString(field, i, &name) == B_OK && !Ended(); i++) {
            Item item{RemoteJoin(fRemoteFolder, name), platform::JoinPath(fDestination, name)};
            platform::SftpEntry entry;
            if (!FtpTransfer::IsSafeLocalName(name))
                Refuse(name, "a local file cannot have that name");
            else if (Channel().Stat(item.from, &entry) != B_OK)
                Refuse(name, Channel().Error());
            else if (entry.kind == platform::SftpEntry::Kind::Link
                     || entry.kind == platform::SftpEntry::Kind::Other)
                // What a link leads to on the server is not known here: its
                // bits and size would be the link's own.
                Refuse(name, "it is not a plain file or folder on the server");
            else {
                item.folder = entry.kind == platform::SftpEntry::Kind::Folder;
                item.size = item.folder ? 0 : entry.size;
                item.accessed = entry.accessed;
                item.modified = entry.modified;
                item.mode = entry.mode;
                if (item.folder)
                    AddRemoteFolder(std::move(item), 0, &items);
                else
                    items.push_back(std::move(item));
            }
        }
    }
    return items;
}

void SftpTransfer::AddRemoteFolder(Item folder, int depth, std::vector<Item> *items)
{
    std::vector<platform::SftpEntry> entries;
    if (depth > kMaxDepth || Channel().List(folder.from, &entries) != B_OK) {
        Refuse(RemoteLeaf(folder.from),
               depth > kMaxDepth ? "the tree is too deep" : Channel().Error());
        return;
    }
    const Item parent = folder;
    items->push_back(std::move(folder));
    for (const platform::SftpEntry &entry : entries) {
        // A link on the server may lead anywhere there; it is left out.
        if (entry.kind != platform::SftpEntry::Kind::File
            && entry.kind != platform::SftpEntry::Kind::Folder)
            continue;
        if (!FtpTransfer::IsSafeLocalName(entry.name)) {
            Refuse(entry.name, "a local file cannot have that name");
            continue;
        }
        Item item{RemoteJoin(parent.from, entry.name), platform::JoinPath(parent.to, entry.name)};
        item.folder = entry.kind == platform::SftpEntry::Kind::Folder;
        item.size = item.folder ? 0 : entry.size;
        item.accessed = entry.accessed;
        item.modified = entry.modified;
        item.mode = entry.mode;
        if (item.folder)
            AddRemoteFolder(std::move(item), depth + 1, items);
        else
            items->push_back(std::move(item));
    }
}

std::vector<SftpTransfer::Item> SftpTransfer::LocalItems()
{
    std::vector<Item> items;
    entry_ref ref;
    for (int32_t i = 0; fRequest.FindRef("refs", i, &ref) == B_OK && !Ended(); i++)
        AddLocal(ref.path, RemoteJoin(fRemoteFolder, platform::LeafName(ref.path)), &items);
    return items;
}

void SftpTransfer::AddLocal(const std::string &path, const std::string &to, std::vector<Item> *items)
{
    const std::string name = platform::LeafName(path);
    const platform::ScannedEntry entry = platform::ScanEntry(path, name);
    Item item{path, to};
    struct stat info = entry.info;
    // A link to a file sends the file, with its facts.
    if (IsUploadableFile(entry) && S_ISLNK(info.st_mode) && stat(path.c_str(), &info) != 0) {
        Refuse(name, "it cannot be read");
        return;
    }
    item.accessed = info.st_atime;
    item.modified = info.st_mtime;
    item.mode = info.st_mode & kPermissionBits;
    if (IsUploadableFile(entry)) {
        item.size = uint64_t(info.st_size);
        items->push_back(std::move(item));
        return;
    }
    if (!IsRealFolder(entry)) {
        Refuse(name, "it is neither a file nor a folder");
        return;
    }
    platform::FolderScan scan(path);
    if (scan.InitCheck() != B_OK || scan.ReadNames() < 0) {
        Refuse(name, "the folder cannot be read");
        return;
    }
    item.folder = true;
    items->push_back(std::move(item));
    for (const std::string &each : scan.Names())
        AddLocal(platform::JoinPath(path, each), RemoteJoin(to, each), items);
}

void SftpTransfer::MoveAll(const std::vector<Item> &items)
{
    uint64_t total = 0;
    for (const Item &item : items)
        total += item.size;
    // The overall bar counts in 32 bits, as it does for a local copy.
    const auto shown = int32_t(uint32_t(total));
    type_code type = 0;
    int32_t count = 0, folders = 0;
    if (fRequest.GetInfo(fDownload ? "FtpFile" : "refs", &type, &count) != B_OK)
        count = 0;
    if (!fDownload || fRequest.GetInfo("FtpDir", &type, &folders) != B_OK)
        folders = 0;
    fControl.BatchStarted(shown,
                          std::to_string(count + folders) + " Files or Directories",
                          std::to_string(total / 1024) + " K");
    // A folder that could not be made takes its contents with it.
    std::string skipped;
    std::vector<const Item *> made;
    for (const Item &item : items) {
        if (Ended())
            break;
        if (!skipped.empty() && item.to.starts_with(skipped))
            continue;
        if (!item.folder) {
            if (!MoveFile(item))
                break;
        } else if (MakeFolder(item)) {
            made.push_back(&item);
        } else {
            skipped = item.to + "/";
        }
    }
    // Deepest first: each folder's time is set once nothing changes it.
    for (auto folder = made.rbegin(); folder != made.rend() && !Ended(); ++folder)
        KeepFolderFacts(**folder);
}

bool SftpTransfer::MakeFolder(const Item &item)
{
    const std::string name = platform::LeafName(item.to);
    if (fDownload) {
        const status_t status = platform::Directory(platform::ParentPath(item.to))
                                    .CreateDirectory(name);
        // Only a real folder takes the files in: a link there could lead
        // them anywhere.
        if (status == B_OK
            || (status == B_FILE_EXISTS && IsRealFolder(platform::ScanEntry(item.to, name))))
            return true;
        if (status == B_FILE_EXISTS)
            Refuse(name, "something that is not a folder has its name here");
        else
            KestrinEntry::ShowError(status, &fControl);
        return false;
    }
    // Writable by its owner until its contents are in; its own bits come last.
    if (Channel().MakeFolder(item.to, 0700) == B_OK) {
        fNewFolders.insert(item.to);
        return true;
    }
    // Why the server refused the folder; the look that follows would say
    // only that there is none.
    const std::string refusal = Channel().Error();
    platform::SftpEntry entry;
    if (Channel().Stat(item.to, &entry) == B_OK && entry.kind == platform::SftpEntry::Kind::Folder)
        return true;
    Refuse(name, refusal);
    return false;
}

void SftpTransfer::KeepFolderFacts(const Item &item)
{
    if (fDownload) {
        platform::SetPermissions(item.to, item.mode & kPermissionBits);
        platform::Entry(item.to).SetTimes({item.accessed, 0}, {item.modified, 0});
    } else {
        Channel().SetMode(item.to, item.mode & kPermissionBits);
        Channel().SetTimes(item.to, item.accessed, item.modified);
    }
}

bool SftpTransfer::MayReplace(const Item &item)
{
    bool replace = true;
    if (fDownload) {
        if (platform::Entry(item.to).Exists())
            replace = fOverwrite.ReplaceWith(item.from, double(item.size), item.modified, item.to);
    } else if (fNewFolders.contains(RemoteParent(item.to))) {
        // Nothing is in a folder this request made but what it sent.
        return true;
    } else if (platform::SftpEntry target; Channel().Stat(item.to, &target) == B_OK) {
        replace = fOverwrite.ReplaceRemote(item.from,
                                           double(item.size),
                                           item.modified,
                                           item.to,
                                           double(target.size),
                                           target.modified);
    } else {
        return true;
    }
    fControl.SetProgressVisible(true);
    return replace;
}

bool SftpTransfer::MoveFile(const Item &item)
{
    fFileName = platform::LeafName(item.to);
    fShown = 0;
    if (!MayReplace(item))
        return !fOverwrite.Cancelled();
    fControl.FileStarted(item.from, item.to, double(item.size));
    const std::string partial = PartialPath(fDownload ? platform::ParentPath(item.to)
                                                      : RemoteParent(item.to));
    status_t status = Carry(item, partial, 0);
    for (int attempt = 0; status == B_IO_ERROR && attempt < kResumeAttempts && Reconnected();
         attempt++)
        status = Carry(item, partial, Arrived(partial));
    if (status == B_OK && !Ended())
        status = Finish(item, partial);
    if (status == B_OK && !Ended()) {
        if (item.size > fShown)
            fControl.ChunkCopied(int64_t(item.size - fShown), fFileName, int64_t(item.size));
        return true;
    }
    std::string why = fClient->LoggedIn() ? Channel().Error()
                                          : "the connection to the server was lost";
    // The partial file is the transfer's own: the user knows only the target.
    if (const size_t at = why.find(partial); at != std::string::npos)
        why.replace(at, partial.size(), item.to);
    RemovePartial(partial);
    if (status == B_IO_ERROR)
        fAborted = true;
    if (!Ended() || fAborted)
        Refuse(fFileName, why);
    return !Ended();
}

status_t SftpTransfer::Carry(const Item &item, const std::string &partial, uint64_t offset)
{
    const auto progress = [this](uint64_t done) { return Progress(done); };
    if (fDownload)
        return Channel().Download(item.from, partial, offset, progress);
    return Channel().Upload(item.from, partial, offset, 0600, progress);
}

uint64_t SftpTransfer::Arrived(const std::string &partial)
{
    if (fDownload) {
        off_t size = 0;
        return platform::Entry(partial).GetSize(&size) == B_OK ? uint64_t(size) : 0;
    }
    platform::SftpEntry entry;
    return Channel().Stat(partial, &entry) == B_OK ? entry.size : 0;
}

status_t SftpTransfer::Finish(const Item &item, const std::string &partial)
{
    const mode_t mode = item.mode & kPermissionBits;
    if (fDownload) {
        platform::Entry received(partial);
        platform::SetPermissions(partial, mode);
        received.SetTimes({item.accessed, 0}, {item.modified, 0});
        // Renaming replaces whatever had the name, a link included, and
        // never writes through it.
        const status_t status = received.MoveTo(platform::ParentPath(item.to),
                                                fFileName.c_str(),
                                                true);
        if (status != B_OK)
            KestrinEntry::ShowError(status, &fControl);
        return status;
    }
    platform::SftpChannel &channel = Channel();
    if (channel.SetMode(partial, mode) != B_OK
        || channel.SetTimes(partial, item.accessed, item.modified) != B_OK)
        return B_ERROR;
    // A server without the rename that replaces gives the name up first.
    if (channel.Rename(partial, item.to) == B_OK)
        return B_OK;
    return channel.RemoveFile(item.to) == B_OK ? channel.Rename(partial, item.to) : B_ERROR;
}

void SftpTransfer::RemovePartial(const std::string &partial)
{
    if (fDownload) {
        platform::Entry(partial).Remove();
        return;
    }
    // What a lost connection left on the server goes over a new one. Its
    // sockets are the worker's, so a stop cuts it short as well.
    if (fClient->LoggedIn() && Channel().RemoveFile(partial) != B_IO_ERROR)
        return;
    if (!Interrupted() && fClient->Login().empty())
        Channel().RemoveFile(partial);
}

std::string SftpTransfer::PartialPath(const std::string &folder)
{
    for (unsigned n = 0;; n++) {
        const std::string name = ".kestrin-part-" + std::to_string(n);
        if (fDownload) {
            std::string path = platform::JoinPath(folder, name);
            if (!platform::Entry(path).Exists())
                return path;
            continue;
        }
        platform::SftpEntry entry;
        std::string path = RemoteJoin(folder, name);
        // Each file takes its name before the next is sent.
        if (fNewFolders.contains(folder) || Channel().Stat(path, &entry) == B_ENTRY_NOT_FOUND)
            return path;
        if (n > 1000)
            return path;
    }
}

bool SftpTransfer::Progress(uint64_t done)
{
    if (done > fShown) {
        fControl.ChunkCopied(int64_t(done - fShown), fFileName, int64_t(done));
        fShown = done;
    }
    return !Ended();
}

void SftpTransfer::Refuse(const std::string &name, const std::string &why)
{
    if (Interrupted())
        return;
    CopyControl::ReportError(&fControl,
                             {fDownload ? "Download" : "Upload",
                              "Kestrin did not " + std::string(fDownload ? "download" : "upload")
                                  + " \"" + name + "\": " + why,
                              {"OK"},
                              B_WARNING_ALERT});
}

bool SftpTransfer::Interrupted()
{
    if (fInterrupt.Triggered())
        fStopped = true;
    return fInterrupt.Triggered();
}

bool SftpTransfer::Ended()
{
    if (!fStopped && !fAborted && fControl.StopRequested())
        fStopped = true;
    return fStopped || fAborted || Interrupted();
}

} // namespace kestrin
