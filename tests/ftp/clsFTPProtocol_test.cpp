// The protocol's odd cases, against bytes written into a socket pair or a
// scripted server on 127.0.0.1.

#include "CallbackLog.h"
#include "ScriptedServer.h"
#include "TempHome.h"
#include "ftp/FtpListing.h"
#include "ftp/clsFTP.h"

#include <QTemporaryDir>
#include <cstring>
#include <gtest/gtest.h>
#include <optional>

using kestrin::clsFTP;
using kestrin::FtpWireText;
using platform::SocketAddress;
using platform::TcpSocket;

namespace {

// 999 ms waits 999 us: a silent peer costs a millisecond.
constexpr unsigned kShortTimeout = 999;
constexpr unsigned kTimeout = 5000;

struct Pair
{
    TcpSocket server;
    TcpSocket client;
    Pair() { EXPECT_EQ(TcpSocket::CreatePair(&server, &client), B_OK); }
    void Write(const std::string &bytes)
    {
        ASSERT_EQ(server.SendAll(bytes.data(), bytes.size()), B_OK);
    }
};

int Read(clsFTP &ftp, Pair &pair, std::string *text)
{
    char buffer[clsFTP::kReplySize];
    const int code = ftp.FTPReadString(pair.client, buffer, sizeof buffer);
    EXPECT_LT(strnlen(buffer, sizeof buffer), sizeof buffer);
    *text = buffer;
    return code;
}

} // namespace

TEST(FtpReplyReader, MultiLineReplyInOneReadLeavesTheNextReplyQueued)
{
    CallbackLog log;
    clsFTP ftp(kShortTimeout, &CallbackLog::Record, &log);
    Pair pair;
    pair.Write("220-Welcome\r\n220 ready\r\n331 next\r\n");
    std::string text;
    EXPECT_EQ(Read(ftp, pair, &text), 220);
    EXPECT_EQ(text, "220-Welcome220 ready");
    EXPECT_TRUE(log.HasText("220-Welcome220 ready"));
    // A network read now would see the 500: the 331 must come from the queue.
    pair.Write("500 not yet\r\n");
    EXPECT_EQ(Read(ftp, pair, &text), 331);
    EXPECT_EQ(text, "331 next");
    EXPECT_EQ(Read(ftp, pair, &text), 500);

    // The queue is the client's own: another client reads the network.
    clsFTP other(kShortTimeout, nullptr, nullptr);
    Pair second;
    second.Write("220-a\r\n220 b\r\n250 queued\r\n");
    EXPECT_EQ(Read(ftp, second, &text), 220);
    EXPECT_EQ(Read(other, second, &text), 2);
    EXPECT_EQ(text, "TIMEOUT");
    EXPECT_EQ(Read(ftp, second, &text), 250);
}

TEST(FtpReplyReader, MultiLineReplyEndsOnlyOnItsOwnNumberAndABlank)
{
    // The reply spans two reads, and a reply must end within the time-out of
    // its first byte: a loaded machine can pass a millisecond between the
    // reads, so this reader waits as long as a real one does.
    clsFTP ftp(kTimeout, nullptr, nullptr);
    Pair pair;
    // Exactly one receive's worth, so the end arrives in a later read.
    std::string first = "230-first\r\n";
    first += "231 other number\r\n";
    first += "2301 longer number\r\n";
    first += "230-" + std::string(clsFTP::kReplySize - first.size() - 6, 'x') + "\r\n";
    ASSERT_EQ(first.size(), clsFTP::kReplySize);
    pair.Write(first);
    pair.Write("230 done\r\n250 after\r\n");
    std::string text;
    EXPECT_EQ(Read(ftp, pair, &text), 230);
    EXPECT_EQ(text.rfind("230-first231 other number2301 longer number230-", 0), 0u);
    EXPECT_EQ(ftp.PendingLineCount(), 1u);
    EXPECT_EQ(Read(ftp, pair, &text), 250);
}

