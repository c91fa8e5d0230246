// Uploads and downloads through the copy engine against real servers on
// 127.0.0.1 (vsftpd, pyftpdlib), and a scripted server for what real ones
// never do: names that would leave the target folder, a refused PASV, a
// connection that drops in the middle of a file.

#include "CopyTestSupport.h"
#include "RealServers.h"
#include "ScriptedServer.h"
#include "ftp/FtpCertificateTrust.h"
#include "ftp/FtpSecurity.h"
#include "ftp/FtpSession.h"

#include <atomic>
#include <regex>
#include <sys/mount.h>

using namespace kestrin;

namespace {

platform::Message Download(unsigned port,
                           const std::string &ftpPath,
                           const std::vector<std::string> &files,
                           const std::vector<std::string> &folders = {})
{
    platform::Message request = FtpRequest(kMsgFtpDownload, port, ftpPath);
    for (const std::string &file : files)
        request.AddString("FtpFile", file);
    for (const std::string &folder : folders)
        request.AddString("FtpDir", folder);
    return request;
}

platform::Message Upload(unsigned port,
                         const std::string &ftpPath,
                         const std::vector<std::string> &paths)
{
    platform::Message request = FtpRequest(kMsgCopyRequest, port, ftpPath);
    for (const std::string &path : paths)
        request.AddRef("refs", RefFor(path));
    request.AddString("Session", "test.ftp");
    return request;
}

// Moments the servers are given and are to tell back, in UTC.
constexpr time_t kJan2Noon = 1577966400;    // 2020-01-02 12:00:00
constexpr time_t kJan2 = 1577923200;        // 2020-01-02 00:00:00
constexpr time_t kMar4 = 1551657600;        // 2019-03-04 00:00:00
constexpr time_t kMar4Morning = 1551694272; // 2019-03-04 10:11:12
constexpr time_t kMay6 = 1525590489;        // 2018-05-06 07:08:09

time_t Modified(const std::string &path)
{
    return TimesOf(path).modified.tv_sec;
}

using CopyEngineFtpScripted = CopyTest;

void Answer(ScriptedServer::Session &s, const char *reply)
{
    s.ReadLine();
    s.Send(reply);
}

// What comes over a data connection until the client closes it.
std::string ReceiveAll(platform::TcpSocket &data)
{
    std::string bytes;
    char buffer[256];
    for (ssize_t got; data.WaitReady(true, ScriptedServer::kWaitSeconds, 0) == B_OK
                      && (got = data.Receive(buffer, sizeof buffer)) > 0;)
        bytes.append(buffer, size_t(got));
    return bytes;
}

// Greets, takes any user and password, answers FEAT and the CWD to the
// request's folder.
void LogIn(ScriptedServer::Session &s)
{
    s.Send("220 hi\r\n");
    Answer(s, "331 pass\r\n"); // USER
    Answer(s, "230 in\r\n");   // PASS
    s.AnswerFeatures();
    Answer(s, "250 ok\r\n"); // CWD /x
}

class CopyEngineFtp : public CopyTest
{
protected:
    void SetUp() override
    {
        if (!server.Unavailable().empty())
            GTEST_SKIP() << server.Unavailable();
    }

    VsftpdServer server;
    const std::string upload = server.Root() + "/upload";
};

// pyftpdlib, for a user with a password and for MFMT, which vsftpd lacks.
class CopyEnginePyftpdlib : public CopyTest
{
protected:
    void SetUp() override
    {
        if (!server.Unavailable().empty())
            GTEST_SKIP() << server.Unavailable();
    }

    // The request as the server's one user makes it.
    static platform::Message LoggedIn(platform::Message request)
    {
        request.ReplaceString("User", 0, "kestrin");
        request.ReplaceString("Password", 0, "secret");
        return request;
    }

    PyftpdlibServer server;
};

// vsftpd in TLS, and a stored session "secure" whose name the requests carry.
class CopyEngineFtpTls : public CopyTest
{
protected:
    void SetUp() override
    {
        if (!server.Unavailable().empty())
            GTEST_SKIP() << server.Unavailable();
        FtpSession session;
        session.name = "secure";
        session.host = "127.0.0.1";
        ASSERT_TRUE(session.Write());
    }

