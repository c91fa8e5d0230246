#pragma once

#include "ftp/FtpDataChannel.h"
#include "ftp/FtpReplyReader.h"
#include "ftp/FtpTls.h"
#include "ftp/FtpWireText.h"
#include "platform/TcpSocket.h"

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

namespace kestrin {

// Reports a log line (code -1, count 0) or a transfer's progress (code the
// percentage, count the bytes moved so far). The answer matters only inside
// transfers: 0 asks a download to stop.
using FtpCallback = int (*)(int code, int count, const char *text, void *callbackData);

// A blocking FTP client: one control connection, each call sends its command,
// waits for the reply (bounded by the time-out) and answers 0 for success or a
// code: the server's reply code, or 1 (no active data connection or PORT
// refused), 2 (time-out), 4 (host unknown), 5 (no socket), 6 (no connection),
// 7 (local file not opened), 8 to 10 (TLS, see FtpTls), 421 (no 220
// greeting). One thread at a time.
class clsFTP
{
public:
    static constexpr size_t kReplySize = 1024;
    static constexpr size_t kBlockSize = 8192;
    // The code of a reply or data that did not come: the time-out passed or
    // the server went away.
    static constexpr int kNoReply = FtpReplyReader::kNoReply;

    // How the control connection was lost, if it was (see FtpReplyReader).
    using Loss = FtpReplyReader::Loss;

    using PassiveAddress = FtpWireText::PassiveAddress;

    clsFTP(const char *host,
           unsigned port,
           const char *proxyHost,
           unsigned proxyPort,
           unsigned timeoutMs,
           FtpCallback callback,
           void *callbackData);
    clsFTP(unsigned timeoutMs, FtpCallback callback, void *callbackData);
    ~clsFTP();

    clsFTP(const clsFTP &) = delete;
    clsFTP &operator=(const clsFTP &) = delete;

    // A null proxyHost means a direct connection.
    void SetHost(const char *host, unsigned port, const char *proxyHost, unsigned proxyPort);
    // Whole seconds, and the remaining milliseconds taken as microseconds:
    // 1500 waits 1 s and 500 us. Kept so, callers' time-outs were tuned to it.
    void SetTimeout(unsigned ms);
    long TimeoutSeconds() const { return fTimeoutSeconds; }
    long TimeoutMicroseconds() const { return fTimeoutMicroseconds; }

    // TLS for the logins from now on; none until told. `check` is asked
    // about a certificate the system does not vouch for.
    void UseTls(FtpTls::Choice choice, FtpTls::Check check = nullptr)
    {
        fTls.Use(choice, std::move(check));
    }
    // How the last login went as for TLS.
    const FtpTls &Tls() const { return fTls; }

    // 0 when logged in; 220 without a user; 331 or 332 when the server wants a
    // password or account that was not given. A failure closes the connection.
    int Connect(const char *user, const char *password, const char *account);
    int SendUser(const char *user);
    int SendPass(const char *password);
    int SendAcct(const char *account);
    // 221 for a clean QUIT, else 0.
    int Disconnect();
    // Says QUIT and closes at once, without waiting for the goodbye: after a
    // transfer's last reply it tells nothing, and vsftpd takes a fifth of a
    // second to say it, which a user would wait out at the end of every copy.
    void Leave();
    // Only 257 counts as success, so a plain 250 to CWD comes back as 250.
    int ChangeDir(const char *path);
    // *path gets the folder that a 257 reply names, else nothing; the result
    // is judged on the previous reply's code.
    int PrintDir(std::string *path);
    int MakeDir(const char *path);
    int RemoveDir(const char *path);
    int DeleteFile(const char *name);
    int RenameFile(const char *from, const char *to);
    // 0 with *size set to what SIZE answers (213), else the reply's code.
    int FileSize(const char *name, int64_t *size);
    // 0 with *time set to the modification time MDTM answers (213, UTC),
    // else the reply's code (213 too when it names no time).
    int ModificationTime(const char *name, timespec *time);
    // Sets a file's modification time on the server to `time` in whole
    // seconds (MFMT): 0 on 213, else the reply's code; a server without the
    // command answers 500 or 502.
    int SetModificationTime(const char *name, time_t time);
    // The byte count the next download's progress is measured against when
    // its reply names none (some servers never do). Used once.
    void ExpectSize(int64_t bytes) { fExpectedHint = bytes; }
    // Asks the server what it offers beyond RFC 959 (FEAT) and takes it up:
    // names in UTF-8 (OPTS UTF8 ON) and the facts a listing row is made of
    // (OPTS MLST). From then on, until the next Connect, List reads folders
    // with MLSD where the server has it. 0, or FEAT's reply code: a server
    // that does not know FEAT offers nothing more.
    int NegotiateFeatures();
    bool MachineListings() const { return fFeatures.machineListings; }
    // NOOP, to keep an idle connection: 0 when the server answered 200.
    int Noop();
    bool IsConnected() const;
    // Since the last Connect.
    Loss ControlLoss() const { return fReplies.LossSeen(); }

