// A pane's SFTP client against OpenSSH's sshd on 127.0.0.1: each step and
// where it leads, the passwords a login tries, and a connection that drops
// between requests. (The host and password questions: SftpConversation's.)

#include "SshdSessionTest.h"
#include "sftp/SftpFolderClient.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>

namespace fs = std::filesystem;
using kestrin::FtpSession;
using kestrin::SftpFolderClient;
using kestrin::SftpRequest;
using kestrin::SftpResult;

namespace {

class SftpFolderClientTest : public SshdSessionTest
{
protected:
    SftpFolderClient::Questions Trusting()
    {
        SftpFolderClient::Questions questions;
        questions.trustHost = [this](const platform::SshHostKey &key) {
            shownKeys.push_back(key.fingerprint);
            return true;
        };
        return questions;
    }

    static std::vector<std::string> Names(const SftpResult &result)
    {
        std::vector<std::string> names;
        for (const platform::SftpEntry &entry : result.entries)
            names.push_back(entry.name);
        std::sort(names.begin(), names.end());
        return names;
    }

    std::vector<std::string> shownKeys;
};

} // namespace

TEST_F(SftpFolderClientTest, EachStepLeadsWhereItSaysAndDeletesNothingBeyondALink)
{
    InstallUserKey();
    const std::string base = fs::canonical(session.remoteDir).string();
    fs::create_directories(base + "/sub/deep");
    WriteFileBytes(base + "/sub/deep/file", "x");
    const std::string outside = home.Root() + "/outside";
    fs::create_directories(outside);
    WriteFileBytes(outside + "/keep", "precious");
    fs::create_directory_symlink(outside, base + "/sub/link");

    SftpFolderClient client(session, 20000, Trusting(), nullptr);
    ASSERT_EQ(client.Run({}).connectError, "");
    using Step = SftpRequest::Step;

    SftpResult result = client.Run(Request(Step::Enter, base, "sub"));
    EXPECT_EQ(result.folder, base + "/sub");
    EXPECT_EQ(Names(result), (std::vector<std::string>{"deep", "link"}));
    EXPECT_EQ(client.Run(Request(Step::Up, base + "/sub")).folder, base);
    result = client.Run(Request(Step::Enter, base, "missing"));
    EXPECT_EQ(result.folder, base) << "a failed step stays where it was";
    EXPECT_NE(result.stepError, "");

    result = client.Run(Request(Step::MakeDir, base, "made"));
    EXPECT_EQ(result.stepError, "");
    EXPECT_TRUE(fs::is_directory(base + "/made"));
    SftpRequest rename = Request(Step::Rename, base, "made");
    rename.newName = "../escaped";
    EXPECT_NE(client.Run(rename).stepError, "");
    EXPECT_FALSE(fs::exists(fs::path(base).parent_path() / "escaped"));
    rename.newName = "renamed";
    EXPECT_EQ(client.Run(rename).stepError, "");
    EXPECT_EQ(Names(client.Run(Request(Step::Stay, base))),
              (std::vector<std::string>{"renamed", "sub"}));

    SftpRequest chmod = Request(Step::SetMode, base);
    chmod.mode = 0700;
    chmod.entries = {{"renamed", true}};
    EXPECT_EQ(client.Run(chmod).stepError, "");
    EXPECT_EQ(fs::status(base + "/renamed").permissions() & fs::perms::all, fs::perms(0700));

    // A folder goes with all it holds; a link inside it goes alone.
    SftpRequest remove = Request(Step::Remove, base);
    remove.entries = {{"sub", true}, {"renamed", true}};
    result = client.Run(remove);
    EXPECT_EQ(result.stepError, "");
    EXPECT_EQ(Names(result), std::vector<std::string>{});
    EXPECT_EQ(ReadFileBytes(outside + "/keep"), "precious");
}

TEST_F(SftpFolderClientTest, ADroppedConnectionIsMadeAgainByTheRequestThatFindsIt)
{
    InstallUserKey();
    SftpFolderClient client(session, 20000, Trusting(), nullptr);
    const SftpResult first = client.Run({});
    ASSERT_EQ(first.connectError, "");
    // The request that finds the connection gone logs in again and is
    // made once more, as an FTP pane's is: nothing is lost but a moment.
    fs::create_directories(first.folder + "/in");
    for (const SftpRequest::Step step : {SftpRequest::Step::Stay, SftpRequest::Step::Enter}) {
        server.DropSessions();
        const SftpRequest request = Request(step, first.folder, "in");
        const SftpResult again = client.Run(request);
        EXPECT_EQ(again.connectError, "") << int(step);
        EXPECT_EQ(again.stepError, "") << int(step);
        EXPECT_TRUE(client.LoggedIn()) << int(step);
    }
}

TEST_F(SftpFolderClientTest, TheSessionsPasswordIsUsedAsItIsAndAnAskedOneOnce)
{
    if (!server.PasswordUnavailable().empty())
        GTEST_SKIP() << server.PasswordUnavailable();
    const std::string right = SshdServer::Password();
    // No agent and no key: the session's password, else the one asked for.
    const struct
    {
        std::string stored;
        std::optional<std::string> answer;
        int asked;
        bool in;
    } rows[] = {
        {right, std::nullopt, 0, true},
        {"", right, 1, true},
        {"", "guess", 1, false},
        {"", std::nullopt, 1, false},
    };
    for (const auto &row : rows) {
        const std::string what = "stored \"" + row.stored + "\", answered \""
                                 + row.answer.value_or("(nothing)") + "\"";
        session.pass = row.stored;
        int asked = 0;
        SftpFolderClient::Questions questions = Trusting();
        questions.password = [&] {
            asked++;
            return row.answer;
        };
        std::vector<std::string> log;
        SftpFolderClient client(session, 20000, questions, [&](const std::string &line) {
            log.push_back(line);
        });
        const SftpResult result = client.Run({});
        EXPECT_EQ(asked, row.asked) << what;
        EXPECT_EQ(client.LoggedIn(), row.in) << what;
        ASSERT_FALSE(log.empty()) << what;
        if (row.in) {
            EXPECT_EQ(result.connectError, "") << what;
            EXPECT_EQ(log.back(), "Logged in as " + session.user + ".") << what;
        } else {
            EXPECT_EQ(result.connectError, "The server did not let " + session.user + " in.")
                << what;
            EXPECT_EQ(log.back(), result.connectError) << what;
        }
    }
}