    static platform::Message OfSession(platform::Message request)
    {
        if (!request.HasField("Session"))
            request.AddString("Session", "secure");
        else
            request.ReplaceString("Session", 0, "secure");
        return request;
    }

    VsftpdServer server{{.tls = true}};
    const std::string upload = server.Root() + "/upload";
};

} // namespace

TEST_F(CopyEngineFtpTls, TreesTravelInTlsWithTheSessionsCertificate)
{
    fs::create_directories(upload + "/tree/sub");
    WriteFileBytes(upload + "/tree/big.bin", RandomBytes(2 * 1024 * 1024 + 3, 5));
    WriteFileBytes(upload + "/tree/sub/small", "small");
    const platform::Message download = OfSession(Download(server.Port(), upload, {}, {"tree"}));

    // A certificate nobody vouches for is asked about; not connecting ends
    // the request with no alert of its own, and nothing arrives.
    alerts.QueueAnswer(FtpCertificateTrust::kDoNotConnect);
    Run(download, dest);
    ASSERT_EQ(alerts.Count(), 1u);
    EXPECT_EQ(alerts.Shown()[0].title, "Certificate");
    EXPECT_TRUE(control.errors.empty()) << TextsOf(control.errors)[0];
    EXPECT_TRUE(fs::is_empty(dest));

    // Trusted for the session, and required: no question, and both ways
    // byte for byte.
    FtpSecurity security;
    security.tls = FtpTls::Choice::Required;
    security.trustedCertificate = server.Fingerprint();
    ASSERT_TRUE(security.Write("secure"));
    alerts.Clear();
    Run(download, dest);
    EXPECT_EQ(Tree(dest + "/tree"), Tree(upload + "/tree"));
    fs::create_directory(upload + "/back");
    Run(OfSession(Upload(server.Port(), upload + "/back", {dest + "/tree"})), dest);
    EXPECT_EQ(Tree(upload + "/back/tree"), Tree(dest + "/tree"));
    EXPECT_EQ(alerts.Count(), 0u) << alerts.Shown()[0].text;
    EXPECT_TRUE(control.errors.empty()) << TextsOf(control.errors)[0];
}

TEST_F(CopyEngineFtp, DownloadsAndUploadsTreesByteForByte)
{
    fs::create_directories(upload + "/tree/sub/deeper");
    fs::create_directories(upload + "/tree/empty");
    WriteFileBytes(upload + "/top.txt", "top");
    WriteFileBytes(upload + "/tree/big.bin", RandomBytes(3 * 1024 * 1024 + 17, 1));
    WriteFileBytes(upload + "/tree/none", "");
    WriteFileBytes(upload + "/tree/sub/deeper/c", RandomBytes(5000, 2));

    Run(Download(server.Port(), upload, {"top.txt"}, {"tree"}), dest);
    EXPECT_TRUE(control.errors.empty()) << TextsOf(control.errors)[0];
    EXPECT_EQ(Tree(dest + "/tree"), Tree(upload + "/tree"));
    EXPECT_EQ(ReadFileBytes(dest + "/top.txt"), "top");
    EXPECT_EQ(Tree(dest).size(), Tree(upload + "/tree").size() + 2) << "nothing else, no leftovers";

    ASSERT_EQ(control.batches.size(), 1u);
    EXPECT_EQ(control.batches[0].text, "2 Files or Directories");
    // Each file's progress adds up to its 100 per cent, by differences.
    int32_t bigPercent = 0;
    for (const auto &transfer : control.transfers) {
        if (transfer.leafName == "big.bin")
            bigPercent += transfer.percentDelta;
        EXPECT_TRUE(std::regex_match(transfer.fileTrailing, std::regex(R"(\d+ Bytes @ \d+\.\d kB/s)")))
            << transfer.fileTrailing;
    }
    EXPECT_EQ(bigPercent, 100);
    // The running total counts every byte of the request.
    ASSERT_FALSE(control.transfers.empty());
    EXPECT_EQ(control.transfers.back().mainTrailing,
              std::to_string(3 + 3 * 1024 * 1024 + 17 + 5000));

    fs::create_directory(upload + "/back");
    Run(Upload(server.Port(), upload + "/back", {dest + "/tree", dest + "/top.txt"}), dest);
    EXPECT_TRUE(control.errors.empty()) << TextsOf(control.errors)[0];
    EXPECT_EQ(Tree(upload + "/back/tree"), Tree(dest + "/tree"));
    EXPECT_EQ(ReadFileBytes(upload + "/back/top.txt"), "top");
}