TEST(FtpReplyReader, BrokenRepliesStayInsideTheBuffer)
{
    clsFTP ftp(kShortTimeout, nullptr, nullptr);
    std::string text;
    {
        Pair silent;
        EXPECT_EQ(Read(ftp, silent, &text), 2);
        EXPECT_EQ(text, "TIMEOUT");
    }
    {
        Pair pair;
        pair.Write("hello without a code or line end");
        EXPECT_EQ(Read(ftp, pair, &text), 0);
        EXPECT_EQ(text, "hello without a code or line end");
        pair.Write("550 " + std::string(5000, 'y') + "\r\n");
        EXPECT_EQ(Read(ftp, pair, &text), 550);
        EXPECT_EQ(text.size(), clsFTP::kReplySize - 1);
    }
    {
        // A reply that never ends before the server goes away.
        Pair pair;
        std::string endless = "230-start\r\n";
        for (int i = 0; i < 2000; i++)
            endless += "230-more " + std::to_string(i) + "\r\n";
        pair.Write(endless);
        pair.server.Close();
        EXPECT_EQ(Read(ftp, pair, &text), 2);
        EXPECT_EQ(text, "TIMEOUT");
    }
}

TEST(FtpReplyReader, PortAndPassiveTextsAreReadAndWritten)
{
    EXPECT_EQ(FtpWireText::PortCommand(SocketAddress{0x0a000007, 5001}), "PORT 10,0,0,7,19,137\r\n");

    FtpWireText::PassiveAddress address;
    ASSERT_TRUE(
        FtpWireText::ParsePassiveReply("227 Entering Passive Mode (192,168,1,2,4,1)", &address));
    EXPECT_EQ(address.host, "192.168.1.2");
    EXPECT_EQ(address.port, 1025u);
    for (const char *refused : {"227 Entering Passive Mode 192,168,1,2,4,1",
                                "227 (192,168,1,2,4,256)",
                                "227 (1,2,3,4,5)",
                                "227 (1,2,3,4,5,99999999999999999999)"})
        EXPECT_FALSE(FtpWireText::ParsePassiveReply(refused, &address)) << refused;

    EXPECT_EQ(FtpWireText::ExpectedSize(
                  "150 Opening BINARY mode data connection for f (1234 bytes)."),
              1234);
    EXPECT_EQ(FtpWireText::ExpectedSize("150 Opening data connection."), 0);
}

TEST(FtpReplyReader, TimesAreReadFromRepliesAndListingsAndWrittenForMfmt)
{
    constexpr time_t kJan2Noon = 1577966400; // 2020-01-02 12:00:00 UTC
    constexpr time_t kJan2 = 1577923200;
    struct Row
    {
        const char *text;
        std::optional<time_t> seconds;
        long nanoseconds = 0;
    };
    const Row replies[] = {
        {"213 20200102120000", kJan2Noon},
        {"213 20200102120000.5", kJan2Noon, 500000000},
        {"213 20200102120000.123 UTC", kJan2Noon, 123000000},
        {"213 20200102120000 f", kJan2Noon},
        {"213 19700101000000", 0},
        {"213 20240229235960", 1709251200}, // a leap day, and a leap second
        {"213 20230229120000", std::nullopt},
        {"213 20200102126000", std::nullopt},
        {"213 2020010212000", std::nullopt},
        {"213 20200102120000x", std::nullopt},
        {"213 1234", std::nullopt}, // a SIZE reply
        {"550 f: not a plain file.", std::nullopt},
    };
    for (const Row &row : replies) {
        const std::optional<timespec> time = FtpWireText::ModificationTimeReply(row.text);
        EXPECT_EQ(time.has_value(), row.seconds.has_value()) << row.text;
        if (time && row.seconds) {
            EXPECT_EQ(time->tv_sec, *row.seconds) << row.text;
            EXPECT_EQ(time->tv_nsec, row.nanoseconds) << row.text;
        }
    }

    // A listing's date names a day only when it names a year.
    const Row dates[] = {
        {"Jan  2  2020", kJan2},
        {"Jan 02  2020", kJan2},
        {"Dec 31   1999", 946598400},
        {"Jan  2 12:00", std::nullopt},
        {"Feb 30  2020", std::nullopt},
        {"jan  2  2020", std::nullopt},
        {"Jan  2  20", std::nullopt},
        {"Jan 2x 2020", std::nullopt},
        {"Jan 258  2020", std::nullopt}, // day 2 in a byte
        {"Janu  2  2020", std::nullopt},
        // DOS-style dates always name their year; two digits name 1970 to 2069.
        {"01-02-20  10:30AM", kJan2},
        {"01-02-2020  22:30", kJan2},
        {"2020-01-02  10:30PM", kJan2},
        {"12-31-99  10:30AM", 946598400},
        {"02-30-20  10:30AM", std::nullopt},
    };
    for (const Row &row : dates)
        EXPECT_EQ(kestrin::ListedTime(row.text), row.seconds) << row.text;

    EXPECT_EQ(FtpWireText::TimeText(kJan2Noon + 59), "20200102120059");
    EXPECT_EQ(FtpWireText::TimeText(0), "19700101000000");
}