    int Upload(const char *localPath,
               const char *remoteName,
               bool binary,
               bool passive,
               bool unused = false);
    int UploadBuffer(const char *buffer,
                     int size,
                     const char *remoteName,
                     bool binary,
                     bool passive,
                     bool unused = false);
    // Writes to localDir "/" localName, a name the caller chose: a name with a
    // "/", or "." or "..", is refused like a file that cannot be created.
    int Download(const char *remoteName,
                 const char *localDir,
                 const char *localName,
                 bool binary,
                 bool passive,
                 bool unused = false);
    // Download and Upload that go on from `offset` bytes: REST and RETR into
    // the local file cut to `offset` (which must exist), and APPE of the
    // local file from `offset` on; from 0 they are Download and Upload. 0,
    // or the code of the first refusal (that of REST or APPE among them).
    int ResumeDownload(const char *remoteName,
                       const char *localDir,
                       const char *localName,
                       int64_t offset,
                       bool binary,
                       bool passive);
    int ResumeUpload(
        const char *localPath, const char *remoteName, int64_t offset, bool binary, bool passive);
    // *buffer gets a malloc'ed block (not terminated) of *size bytes, or null;
    // release it with DisposeBuffer.
    int DownloadBuffer(char **buffer,
                       int *size,
                       const char *remoteName,
                       bool binary,
                       bool passive,
                       bool unused = false);
    // *listing gets the raw listing as a malloc'ed text, null when the server
    // sent nothing; release it with DisposeBuffer. A null path lists the
    // current folder. LIST, or MLSD once NegotiateFeatures found MLST.
    int List(const char *path, char **listing, bool passive, bool unused = false);
    static void DisposeBuffer(char **buffer);

    // Ends the transfer in progress after its current block, in either
    // direction; for a progress callback that must stop an upload, which a 0
    // answer does not. Each transfer starts uncancelled.
    void CancelTransfer() { fCancelled = true; }
    // The server answered PASV with a refusal (a 5xx reply) on this
    // connection: its transfers can only be active.
    bool PassiveRefused() const { return fPassiveRefused; }
    // Why the local file of the last download could not be written (the
    // disk filled: B_DEVICE_FULL), B_OK when it could.
    status_t LocalStatus() const { return fLocalStatus; }

    // The text of the last reply read, its lines joined, or "TIMEOUT".
    const char *ReplyText() const { return fReply; }
    // The same, line by line (nothing after a time-out).
    const std::vector<std::string> &ReplyLines() const { return fReplies.Lines(); }
    int LastCode() const { return fLastCode; }