TEST_F(CopyEngineFtp, StopLeavesNoPartialFileOnEitherSide)
{
    const std::string bytes = RandomBytes(8 * 1024 * 1024, 3);
    WriteFileBytes(upload + "/big", bytes);
    WriteFileBytes(upload + "/after", "after");
    control.stopAfterChunks = 1;
    Run(Download(server.Port(), upload, {"big", "after"}), dest);
    EXPECT_TRUE(fs::is_empty(dest)) << "neither the partial file nor the next one";
    EXPECT_EQ(control.transfers.size(), 1u) << "the transfer ends at the next block";

    WriteFileBytes(src + "/big", bytes);
    fs::create_directory(upload + "/back");
    control.transfers.clear();
    Run(Upload(server.Port(), upload + "/back", {src + "/big"}), dest);
    EXPECT_TRUE(fs::is_empty(upload + "/back"));
    EXPECT_EQ(control.transfers.size(), 1u);
    EXPECT_TRUE(control.errors.empty());
}

TEST_F(CopyEngineFtp, UnsafeNamesAreRefusedAndTheRestArrives)
{
    WriteFileBytes(server.Root() + "/secret", "secret");
    fs::create_directories(upload + "/tree");
    WriteFileBytes(upload + "/tree/fine", "fine");
    WriteFileBytes(upload + "/good", "good");

    Run(Download(server.Port(), upload, {"../secret", "..", "good"}, {"...", "../upload", "tree"}),
        dest);
    EXPECT_EQ(Tree(dest),
              (std::map<std::string, std::string>{{"good", "good"},
                                                  {"tree", "/"},
                                                  {"tree/fine", "fine"}}));
    EXPECT_FALSE(Exists(home.Root() + "/secret"));
    const std::vector<std::string> refused = TextsOf(control.errors);
    ASSERT_EQ(refused.size(), 4u);
    EXPECT_EQ(refused[0],
              "Kestrin did not download \"../secret\": a local file cannot have that name.");
    EXPECT_EQ(refused[2], "Kestrin did not download \"...\": a local folder cannot have that name.");

    // A line end in a local name would smuggle a command of its own to the server.
    WriteFileBytes(src + "/x\r\nDELE good", "x");
    Run(Upload(server.Port(), upload, {src + "/x\r\nDELE good"}), dest);
    EXPECT_TRUE(Exists(upload + "/good"));
    EXPECT_EQ(control.errors.size(), 5u);
}

TEST_F(CopyEngineFtp, AFullDiskLeavesNoPartialFile)
{
    const std::string small = dest + "/small";
    fs::create_directory(small);
    if (mount("tmpfs", small.c_str(), "tmpfs", 0, "size=1m") != 0)
        GTEST_SKIP() << "cannot mount a small tmpfs here";
    const std::shared_ptr<void> unmount(nullptr,
                                        [&](void *) { umount2(small.c_str(), MNT_DETACH); });
    WriteFileBytes(upload + "/big", RandomBytes(2 * 1024 * 1024, 4));
    WriteFileBytes(upload + "/next", "next");

    Run(Download(server.Port(), upload, {"big", "next"}), small);
    EXPECT_TRUE(fs::is_empty(small));
    EXPECT_EQ(TextsOf(control.errors),
              std::vector<std::string>{"Cannot Copy file.\nInsufficient space on destination."});
}

TEST_F(CopyEngineFtp, DownloadsKeepTheServersTimesAndUploadsGoOnWhereItSetsNone)
{
    WriteFileBytes(upload + "/dated", "dated");
    fs::create_directories(upload + "/tree/sub");
    WriteFileBytes(upload + "/tree/sub/deep", "deep");
    SetModified(upload + "/dated", kJan2Noon);
    SetModified(upload + "/tree/sub/deep", kMay6);
    SetModified(upload + "/tree/sub", kMar4Morning);

    Run(Download(server.Port(), upload, {"dated"}, {"tree"}), dest);
    EXPECT_TRUE(control.errors.empty());
    // A file's time as MDTM tells it; a folder's as its listing does, to the day.
    EXPECT_EQ(Modified(dest + "/dated"), kJan2Noon);
    EXPECT_EQ(Modified(dest + "/tree/sub/deep"), kMay6);
    EXPECT_EQ(Modified(dest + "/tree/sub"), kMar4) << "after its contents";

    // vsftpd has no MFMT: the upload neither says so nor stops for it.
    fs::create_directory(upload + "/back");
    Run(Upload(server.Port(), upload + "/back", {dest + "/dated", dest + "/tree"}), dest);
    EXPECT_TRUE(control.errors.empty());
    EXPECT_EQ(Tree(upload + "/back"), Tree(dest));
}