TEST(FtpScripted, GreetingRulesAndSilentServer)
{
    {
        ScriptedServer server([](ScriptedServer::Session &s) {
            s.Send("120 in a moment\r\n");
            s.Send("220 ready\r\n");
            s.WaitForClose();
        });
        CallbackLog log;
        clsFTP ftp("127.0.0.1", server.Port(), nullptr, 0, kTimeout, &CallbackLog::Record, &log);
        EXPECT_EQ(ftp.Connect(nullptr, nullptr, nullptr), 220);
        EXPECT_TRUE(ftp.IsConnected());
        ftp.Disconnect();
        // Nothing but the QUIT: no USER without a user.
        EXPECT_EQ(server.Finish(), std::vector<std::string>{"QUIT\r\n"});
    }
    {
        ScriptedServer server([](ScriptedServer::Session &s) { s.WaitForClose(); });
        CallbackLog log;
        clsFTP ftp("127.0.0.1", server.Port(), nullptr, 0, kShortTimeout, &CallbackLog::Record, &log);
        EXPECT_EQ(ftp.Connect("anonymous", "x", nullptr), 421);
        EXPECT_TRUE(log.HasText("TIMEOUT"));
        EXPECT_TRUE(log.HasText("Exception: 421 - Error connecting to server."));
        EXPECT_FALSE(ftp.IsConnected());
        EXPECT_TRUE(server.Finish().empty());
    }
    {
        CallbackLog log;
        clsFTP ftp("127.0.0.1", ClosedPort(), nullptr, 0, kTimeout, &CallbackLog::Record, &log);
        EXPECT_EQ(ftp.Connect("anonymous", "x", nullptr), 6);
        EXPECT_TRUE(log.HasText("Unable to connect to host"));
    }
}

TEST(FtpScripted, ProxyCarriesTheRealServerInUser)
{
    ScriptedServer server([](ScriptedServer::Session &s) {
        s.Send("220 proxy\r\n");
        s.Answer("331 password\r\n");
        s.Answer("230-logged\r\n230 in\r\n");
        s.WaitForClose();
    });
    CallbackLog log;
    clsFTP ftp("h", 21, "127.0.0.1", server.Port(), kTimeout, &CallbackLog::Record, &log);
    EXPECT_EQ(ftp.Connect("u", "pw", nullptr), 0);
    ftp.Disconnect();
    const auto lines = server.Finish();
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines[0], "USER u@h:21\r\n");
    EXPECT_EQ(lines[1], "PASS pw\r\n");
    EXPECT_TRUE(log.HasText("PASS ******\r\n"));
    EXPECT_FALSE(log.HasText("PASS pw\r\n"));
}

TEST(FtpScripted, PassiveGoesToTheControlPeerAndAnEmptyListingIsNull)
{
    ScriptedServer server([](ScriptedServer::Session &s) {
        s.Send("220 hi\r\n");
        s.Answer("200 ok\r\n"); // TYPE A
        s.ReadLine();           // PASV
        TcpSocket listener, data;
        const unsigned port = s.ListenForData(&listener);
        // Another host's address: the client must stay on 127.0.0.1.
        s.Send("227 Entering Passive Mode (" + PassiveNumbers("192.0.2.9", port) + ").\r\n");
        if (!s.AcceptData(&listener, &data))
            return;
        s.Answer("150 Here it comes\r\n"); // LIST
        data.Close();
        s.Send("226 done\r\n");
        s.WaitForClose();
    });
    clsFTP ftp("127.0.0.1", server.Port(), nullptr, 0, kTimeout, nullptr, nullptr);
    ASSERT_EQ(ftp.Connect(nullptr, nullptr, nullptr), 220);
    char *listing = reinterpret_cast<char *>(1);
    EXPECT_EQ(ftp.List(nullptr, &listing, true), 0);
    EXPECT_EQ(listing, nullptr);
    ftp.Disconnect();
    const auto lines = server.Finish();
    ASSERT_GE(lines.size(), 3u);
    EXPECT_EQ(lines[2], "LIST\r\n");
}