    // The protocol's pieces, open for the tests and the fuzzer.
    int FTPWriteString(platform::TcpSocket &socket, const char *text);
    // Reads one reply into buffer (cleared first) and answers its code; lines
    // that arrived behind the reply wait in this client's queue for the next.
    int FTPReadString(platform::TcpSocket &socket, char *buffer, size_t size);
    bool TimeoutIfNotReady(platform::TcpSocket &socket, bool forReading);
    // A listening socket for an active data connection; *address gets what
    // PORT announces: the control connection's local address and the port.
    int FTPInitDataConnection(platform::TcpSocket *listener,
                              platform::SocketAddress *address,
                              bool unused);
    int FTPSendPort(platform::TcpSocket &control, const platform::SocketAddress &address);
    int FTPSendPASV(platform::TcpSocket &control, PassiveAddress *address);
    size_t PendingLineCount() const { return fReplies.PendingCount(); }

private:
    int ConnectTimeoutMs() const;
    int Report(int code, const char *text);
    int ReportFormatted(int code, const char *format, ...) __attribute__((format(printf, 3, 4)));
    int ReportProgress(int64_t done, int64_t expected);
    // Sends a command and reads the reply into fReply/fLastCode.
    int Command(const std::string &text);
    int ReadReply();
    // TYPE I or TYPE A, sent only when the type changes: 0, or the reply's code.
    int SetType(bool binary);
    int Fail(int code, const char *what, FtpDataChannel *channel);
    // The first loss counts: a silent server that then closes was silent.
    void Lost(Loss how);

    // Steps 1 to 6 of every transfer: PORT or PASV, TYPE, the command and the
    // data connection. 0 with channel->data connected, else the code, with
    // the failure reported as "Exception: %d - Error <what>.".
    // A `restart` offset above 0 is announced with REST just before the
    // command.
    int OpenTransfer(const std::string &command,
                     bool binary,
                     bool passive,
                     FtpDataChannel *channel,
                     const char *what,
                     int64_t restart = 0);
    int ConnectData(const std::string &command,
                    bool binary,
                    bool passive,
                    FtpDataChannel *channel,
                    int64_t restart);
    // REST, when there is an offset: 0 on 350, else the reply's code.
    int Restart(int64_t offset);
    // TLS on the control connection after the greeting, as chosen: 0 to log
    // in, else the code that ends the login.
    int Secure();
    // TLS on a data connection the server protects: 0, or the code that
    // fails the transfer (its reply read).
    int SecureData(FtpDataChannel *channel);
    // Closes the data connection and reads the final reply: 0 on 226 or 250.
    int FinishTransfer(FtpDataChannel *channel);
    // A STOR (or APPE) up to its data connection, and after its last byte.
    int StartUpload(const char *command,
                    const char *remoteName,
                    bool binary,
                    bool passive,
                    FtpDataChannel *channel);
    int EndUpload(FtpDataChannel *channel);
    // A RETR up to its data connection, from `offset`; *expected gets the
    // byte count of the whole file, as its reply or the hint announced (0
    // without a callback to tell it to).
    int StartDownload(const char *remoteName,
                      bool binary,
                      bool passive,
                      FtpDataChannel *channel,
                      int64_t *expected,
                      int64_t offset);
    // The local file of a download: created (or emptied) for an offset of 0,
    // else the existing file cut to the offset, positioned there.
    status_t OpenLocalFile(const std::string &path, int64_t offset, platform::File *file);
    // Abandons a download whose local file cannot be written: ABOR, and
    // both of its answers read.
    void AbortDownload(FtpDataChannel *channel);
    // After the last byte of a download or listing: the count reported, then
    // as FinishTransfer; a `failure` of the data phase wins over the reply.
    int EndDownload(FtpDataChannel *channel, int64_t total, const char *what, int failure = 0);

    std::string fHost;
    std::string fProxyHost;
    char fReply[kReplySize] = {};
    int fLastCode = 0;
    int fTransferType = 0;
    unsigned fPort = 0;
    unsigned fProxyPort = 0;
    platform::TcpSocket fControl;
    FtpTls fTls;
    bool fUseProxy = false;
    FtpCallback fCallback = nullptr;
    void *fCallbackData = nullptr;
    long fTimeoutSeconds = 0;
    long fTimeoutMicroseconds = 0;
    bool fCancelled = false;
    bool fPassiveRefused = false;
    status_t fLocalStatus = B_OK;
    FtpReplyReader fReplies;
    FtpWireText::Features fFeatures;
    int64_t fExpectedHint = 0;
};

} // namespace kestrin