TEST_F(CopyEnginePyftpdlib, UploadsSetTheirTimesWhereTheServerTakesThem)
{
    fs::create_directory(src + "/D");
    WriteFileBytes(src + "/D/inner", "inner");
    WriteFileBytes(src + "/after", "after");
    SetModified(src + "/D/inner", kMay6);
    SetModified(src + "/after", kJan2Noon);
    Run(LoggedIn(Upload(server.Port(), "/", {src + "/D", src + "/after"})), "/");
    // It dates files only: the folder's refusal stops nothing that follows.
    EXPECT_TRUE(control.errors.empty());
    EXPECT_EQ(Modified(server.Root() + "/D/inner"), kMay6);
    EXPECT_EQ(Modified(server.Root() + "/after"), kJan2Noon);

    SetModified(server.Root() + "/after", kMar4Morning);
    fs::remove(src + "/after");
    Run(LoggedIn(Download(server.Port(), "/", {"after"})), src);
    EXPECT_EQ(Modified(src + "/after"), kMar4Morning);
}

// A server without MDTM and MFMT says so once for each; downloads take their
// times from the listing, and neither direction tells the user.
TEST_F(CopyEngineFtpScripted, AServerWithoutTheTimeCommandsIsAskedOnce)
{
    // After the log-in: CWD d, or TYPE I.
    const auto logIn = [&](ScriptedServer::Session &s, const char *then) {
        LogIn(s);
        Answer(s, then);
    };
    const auto sendFile = [&](ScriptedServer::Session &s, const std::string &bytes) {
        platform::TcpSocket data;
        if (!s.SendPassiveData(&data)) // PASV, RETR
            return;
        data.SendAll(bytes.data(), bytes.size());
        data.Close();
        s.Send("226 done\r\n");
    };
    const auto receiveFile = [&](ScriptedServer::Session &s) {
        platform::TcpSocket data;
        if (!s.SendPassiveData(&data)) // PASV, STOR
            return;
        ReceiveAll(data);
        s.Send("226 done\r\n");
    };
    ScriptedServer server(
        std::vector<ScriptedServer::Script>{[&](ScriptedServer::Session &s) {
                                                logIn(s, "250 ok\r\n");
                                                Answer(s, "200 ok\r\n"); // TYPE A
                                                platform::TcpSocket data;
                                                if (!s.SendPassiveData(&data)) // PASV, LIST
                                                    return;
                                                const std::string listing
                                                    = "-rw-r--r-- 1 u g 1 Jan  2  2020 f\r\n"
                                                      "-rw-r--r-- 1 u g 1 Mar 04  2019 g\r\n";
                                                data.SendAll(listing.data(), listing.size());
                                                data.Close();
                                                s.Send("226 done\r\n");
                                                Answer(s, "200 ok\r\n"); // TYPE I
                                                sendFile(s, "f");
                                                Answer(s, "502 no MDTM here\r\n");
                                                sendFile(s, "g");
                                                Answer(s, "250 ok\r\n"); // CDUP
                                                s.WaitForClose();
                                            },
                                            [&](ScriptedServer::Session &s) {
                                                logIn(s, "200 ok\r\n");
                                                receiveFile(s);
                                                Answer(s, "500 Unknown command.\r\n"); // MFMT
                                                receiveFile(s);
                                                s.WaitForClose();
                                            }});

    Run(Download(server.Port(), "/x", {}, {"d"}), dest);
    EXPECT_EQ(Modified(dest + "/d/f"), kJan2);
    EXPECT_EQ(Modified(dest + "/d/g"), kMar4);
    Run(Upload(server.Port(), "/x", {dest + "/d/f", dest + "/d/g"}), dest);
    const std::vector<std::string> received = server.Finish();
    EXPECT_TRUE(control.errors.empty()) << TextsOf(control.errors)[0];
    const auto count = [&](const char *command) {
        return std::count_if(received.begin(), received.end(), [&](const std::string &line) {
            return line.starts_with(command);
        });
    };
    EXPECT_EQ(count("MDTM"), 1);
    EXPECT_EQ(count("MFMT"), 1);
    EXPECT_EQ(count("STOR"), 2);
}