TEST(FtpScripted, ActiveAnnouncesTheControlAddressAndRetrWithoutCount)
{
    unsigned announcedPort = 0;
    ScriptedServer server([&announcedPort](ScriptedServer::Session &s) {
        s.Send("220 hi\r\n");
        announcedPort = s.ReadPort();
        s.Send("200 PORT ok\r\n");
        s.Answer("200 ok\r\n"); // TYPE I
        s.ReadLine();           // RETR
        TcpSocket data;
        if (!s.ConnectData(announcedPort, &data))
            return;
        s.Send("150 Opening data connection.\r\n");
        data.SendAll("abc", 3);
        data.Close();
        s.Send("226 done\r\n");
        s.WaitForClose();
    });
    CallbackLog log;
    clsFTP ftp("127.0.0.1", server.Port(), nullptr, 0, kTimeout, &CallbackLog::Record, &log);
    ASSERT_EQ(ftp.Connect(nullptr, nullptr, nullptr), 220);
    char *buffer = nullptr;
    int size = 0;
    EXPECT_EQ(ftp.DownloadBuffer(&buffer, &size, "f", true, false), 0);
    ASSERT_EQ(size, 3);
    EXPECT_EQ(std::string(buffer, 3), "abc");
    clsFTP::DisposeBuffer(&buffer);
    EXPECT_EQ(buffer, nullptr);
    EXPECT_EQ(log.ProgressCalls(), 0);
    EXPECT_TRUE(log.HasText("Read 3 bytes from server."));
    ftp.Disconnect();
    const auto lines = server.Finish();
    ASSERT_GE(lines.size(), 1u);
    EXPECT_EQ(lines[0].rfind("PORT 127,0,0,1,", 0), 0u);
    EXPECT_NE(announcedPort, 0u);
}

TEST(FtpScripted, UnusablePassiveReplyFailsTheTransfer)
{
    ScriptedServer server([](ScriptedServer::Session &s) {
        s.Send("220 hi\r\n");
        s.Answer("200 ok\r\n");                                  // TYPE A
        s.Answer("227 Entering Passive Mode 127,0,0,1,4,1\r\n"); // PASV
        s.WaitForClose();
    });
    CallbackLog log;
    clsFTP ftp("127.0.0.1", server.Port(), nullptr, 0, kTimeout, &CallbackLog::Record, &log);
    ASSERT_EQ(ftp.Connect(nullptr, nullptr, nullptr), 220);
    char *listing = nullptr;
    EXPECT_EQ(ftp.List(nullptr, &listing, true), 6);
    EXPECT_EQ(listing, nullptr);
    EXPECT_TRUE(log.HasText("Exception: 6 - Error retrieving list."));
}

TEST(FtpScripted, OnlyA257NamesAFolderAndALostConnectionSaysHow)
{
    {
        ScriptedServer server([](ScriptedServer::Session &s) {
            s.Send("220 hi\r\n");
            s.Answer("550 no folder for you\r\n"); // PWD
            s.Answer("257 \"/pub\" is here\r\n");  // PWD
            // Gone before the third.
        });
        clsFTP ftp("127.0.0.1", server.Port(), nullptr, 0, kTimeout, nullptr, nullptr);
        ASSERT_EQ(ftp.Connect(nullptr, nullptr, nullptr), 220);
        std::string path = "before";
        ftp.PrintDir(&path);
        EXPECT_EQ(path, "");
        ftp.PrintDir(&path);
        EXPECT_EQ(path, "/pub");
        EXPECT_EQ(ftp.ControlLoss(), clsFTP::Loss::None);
        server.Finish();
        ftp.PrintDir(&path);
        EXPECT_STREQ(ftp.ReplyText(), "TIMEOUT");
        EXPECT_EQ(path, "");
        EXPECT_EQ(ftp.ControlLoss(), clsFTP::Loss::Dropped);
    }
    {
        // The listing's data never comes: the reply still due after it
        // would be read as the answer to the next command.
        ScriptedServer server([](ScriptedServer::Session &s) {
            s.Send("220 hi\r\n");
            s.Answer("200 ok\r\n"); // TYPE A
            TcpSocket data;
            if (s.SendPassiveData(&data))
                s.WaitForClose();
        });
        clsFTP ftp("127.0.0.1", server.Port(), nullptr, 0, 1000, nullptr, nullptr);
        ASSERT_EQ(ftp.Connect(nullptr, nullptr, nullptr), 220);
        char *listing = nullptr;
        EXPECT_EQ(ftp.List(nullptr, &listing, true), 2);
        EXPECT_EQ(ftp.ControlLoss(), clsFTP::Loss::Silent);
        ftp.Leave();
        server.Finish();
    }
}

