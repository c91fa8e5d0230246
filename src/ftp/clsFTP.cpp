#include "ftp/clsFTP.h"

#include "app/NumberText.h"
#include "ftp/FtpWireText.h"
#include "platform/File.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <vector>

namespace kestrin {

using platform::SocketAddress;
using platform::TcpSocket;

namespace {

// A name that would leave the target folder or name the folder itself.
bool UnsafeLocalName(const char *name)
{
    return name == nullptr || name[0] == '\0' || strchr(name, '/') != nullptr
           || strcmp(name, ".") == 0 || strcmp(name, "..") == 0;
}

} // namespace

clsFTP::clsFTP(const char *host,
               unsigned port,
               const char *proxyHost,
               unsigned proxyPort,
               unsigned timeoutMs,
               FtpCallback callback,
               void *callbackData)
    : clsFTP(timeoutMs, callback, callbackData)
{
    SetHost(host, port, proxyHost, proxyPort);
}

clsFTP::clsFTP(unsigned timeoutMs, FtpCallback callback, void *callbackData)
    : fCallback(callback)
    , fCallbackData(callbackData)
{
    SetTimeout(timeoutMs);
}

clsFTP::~clsFTP() = default;

void clsFTP::SetHost(const char *host, unsigned port, const char *proxyHost, unsigned proxyPort)
{
    fHost = host != nullptr ? host : "";
    fPort = port;
    fUseProxy = proxyHost != nullptr;
    if (fUseProxy) {
        fProxyHost = proxyHost;
        fProxyPort = proxyPort;
    }
}

void clsFTP::SetTimeout(unsigned ms)
{
    fTimeoutSeconds = long(ms / 1000);
    fTimeoutMicroseconds = long(ms % 1000);
    fReplies.SetTimeout(fTimeoutSeconds, fTimeoutMicroseconds);
}

int clsFTP::Report(int code, const char *text)
{
    if (fCallback == nullptr)
        return 0;
    return fCallback(code, 0, text, fCallbackData);
}

int clsFTP::ReportFormatted(int code, const char *format, ...)
{
    if (fCallback == nullptr)
        return 0;
    char text[kReplySize + 64];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return Report(code, text);
}

int clsFTP::ReportProgress(int64_t done, int64_t expected)
{
    if (fCallback == nullptr)
        return 1;
    // A server may send more than it announced; the percentage stays in range.
    double percent = expected > 0 ? double(done) / double(expected) * 100.0 : 0.0;
    if (percent > 100.0)
        percent = 100.0;
    const int count = done > INT32_MAX ? INT32_MAX : int(done);
    return fCallback(int(percent), count, fReply, fCallbackData);
}

// Making a connection is not waiting for a reply: the time-out's odd
// arithmetic can make that a millisecond, too short for a busy host.
int clsFTP::ConnectTimeoutMs() const
{
    const long ms = fTimeoutSeconds * 1000 + (fTimeoutMicroseconds + 999) / 1000;
    return int(std::max(ms, 5000L));
}

bool clsFTP::TimeoutIfNotReady(TcpSocket &socket, bool forReading)
{
    return socket.WaitReady(forReading, fTimeoutSeconds, fTimeoutMicroseconds) == B_OK;
}

int clsFTP::FTPWriteString(TcpSocket &socket, const char *text)
{
    int result = 0;
    if (TimeoutIfNotReady(socket, false))
        result = socket.SendAll(text, strlen(text)) == B_OK ? int(strlen(text)) : -1;
    if (fCallback != nullptr) {
        const bool password = strncmp(text, "PASS", 4) == 0;
        return fCallback(-1, 0, password ? "PASS ******\r\n" : text, fCallbackData);
    }
    return result;
}

int clsFTP::FTPReadString(TcpSocket &socket, char *buffer, size_t size)
{
    const int code = fReplies.Read(socket, buffer, size);
    if (fCallback != nullptr && buffer != nullptr && size != 0)
        fCallback(-1, 0, buffer, fCallbackData);
    return code;
}

void clsFTP::Lost(Loss how)
{
    fReplies.NoteLoss(how);
}

int clsFTP::ReadReply()
{
    fLastCode = FTPReadString(fControl, fReply, sizeof fReply);
    // The server is closing the connection (an idle session's end among
    // the reasons): nothing more will come over it.
    if (fLastCode == 421)
        Lost(Loss::Dropped);
    return fLastCode;
}

int clsFTP::Command(const std::string &text)
{
    FTPWriteString(fControl, text.c_str());
    return ReadReply();
}

int clsFTP::Connect(const char *user, const char *password, const char *account)
{
    fTransferType = 0;
    fPassiveRefused = false;
    fReplies.Reset();
    fFeatures = {};
    const std::string &target = fUseProxy ? fProxyHost : fHost;
    const unsigned targetPort = fUseProxy ? fProxyPort : fPort;

    uint32_t address = 0;
    if (platform::ResolveHost(target, &address) != B_OK) {
        Report(-1, "Error initailizing local host.");
        return 4;
    }
    if (fControl.Open() != B_OK) {
        Report(-1, "Error initializing control socket.");
        return 5;
    }
    if (fControl.Connect(SocketAddress{address, uint16_t(targetPort)}, ConnectTimeoutMs()) != B_OK) {
        fControl.Close();
        Report(-1, "Unable to connect to host");
        return 6;
    }
    fControl.SetTimeouts(fTimeoutSeconds, fTimeoutMicroseconds);

    int code = ReadReply();
    for (int retry = 0; code == 120 && retry < 3; retry++)
        code = ReadReply();
    if (code != 220) {
        code = 421;
    } else if (const int secured = Secure(); secured != 0) {
        code = secured;
    } else {
        if (user != nullptr)
            code = SendUser(user);
        if (code == 331 && password != nullptr)
            code = SendPass(password);
        if (code == 332 && account != nullptr)
            code = SendAcct(account);
    }
    if (code != 0 && code != 220 && code != 331 && code != 332) {
        ReportFormatted(-1, "Exception: %d - Error connecting to server.", code);
        fControl.Close();
    }
    return code;
}

int clsFTP::Secure()
{
    return fTls.Negotiate(
        fControl,
        fUseProxy ? fProxyHost : fHost,
        [this](const std::string &command) { return Command(command); },
        [this](const std::string &line) { Report(-1, line.c_str()); });
}

int clsFTP::SendUser(const char *user)
{
    std::string line = std::string("USER ") + user;
    if (fUseProxy)
        line += "@" + fHost + ":" + std::to_string(fPort);
    const int code = Command(line + "\r\n");
    return code == 230 || code == 202 ? 0 : code;
}

int clsFTP::SendPass(const char *password)
{
    const int code = Command(std::string("PASS ") + password + "\r\n");
    return code == 230 || code == 202 ? 0 : code;
}

int clsFTP::SendAcct(const char *account)
{
    const int code = Command(std::string("ACCT ") + account + "\r\n");
    return code == 230 || code == 202 ? 0 : code;
}

int clsFTP::Disconnect()
{
    if (!fControl.IsOpen())
        return 0;
    const int code = Command("QUIT\r\n");
    fControl.Close();
    fReplies.DropPending();
    return code == 221 ? 221 : 0;
}

void clsFTP::Leave()
{
    if (!fControl.IsOpen())
        return;
    FTPWriteString(fControl, "QUIT\r\n");
    fControl.Close();
    fReplies.DropPending();
}

int clsFTP::ChangeDir(const char *path)
{
    if (path == nullptr || path[0] == '\0')
        return 0;
    const int code = strcmp(path, "..") == 0 ? Command("CDUP\r\n")
                                             : Command(std::string("CWD ") + path + "\r\n");
    return code == 257 ? 0 : code;
}

int clsFTP::PrintDir(std::string *path)
{
    const int previous = fLastCode;
    FTPWriteString(fControl, "PWD\r\n");
    // Only a 257 names a folder: the text of a refusal, or the "TIMEOUT" of
    // a connection that is gone, cut after `257 "`, would pass for a path.
    std::string folder;
    if (FTPReadString(fControl, fReply, sizeof fReply) == 257 && strlen(fReply) > 5) {
        folder = fReply + 5;
        const size_t quote = folder.rfind('"');
        if (quote != std::string::npos)
            folder.resize(quote);
    }
    if (path != nullptr)
        *path = folder;
    return previous == 250 || previous == 257 ? 0 : previous;
}

int clsFTP::MakeDir(const char *path)
{
    const int code = Command(std::string("MKD ") + path + "\r\n");
    return code == 257 ? 0 : code;
}

int clsFTP::RemoveDir(const char *path)
{
    const int code = Command(std::string("RMD ") + path + "\r\n");
    return code == 250 ? 0 : code;
}

int clsFTP::DeleteFile(const char *name)
{
    const int code = Command(std::string("DELE ") + name + "\r\n");
    return code == 250 ? 0 : code;
}

int clsFTP::SetType(bool binary)
{
    const int wanted = binary ? 2 : 1;
    if (fTransferType == wanted)
        return 0;
    const int code = Command(binary ? "TYPE I\r\n" : "TYPE A\r\n");
    if (code != 200)
        return code;
    fTransferType = wanted;
    return 0;
}

int clsFTP::FileSize(const char *name, int64_t *size)
{
    // Servers tell a size in binary mode only: in text mode it would depend
    // on the line ends.
    if (const int code = SetType(true); code != 0)
        return code;
    const int code = Command(std::string("SIZE ") + name + "\r\n");
    if (code != 213)
        return code;
    *size = FtpWireText::SizeReply(fReply);
    return 0;
}

int clsFTP::ModificationTime(const char *name, timespec *time)
{
    const int code = Command(std::string("MDTM ") + name + "\r\n");
    if (code != 213)
        return code;
    const std::optional<timespec> told = FtpWireText::ModificationTimeReply(fReply);
    if (!told)
        return code;
    *time = *told;
    return 0;
}

int clsFTP::SetModificationTime(const char *name, time_t time)
{
    const int code = Command("MFMT " + FtpWireText::TimeText(time) + " " + std::string(name)
                             + "\r\n");
    return code == 213 ? 0 : code;
}

int clsFTP::NegotiateFeatures()
{
    fFeatures = {};
    const int code = Command("FEAT\r\n");
    if (code != 211)
        return code;
    fFeatures = FtpWireText::ParseFeatures(fReplies.Lines());
    // Without it some servers send names in a code page of their own. The
    // answer does not matter: a server that lists UTF8 and refuses the
    // option (pyftpdlib) speaks UTF-8 anyway.
    if (fFeatures.utf8)
        Command("OPTS UTF8 ON\r\n");
    const std::string facts = FtpWireText::MachineFactsCommand(fFeatures);
    if (fFeatures.machineListings && !facts.empty())
        Command(facts);
    return 0;
}

int clsFTP::Noop()
{
    return Command("NOOP\r\n") == 200 ? 0 : fLastCode;
}

int clsFTP::RenameFile(const char *from, const char *to)
{
    int code = Command(std::string("RNFR ") + from + "\r\n");
    if (code != 350)
        return code;
    code = Command(std::string("RNTO ") + to + "\r\n");
    return code == 250 ? 0 : code;
}

bool clsFTP::IsConnected() const
{
    SocketAddress peer;
    return fControl.IsOpen() && fControl.PeerAddress(&peer) == B_OK;
}

void clsFTP::DisposeBuffer(char **buffer)
{
    if (buffer != nullptr && *buffer != nullptr) {
        free(*buffer);
        *buffer = nullptr;
    }
}

int clsFTP::FTPInitDataConnection(TcpSocket *listener, SocketAddress *address, bool)
{
    if (listener->Open() != B_OK) {
        Report(-1, "Error initializing data connection.");
        return -1;
    }
    // Listen where the control connection is: that address reaches us from
    // the server, a look-up of the host name may not.
    SocketAddress control;
    if (fControl.LocalAddress(&control) != B_OK)
        control.host = 0;
    status_t bound = listener->BindEphemeral(control.host);
    if (bound != B_OK) {
        Report(bound, "Unable to bind port 20, attempting different port.");
        listener->Open();
        if (listener->BindEphemeral(0) != B_OK) {
            Report(-1, "Error binding data connection.");
            listener->Close();
            return -1;
        }
    }
    SocketAddress local;
    const status_t named = listener->LocalAddress(&local);
    if (named != B_OK) {
        Report(named, "Error getting port number for data connection.");
        listener->Close();
        return -1;
    }
    const status_t listening = listener->Listen(5);
    if (listening != B_OK) {
        Report(listening, "Error listening on data connection.");
        listener->Close();
        return -1;
    }
    if (local.host == 0)
        local.host = control.host;
    if (local.host == 0) {
        Report(-1, "Error getting host IP for data connection.");
        listener->Close();
        return -1;
    }
    *address = local;
    return 0;
}

int clsFTP::FTPSendPort(TcpSocket &control, const SocketAddress &address)
{
    FTPWriteString(control, FtpWireText::PortCommand(address).c_str());
    fLastCode = FTPReadString(control, fReply, sizeof fReply);
    return fLastCode == 200 ? 0 : fLastCode;
}

int clsFTP::FTPSendPASV(TcpSocket &control, PassiveAddress *address)
{
    FTPWriteString(control, "PASV\r\n");
    fLastCode = FTPReadString(control, fReply, sizeof fReply);
    if (fLastCode != 227) {
        if (fLastCode >= 500 && fLastCode < 600)
            fPassiveRefused = true;
        return fLastCode;
    }
    // A 227 the client cannot read leaves no data connection to make.
    return FtpWireText::ParsePassiveReply(fReply, address) ? 0 : 6;
}

int clsFTP::Fail(int code, const char *what, FtpDataChannel *channel)
{
    // A data connection that did not come, or stalled, leaves the
    // transfer's last reply unread: it would answer the next command.
    if (code == kNoReply)
        Lost(Loss::Silent);
    ReportFormatted(-1, "Exception: %d - Error %s.", code, what);
    channel->Close();
    return code;
}

int clsFTP::OpenTransfer(const std::string &command,
                         bool binary,
                         bool passive,
                         FtpDataChannel *channel,
                         const char *what,
                         int64_t restart)
{
    fCancelled = false;
    fLocalStatus = B_OK;
    const int code = ConnectData(command, binary, passive, channel, restart);
    // A data socket that could not be made is reported on its own.
    if (code != 0 && code != 5)
        return Fail(code, what, channel);
    return code;
}

int clsFTP::Restart(int64_t offset)
{
    if (offset <= 0)
        return 0;
    const int code = Command("REST " + std::to_string(offset) + "\r\n");
    return code == 350 ? 0 : code;
}

int clsFTP::ConnectData(
    const std::string &command, bool binary, bool passive, FtpDataChannel *channel, int64_t restart)
{
    if (!passive) {
        SocketAddress announced;
        if (FTPInitDataConnection(&channel->listener, &announced, false) != 0)
            return 1;
        if (FTPSendPort(fControl, announced) != 0)
            return 1;
    }
    if (const int code = SetType(binary); code != 0)
        return code;
    if (passive) {
        PassiveAddress offered;
        const int code = FTPSendPASV(fControl, &offered);
        fLastCode = code;
        if (code != 0)
            return code;
        if (channel->data.Open() != B_OK) {
            Report(-1, "Error initializing data socket.");
            return 5;
        }
        // The port from the reply, on the host we already talk to: a server
        // cannot send our data connection to a third host.
        SocketAddress target;
        fControl.PeerAddress(&target);
        target.port = uint16_t(offered.port);
        if (channel->data.Connect(target, ConnectTimeoutMs()) != B_OK) {
            channel->data.Close();
            Report(-1, "Unable to connect to host");
            return 6;
        }
        if (const int refused = Restart(restart); refused != 0)
            return refused;
        const int code2 = Command(command);
        if (code2 != 125 && code2 != 150)
            return code2;
    } else {
        if (const int refused = Restart(restart); refused != 0)
            return refused;
        const int code = Command(command);
        if (code != 125 && code != 150)
            return code;
        if (!TimeoutIfNotReady(channel->listener, true))
            return kNoReply;
        if (channel->listener.Accept(&channel->data) != B_OK)
            return kNoReply;
        channel->listener.Close();
    }
    channel->data.SetTimeouts(fTimeoutSeconds, fTimeoutMicroseconds);
    return SecureData(channel);
}

int clsFTP::SecureData(FtpDataChannel *channel)
{
    std::string why;
    if (fTls.SecureData(channel->data, &why) == B_OK)
        return 0;
    ReportFormatted(-1, "TLS failed on the data connection: %s.", why.c_str());
    channel->data.Close();
    // The server tells on the control connection why (vsftpd: 522), and
    // that answer must not be left for the next command.
    ReadReply();
    return FtpTls::kFailed;
}

int clsFTP::FinishTransfer(FtpDataChannel *channel)
{
    channel->data.ShutdownSend();
    channel->data.Close();
    const int code = ReadReply();
    return code == 226 || code == 250 ? 0 : code;
}

int clsFTP::StartUpload(
    const char *command, const char *remoteName, bool binary, bool passive, FtpDataChannel *channel)
{
    return OpenTransfer(std::string(command) + " " + remoteName + "\r\n",
                        binary,
                        passive,
                        channel,
                        "uploading file");
}

int clsFTP::EndUpload(FtpDataChannel *channel)
{
    channel->FinishSending();
    const int code = FinishTransfer(channel);
    return code != 0 ? Fail(code, "uploading file", channel) : 0;
}

int clsFTP::Upload(const char *localPath, const char *remoteName, bool binary, bool passive, bool)
{
    return ResumeUpload(localPath, remoteName, 0, binary, passive);
}

int clsFTP::ResumeUpload(
    const char *localPath, const char *remoteName, int64_t offset, bool binary, bool passive)
{
    FtpDataChannel channel;
    const char *command = offset > 0 ? "APPE" : "STOR";
    if (const int code = StartUpload(command, remoteName, binary, passive, &channel); code != 0)
        return code;

    platform::File file(localPath, B_READ_ONLY);
    if (file.InitCheck() != B_OK) {
        channel.data.ShutdownSend();
        ReadReply();
        channel.data.Close();
        Report(-1, "Error opening local file.");
        return Fail(7, "uploading file", &channel);
    }
    const int64_t expected = std::max<off_t>(file.Seek(0, SEEK_END), 0);
    file.Seek(std::min(offset, expected), SEEK_SET);
    int64_t sent = std::min(offset, expected);
    ReportFormatted(-1, "Sending %lld bytes to server.", static_cast<long long>(expected - sent));
    // A 0 from the callback skips the rest of a block only; uploads are not
    // stopped that way.
    const auto progress = [&](int64_t done) { return ReportProgress(done, expected); };
    // Blocks of 64 KiB, as curl sends: against vsftpd on loopback, blocks
    // of a megabyte, and sendfile, were a little slower.
    const std::unique_ptr<char[]> block(new char[FtpDataChannel::kSendSize]);
    while (!fCancelled) {
        const ssize_t read = file.Read(block.get(), FtpDataChannel::kSendSize);
        // After a failed send the rest of the file could only fail too.
        if (read <= 0 || !channel.SendBlock(block.get(), size_t(read), &sent, progress))
            break;
    }
    return EndUpload(&channel);
}

int clsFTP::UploadBuffer(
    const char *buffer, int size, const char *remoteName, bool binary, bool passive, bool)
{
    FtpDataChannel channel;
    if (const int code = StartUpload("STOR", remoteName, binary, passive, &channel); code != 0)
        return code;
    ReportFormatted(-1, "Sending %d bytes to server.", size);
    // A 0 from the callback ends a piece; the next starts at the first byte
    // not yet sent, so the whole buffer goes out all the same.
    const int64_t total = size < 0 ? 0 : size;
    const auto progress = [&](int64_t done) { return ReportProgress(done, total); };
    int64_t sent = 0;
    while (sent < total) {
        const size_t piece = size_t(std::min<int64_t>(int64_t(kBlockSize), total - sent));
        if (!channel.SendBlock(buffer + sent, piece, &sent, progress))
            break;
    }
    return EndUpload(&channel);
}

int clsFTP::StartDownload(const char *remoteName,
                          bool binary,
                          bool passive,
                          FtpDataChannel *channel,
                          int64_t *expected,
                          int64_t offset)
{
    const int code = OpenTransfer(std::string("RETR ") + remoteName + "\r\n",
                                  binary,
                                  passive,
                                  channel,
                                  "downloading file",
                                  offset);
    // After REST, servers differ in whether they announce the whole file or
    // what is left of it: the hint, the whole file's size, goes first then.
    *expected = code == 0 && fCallback != nullptr ? FtpWireText::ExpectedSize(fReply) : 0;
    if ((*expected == 0 || (offset > 0 && fExpectedHint > 0)) && code == 0 && fCallback != nullptr)
        *expected = fExpectedHint;
    fExpectedHint = 0;
    return code;
}

int clsFTP::EndDownload(FtpDataChannel *channel, int64_t total, const char *what, int failure)
{
    ReportFormatted(-1, "Read %lld bytes from server.", static_cast<long long>(total));
    int code = FinishTransfer(channel);
    if (failure != 0)
        code = failure;
    return code != 0 ? Fail(code, what, channel) : 0;
}

int clsFTP::Download(const char *remoteName,
                     const char *localDir,
                     const char *localName,
                     bool binary,
                     bool passive,
                     bool)
{
    return ResumeDownload(remoteName, localDir, localName, 0, binary, passive);
}

status_t clsFTP::OpenLocalFile(const std::string &path, int64_t offset, platform::File *file)
{
    if (offset <= 0)
        return file->SetTo(path, B_WRITE_ONLY | B_CREATE_FILE | B_ERASE_FILE);
    status_t status = file->SetTo(path, B_WRITE_ONLY);
    if (status == B_OK)
        status = file->SetSize(offset);
    if (status == B_OK && file->Seek(offset, SEEK_SET) != offset)
        status = B_IO_ERROR;
    return status;
}

void clsFTP::AbortDownload(FtpDataChannel *channel)
{
    channel->data.ShutdownSend();
    FTPWriteString(fControl, "ABOR\r\n");
    char drain[kBlockSize];
    if (channel->data.WaitReady(true, 0, 0) == B_OK)
        channel->data.Receive(drain, sizeof drain);
    channel->data.Close();
    // Two answers come: the transfer's end (426, or 226 when it had
    // finished) and then the ABOR's own; leaving one unread would put
    // every later command one reply behind.
    ReadReply();
    if (fLastCode == 426 || fLastCode == 226 || fLastCode == 250 || fLastCode == 451)
        ReadReply();
}

int clsFTP::ResumeDownload(const char *remoteName,
                           const char *localDir,
                           const char *localName,
                           int64_t offset,
                           bool binary,
                           bool passive)
{
    FtpDataChannel channel;
    int64_t expected = 0;
    if (const int code = StartDownload(remoteName, binary, passive, &channel, &expected, offset);
        code != 0)
        return code;

    std::string path = localDir != nullptr ? localDir : "";
    if (!path.empty() && path.back() == '/')
        path.pop_back();
    path += "/";
    path += localName != nullptr ? localName : "";
    platform::File file;
    if (UnsafeLocalName(localName) || OpenLocalFile(path, offset, &file) != B_OK) {
        AbortDownload(&channel);
        ReportFormatted(-1, "Error creating file: %s", path.c_str());
        Report(-1, "Error opening local file.");
        return Fail(7, "downloading file", &channel);
    }
    if (!TimeoutIfNotReady(channel.data, true))
        return Fail(kNoReply, "downloading file", &channel);
    int64_t total = 0;
    const auto progress = [&](int64_t done) { return ReportProgress(offset + done, expected); };
    fLocalStatus = channel.ReceiveToFile(file, &total, progress, fCancelled);
    file.Unset();
    return EndDownload(&channel, total, "downloading file", fLocalStatus != B_OK ? 7 : 0);
}

int clsFTP::DownloadBuffer(
    char **buffer, int *size, const char *remoteName, bool binary, bool passive, bool)
{
    *buffer = nullptr;
    *size = 0;
    FtpDataChannel channel;
    int64_t expected = 0;
    if (const int code = StartDownload(remoteName, binary, passive, &channel, &expected, 0);
        code != 0)
        return code;
    if (!TimeoutIfNotReady(channel.data, true))
        return Fail(kNoReply, "downloading file", &channel);
    int64_t total = 0;
    FtpDataChannel::Progress progress;
    if (expected != 0)
        progress = [&](int64_t done) { return ReportProgress(done, expected); };
    channel.ReceiveAll(buffer, &total, progress);
    *size = total > INT32_MAX ? INT32_MAX : int(total);
    return EndDownload(&channel, total, "downloading file");
}

int clsFTP::List(const char *path, char **listing, bool passive, bool)
{
    *listing = nullptr;
    FtpDataChannel channel;
    // MLSD tells exact sizes and times, and names as they are, blanks and
    // all, in a form that does not vary from server to server.
    std::string command = fFeatures.machineListings ? "MLSD" : "LIST";
    command += path != nullptr ? std::string(" ") + path + "\r\n" : std::string("\r\n");
    int code = OpenTransfer(command, false, passive, &channel, "retrieving list");
    if (code != 0)
        return code;
    if (!TimeoutIfNotReady(channel.data, true))
        return Fail(kNoReply, "retrieving list", &channel);
    int64_t total = 0;
    channel.ReceiveAll(listing, &total, nullptr);
    if (*listing != nullptr) {
        // The final line end goes; a listing cut short keeps its last byte.
        (*listing)[total] = '\0';
        if ((*listing)[total - 1] == '\n')
            (*listing)[total - 1] = '\0';
    }
    return EndDownload(&channel, total, "retrieving list");
}

} // namespace kestrin