TEST_F(CopyEnginePyftpdlib, PasswordsAreCheckedAndFilesGoBothWays)
{
    const std::string bytes = RandomBytes(300 * 1024, 5);
    WriteFileBytes(src + "/f", bytes);

    platform::Message upload = LoggedIn(Upload(server.Port(), "/", {src + "/f"}));
    upload.ReplaceString("Password", 0, "wrong");
    Run(upload, "/");
    ASSERT_EQ(control.errors.size(), 1u);
    EXPECT_EQ(control.errors[0],
              (platform::Alert{"Connect Failed",
                               "The username or password supplied is incorrect.\nCheck your "
                               "settings and try to reconnect.",
                               {"OK"},
                               B_WARNING_ALERT}));

    upload.ReplaceString("Password", 0, "secret");
    Run(upload, "/");
    fs::remove(src + "/f");
    control.transfers.clear();
    Run(LoggedIn(Download(server.Port(), "/", {"f"})), src);
    EXPECT_EQ(control.errors.size(), 1u);
    EXPECT_TRUE(ReadFileBytes(src + "/f") == bytes);
    // This server names no size when it starts sending; the bars still go
    // all the way.
    int32_t percent = 0;
    for (const auto &transfer : control.transfers)
        percent += transfer.percentDelta;
    EXPECT_EQ(percent, 100);
}

// PASV refused: the listing and the file come over active connections. The
// listing names a file outside the target; the connection drops in the
// middle of the next file, and the server turns the three attempts to take
// it up again away, which ends the request.
TEST_F(CopyEngineFtpScripted, RefusedPassiveThenADroppedConnection)
{
    std::atomic<int> refused = 0;
    const auto refuse = [&refused](ScriptedServer::Session &s) {
        s.Send("421 Too many users, try later.\r\n");
        refused++;
    };
    ScriptedServer server(
        {[](ScriptedServer::Session &s) {
             const auto activePort = [&s] {
                 unsigned h[6] = {};
                 const bool port = sscanf(s.ReadLine().c_str(),
                                          "PORT %u,%u,%u,%u,%u,%u",
                                          &h[0],
                                          &h[1],
                                          &h[2],
                                          &h[3],
                                          &h[4],
                                          &h[5])
                                   == 6;
                 s.Send("200 PORT ok\r\n");
                 return port ? h[4] * 256 + h[5] : 0u;
             };
             LogIn(s);
             for (const char *reply : {"250 ok\r\n", "200 ok\r\n", "502 no passive here\r\n"})
                 Answer(s, reply); // CWD d, TYPE A, PASV
             unsigned port = activePort();
             s.ReadLine(); // LIST
             platform::TcpSocket data;
             if (!s.ConnectData(port, &data))
                 return;
             s.Send("150 listing\r\n");
             const std::string listing = "-rw-r--r-- 1 u g 5 Jan  1  2000 ../../evil\r\n"
                                         "-rw-r--r-- 1 u g 100000 Jan  1  2000 cut\r\n"
                                         "-rw-r--r-- 1 u g 3 Jan  1  2000 later\r\n";
             data.SendAll(listing.data(), listing.size());
             data.Close();
             s.Send("226 done\r\n");
             port = activePort();
             Answer(s, "200 ok\r\n"); // TYPE I
             s.ReadLine();            // RETR cut
             if (!s.ConnectData(port, &data))
                 return;
             s.Send("150 Opening (100000 bytes)\r\n");
             data.SendAll(std::string(1000, 'x').data(), 1000);
             // Both connections close as the script ends.
         },
         refuse,
         refuse,
         refuse});

    Run(Download(server.Port(), "/x", {}, {"d"}), dest);
    server.Finish();
    EXPECT_EQ(TextsOf(control.errors),
              (std::vector<std::string>{
                  "Kestrin did not download \"../../evil\": a local file cannot have that name.",
                  "Kestrin did not download \"cut\": the connection to the server was lost."}));
    EXPECT_EQ(Tree(dest), (std::map<std::string, std::string>{{"d", "/"}}));
    EXPECT_FALSE(Exists(home.Root() + "/evil"));
    EXPECT_EQ(refused, 3);
}

