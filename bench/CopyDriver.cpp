// kestrin-copy-driver [--pack] SOURCE... DESTINATION
// kestrin-copy-driver --unpack ARCHIVE DESTINATION MEMBER...
// kestrin-copy-driver --download PORT FTPPATH DESTINATION NAME...
// kestrin-copy-driver --sftp-download PORT FOLDER DESTINATION NAME...
// kestrin-copy-driver --sftp-upload PORT FOLDER SOURCE...
// Copies with Kestrin's copy engine and no window: what the progress window
// would show is dropped, and an existing target is replaced. --pack packs the
// sources into a zip in DESTINATION as Ctrl+F5 does; --unpack unpacks the
// members at the top of ARCHIVE (a folder's name ends in "/") as F5 in an
// archive's pane does. --download fetches the NAMEs (a folder's name ends in
// "/") of the folder FTPPATH from the FTP server on 127.0.0.1:PORT, as an
// anonymous user, with the request F5 sends from an FTP pane.
// --sftp-download does the same from the remote FOLDER of the SSH server on
// 127.0.0.1:PORT, and --sftp-upload sends the SOURCEs into it, as $USER with
// the keys and known hosts of $HOME/.ssh.

#include "fileops/CopyControl.h"
#include "fileops/CopyEngine.h"
#include "fileops/FileOpsMessages.h"
#include "platform/Entry.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

class HeadlessControl : public kestrin::CopyControl
{
public:
    void BatchStarted(int32_t, const std::string &, const std::string &) override {}
    void FileStarted(const std::string &, const std::string &, double) override {}
    void ChunkCopied(int64_t, const std::string &, int64_t) override {}
    void TransferProgress(int32_t,
                          const std::string &,
                          const std::string &,
                          const std::string &) override
    {}
    void SetProgressVisible(bool) override {}
    bool StopRequested() override { return false; }
    int32_t AskOverwrite(const kestrin::OverwriteQuestion &) override
    {
        return kestrin::kOverwriteAll;
    }
    int32_t FileError(const platform::Alert &alert) override
    {
        fprintf(stderr, "alert: %s\n", alert.text.c_str());
        errors++;
        return 0;
    }
    void ArchiveProgress(int32_t, int32_t, const std::string &, const std::string &) override {}

    int errors = 0;
};

int Usage()
{
    fprintf(stderr,
            "usage: kestrin-copy-driver [--pack] SOURCE... DESTINATION\n"
            "       kestrin-copy-driver --unpack ARCHIVE DESTINATION MEMBER...\n"
            "       kestrin-copy-driver --download PORT FTPPATH DESTINATION NAME...\n"
            "       kestrin-copy-driver --sftp-download PORT FOLDER DESTINATION NAME...\n"
            "       kestrin-copy-driver --sftp-upload PORT FOLDER SOURCE...\n");
    return 2;
}

platform::Message UnpackRequest(const char *archive, const std::vector<std::string> &members)
{
    platform::Message request(kestrin::kMsgUnpackRequest);
    request.AddString("Archive", archive);
    request.AddString("CopyFrom", "");
    for (std::string member : members) {
        const bool folder = member.back() == '/';
        if (folder)
            member.pop_back();
        request.AddString(folder ? "ZipDir" : "ZipFile", member);
    }
    request.AddString("TypeOfCopy", "UnPack");
    return request;
}

// The server's fields of a request to the server on 127.0.0.1:PORT.
platform::Message ServerRequest(uint32_t what, const std::string &port, const std::string &ftpPath)
{
    const bool sftp = what != kestrin::kMsgFtpDownload;
    const char *user = getenv("USER");
    platform::Message request(what);
    request.AddString("Host", "127.0.0.1");
    request.AddString("User", sftp ? (user != nullptr ? user : "") : "anonymous");
    request.AddString("Password", sftp ? "" : "kestrin@localhost");
    request.AddString("FtpPath", ftpPath);
    request.AddInt32("Port", int32_t(std::stol(port)));
    return request;
}

platform::Message DownloadRequest(uint32_t what,
                                  const std::string &port,
                                  const std::string &ftpPath,
                                  const std::vector<std::string> &names)
{
    platform::Message request = ServerRequest(what, port, ftpPath);
    for (std::string name : names) {
        const bool folder = name.back() == '/';
        if (folder)
            name.pop_back();
        request.AddString(folder ? "FtpDir" : "FtpFile", name);
    }
    return request;
}

bool AddRefs(platform::Message *request, const std::vector<std::string> &sources)
{
    for (const std::string &source : sources) {
        entry_ref ref;
        if (platform::Entry(source).GetRef(&ref) != B_OK) {
            fprintf(stderr, "kestrin-copy-driver: can't read %s\n", source.c_str());
            return false;
        }
        request->AddRef("refs", ref);
    }
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    std::vector<std::string> args(argv + 1, argv + argc);
    const std::string mode = !args.empty() && args[0].rfind("--", 0) == 0 ? args[0] : "";
    if (!mode.empty())
        args.erase(args.begin());
    const bool download = mode == "--download" || mode == "--sftp-download";
    if (args.size() < 2
        || (mode != "" && mode != "--pack" && mode != "--unpack" && !download
            && mode != "--sftp-upload")
        || (download && args.size() < 4) || (mode == "--sftp-upload" && args.size() < 3))
        return Usage();

    platform::Message request;
    std::string destination;
    if (download) {
        destination = args[2];
        request = DownloadRequest(mode == "--download" ? kestrin::kMsgFtpDownload
                                                       : kestrin::kMsgSftpDownload,
                                  args[0],
                                  args[1],
                                  {args.begin() + 3, args.end()});
    } else if (mode == "--sftp-upload") {
        request = ServerRequest(kestrin::kMsgSftpUpload, args[0], args[1]);
        if (!AddRefs(&request, {args.begin() + 2, args.end()}))
            return 1;
    } else if (mode == "--unpack") {
        destination = args[1];
        request = UnpackRequest(args[0].c_str(), {args.begin() + 2, args.end()});
    } else {
        destination = args.back();
        args.pop_back();
        request = platform::Message(mode == "--pack" ? kestrin::kMsgPackRequest
                                                     : kestrin::kMsgCopyRequest);
        request.AddString("TypeOfCopy", mode == "--pack" ? "Pack" : "Copy");
        if (!AddRefs(&request, args))
            return 1;
    }
    HeadlessControl control;
    kestrin::CopyEngine(request, destination, control).Run();
    return control.errors == 0 ? 0 : 1;
}