// FEAT's answer is taken up (the facts a row needs asked for, as they are not
// all sent unasked); a download goes on from an offset after REST, an upload
// with APPE; a 421 says the server is closing.
TEST(FtpScripted, FeaturesAreTakenUpAndTransfersGoOnFromAnOffset)
{
    std::string appended;
    ScriptedServer server([&appended](ScriptedServer::Session &s) {
        s.Send("220 hi\r\n");
        s.AnswerFeatures(
            "211-Extensions supported:\r\n SIZE\r\n"
            " MLST Type*;Size*;Modify*;UNIX.mode;Perm;\r\n REST STREAM\r\n211 END\r\n");
        s.Answer("200 MLST OPTS type;size;modify;unix.mode;\r\n"); // OPTS MLST
        s.Answer("200 ok\r\n");                                    // TYPE I
        TcpSocket data;
        if (!s.AcceptPassiveData(&data))
            return;
        s.Answer("350 Restarting at 6.\r\n");  // REST 6
        s.Answer("150 Opening (5 bytes)\r\n"); // RETR f
        data.SendAll("world", 5);
        data.Close();
        s.Send("226 done\r\n");
        if (!s.AcceptPassiveData(&data))
            return;
        s.Answer("150 ok\r\n"); // APPE g
        char buffer[64];
        for (ssize_t got; data.WaitReady(true, ScriptedServer::kWaitSeconds, 0) == B_OK
                          && (got = data.Receive(buffer, sizeof buffer)) > 0;)
            appended.append(buffer, size_t(got));
        s.Send("226 done\r\n");
        s.Answer("421 Idle too long.\r\n"); // NOOP
    });
    QTemporaryDir folder;
    const std::string local = folder.path().toStdString();
    WriteFileBytes(local + "/part", "hello XXXXXXXX");
    WriteFileBytes(local + "/up", "0123456789");
    CallbackLog log;
    clsFTP ftp("127.0.0.1", server.Port(), nullptr, 0, kTimeout, &CallbackLog::Record, &log);
    ASSERT_EQ(ftp.Connect(nullptr, nullptr, nullptr), 220);
    EXPECT_FALSE(ftp.MachineListings());
    EXPECT_EQ(ftp.NegotiateFeatures(), 0);
    EXPECT_TRUE(ftp.MachineListings());

    ftp.ExpectSize(11);
    EXPECT_EQ(ftp.ResumeDownload("f", local.c_str(), "part", 6, true, true), 0);
    EXPECT_EQ(ReadFileBytes(local + "/part"), "hello world");
    ASSERT_FALSE(log.calls.empty());
    EXPECT_EQ(log.calls.back().code, -1);
    const auto lastProgress = std::find_if(log.calls.rbegin(), log.calls.rend(), [](const auto &c) {
        return c.code >= 0;
    });
    ASSERT_NE(lastProgress, log.calls.rend());
    EXPECT_EQ(lastProgress->code, 100) << "measured against the whole file";
    EXPECT_EQ(lastProgress->count, 11);

    EXPECT_EQ(ftp.ResumeUpload((local + "/up").c_str(), "g", 4, true, true), 0);
    EXPECT_EQ(ftp.Noop(), 421);
    EXPECT_EQ(ftp.ControlLoss(), clsFTP::Loss::Dropped);
    const auto lines = server.Finish();
    EXPECT_EQ(appended, "456789");
    const std::vector<std::string> expected = {"FEAT\r\n",
                                               "OPTS MLST type;size;modify;unix.mode;\r\n",
                                               "TYPE I\r\n",
                                               "PASV\r\n",
                                               "REST 6\r\n",
                                               "RETR f\r\n",
                                               "PASV\r\n",
                                               "APPE g\r\n",
                                               "NOOP\r\n"};
    EXPECT_EQ(lines, expected);
}