// A download whose data connection breaks (426) goes on over the same
// connection from where it broke; when the server then goes away too, over
// a new one. An upload cut the same way is appended to.
TEST_F(CopyEngineFtpScripted, CutTransfersGoOnWhereTheyBroke)
{
    // PASV and the data connection; then REST, when the client says it.
    const auto open = [](ScriptedServer::Session &s, platform::TcpSocket *data) {
        s.ReadLine(); // PASV
        platform::TcpSocket listener;
        const unsigned port = s.ListenForData(&listener);
        s.Send("227 Entering Passive Mode (" + PassiveNumbers("127.0.0.1", port) + ").\r\n");
        if (!s.AcceptData(&listener, data))
            return false;
        if (s.ReadLine().starts_with("REST")) {
            s.Send("350 ok\r\n");
            s.ReadLine(); // RETR
        }
        s.Send("150 here\r\n");
        return true;
    };
    // The file's first four bytes, then the data connection breaks; three
    // more, then the server goes, data and control alike.
    const ScriptedServer::Script cutTwice = [&](ScriptedServer::Session &s) {
        LogIn(s);
        Answer(s, "200 ok\r\n"); // TYPE I
        Answer(s, "213 10\r\n"); // SIZE f
        platform::TcpSocket data;
        if (!open(s, &data)) // RETR f
            return;
        data.SendAll("0123", 4);
        data.Close();
        s.Send("426 Connection closed; transfer aborted.\r\n");
        if (open(s, &data)) // REST 4, RETR f
            data.SendAll("456", 3);
    };
    const ScriptedServer::Script rest = [&](ScriptedServer::Session &s) {
        LogIn(s);
        Answer(s, "200 ok\r\n"); // TYPE I
        platform::TcpSocket data;
        if (!open(s, &data)) // REST 7, RETR f
            return;
        data.SendAll("789", 3);
        data.Close();
        s.Send("226 done\r\n");
        Answer(s, "502 no MDTM here\r\n");
        s.WaitForClose();
    };
    // All of the upload comes, but the server dies with five bytes on disk.
    const ScriptedServer::Script cutUpload = [&](ScriptedServer::Session &s) {
        LogIn(s);
        Answer(s, "200 ok\r\n"); // TYPE I
        platform::TcpSocket data;
        if (open(s, &data)) // STOR g
            ReceiveAll(data);
    };
    std::string appended;
    const ScriptedServer::Script append = [&](ScriptedServer::Session &s) {
        LogIn(s);
        Answer(s, "200 ok\r\n"); // TYPE I
        Answer(s, "213 5\r\n");  // SIZE g
        platform::TcpSocket data;
        if (!open(s, &data)) // APPE g
            return;
        appended = ReceiveAll(data);
        s.Send("226 done\r\n");
        Answer(s, "502 no MFMT here\r\n");
        s.WaitForClose();
    };
    ScriptedServer server({cutTwice, rest, cutUpload, append});
    WriteFileBytes(src + "/g", "0123456789");

    Run(Download(server.Port(), "/x", {"f"}), dest);
    EXPECT_EQ(Tree(dest), (std::map<std::string, std::string>{{"f", "0123456789"}}));
    Run(Upload(server.Port(), "/x", {src + "/g"}), dest);
    const std::vector<std::string> lines = server.Finish();
    EXPECT_TRUE(control.errors.empty()) << TextsOf(control.errors)[0];
    EXPECT_EQ(appended, "56789");
    for (const char *line : {"REST 4\r\n", "REST 7\r\n", "APPE g\r\n"})
        EXPECT_EQ(std::count(lines.begin(), lines.end(), line), 1) << line;
    // The bars went on from where the file broke, never back.
    int32_t percent = 0;
    for (const auto &transfer : control.transfers) {
        EXPECT_GE(transfer.percentDelta, 0);
        if (transfer.leafName == "f")
            percent += transfer.percentDelta;
    }
    EXPECT_EQ(percent, 100);
}
