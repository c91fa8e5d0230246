// Logging in to OpenSSH's sshd on 127.0.0.1 as OpenSSH's own client does:
// host keys checked against known_hosts, then the agent, the key files and
// their passphrases; as root and, again, as a user whose files are their own.

#include "ProgramRun.h"
#include "SshdServer.h"
#include "TempHome.h"
#include "UnprivilegedRerun.h"
#include "platform/SshSession.h"

#include <QProcess>
#include <QTest>
#include <filesystem>
#include <gtest/gtest.h>

namespace fs = std::filesystem;
using platform::SshHostKey;
using platform::SshHostState;
using platform::SshSession;

namespace {

// The parameter: whether the test runs again as user nobody.
class SshSessionTest : public ::testing::TestWithParam<bool>
{
protected:
    void SetUp() override
    {
        if (!server.Unavailable().empty())
            GTEST_SKIP() << server.Unavailable();
        server.PrepareHome(home, SshdServer::Trust::Nothing);
    }

    // A connected session and what it found of the host key.
    SshHostState Connect(SshSession &session, SshHostKey *key = nullptr, std::string *why = nullptr)
    {
        std::string reason;
        EXPECT_EQ(session.Connect("127.0.0.1",
                                  uint16_t(server.Port()),
                                  SshdServer::User(),
                                  20000,
                                  &reason),
                  B_OK)
            << reason << ReadFileBytes(server.Scratch() + "/../sshd.log").value_or("");
        SshHostKey found;
        const SshHostState state = session.CheckHost(&found, &reason);
        if (key != nullptr)
            *key = found;
        if (why != nullptr)
            *why = reason;
        return state;
    }

    std::string KnownHosts() const
    {
        return ReadFileBytes(home.Home() + "/.ssh/known_hosts").value_or("");
    }

    void InstallUserKey(const std::string &passphrase = {})
    {
        const std::string key = home.Home() + "/.ssh/id_ed25519";
        fs::copy_file(server.UserKey(), key, fs::copy_options::overwrite_existing);
        fs::permissions(key, fs::perms::owner_read | fs::perms::owner_write);
        if (!passphrase.empty()) {
            const ProgramRun run = ProgramRun::Of("ssh-keygen",
                                                  {"-q",
                                                   "-p",
                                                   "-N",
                                                   QString::fromStdString(passphrase),
                                                   "-f",
                                                   QString::fromStdString(key)});
            ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
        }
    }

    TempHome home;
    SshdServer server;
};

} // namespace

TEST_P(SshSessionTest, AHostKeyIsTrustedOnlyWhenAcceptedAndAChangedOneIsRefused)
{
    if (GetParam() && UnprivilegedRerun::Delegated())
        return;
    SshSession first;
    SshHostKey key;
    ASSERT_EQ(Connect(first, &key), SshHostState::Unknown);
    EXPECT_EQ(key.type, "ssh-ed25519");
    EXPECT_EQ(key.fingerprint, server.Fingerprint());
    EXPECT_EQ(KnownHosts(), "") << "nothing is written before the user accepts";

    std::string why;
    ASSERT_EQ(first.TrustHost(&why), B_OK) << why;
    const std::string line = server.KnownHostsLine();
    EXPECT_NE(KnownHosts().find(line.substr(line.find(' ') + 1, 60)), std::string::npos)
        << KnownHosts() << " lacks " << line;

    SshSession second;
    EXPECT_EQ(Connect(second), SshHostState::Known);

    ASSERT_TRUE(server.ReplaceHostKey());
    SshSession third;
    EXPECT_EQ(Connect(third, &key, &why), SshHostState::Changed);
    EXPECT_EQ(key.fingerprint, server.Fingerprint());
    EXPECT_NE(why.find("has changed"), std::string::npos) << why;

    // Nothing listens on a port that the server gave up.
    platform::TcpSocket closed;
    closed.Open();
    closed.BindEphemeral(0x7f000001);
    platform::SocketAddress unused;
    closed.LocalAddress(&unused);
    closed.Close();
    SshSession refused;
    EXPECT_NE(refused.Connect("127.0.0.1", unused.port, SshdServer::User(), 5000, &why), B_OK);
    EXPECT_NE(why.find("refuses the connection"), std::string::npos) << why;
}

TEST_P(SshSessionTest, LogsInWithTheAgentOrAKeyFileAndAsksForAPassphrase)
{
    if (GetParam() && UnprivilegedRerun::Delegated())
        return;
    // No agent and no keys: no way in.
    {
        SshSession session;
        Connect(session);
        EXPECT_FALSE(session.AuthenticateWithAgent());
        EXPECT_FALSE(session.AuthenticateWithKeys(nullptr));
        EXPECT_FALSE(session.AuthenticateWithPassword("guess"));
    }

    // A key file without a passphrase is used as it is.
    InstallUserKey();
    {
        SshSession session;
        Connect(session);
        int asked = 0;
        EXPECT_TRUE(session.AuthenticateWithKeys([&](const std::string &) {
            asked++;
            return std::nullopt;
        }));
        EXPECT_EQ(asked, 0);
    }

    // One with a passphrase: asked for, with the key's path; a refusal to
    // tell it skips the key.
    InstallUserKey("open sesame");
    for (const std::optional<std::string> &answer :
         {std::optional<std::string>(), std::optional<std::string>("open sesame")}) {
        SshSession session;
        Connect(session);
        std::vector<std::string> asked;
        const bool in = session.AuthenticateWithKeys([&](const std::string &path) {
            asked.push_back(path);
            return answer;
        });
        EXPECT_EQ(in, answer.has_value());
        EXPECT_EQ(asked, std::vector<std::string>{home.Home() + "/.ssh/id_ed25519"});
    }

    // The agent holds the key: no file is needed.
    fs::remove(home.Home() + "/.ssh/id_ed25519");
    const std::string socket = home.Root() + "/agent.sock";
    QProcess agent;
    agent.start("ssh-agent", {"-D", "-a", QString::fromStdString(socket)});
    ASSERT_TRUE(agent.waitForStarted());
    home.SetEnv("SSH_AUTH_SOCK", socket);
    // The socket's file is there once it is bound, a moment before the
    // agent listens on it; `ssh-add -l` says 2 until it answers.
    ASSERT_TRUE(QTest::qWaitFor([&] { return ProgramRun::Of("ssh-add", {"-l"}).exitCode != 2; },
                                20000));
    const ProgramRun added = ProgramRun::Of("ssh-add",
                                            {"-q", QString::fromStdString(server.UserKey())});
    EXPECT_EQ(added.exitCode, 0) << added.err.toStdString();
    {
        SshSession session;
        Connect(session);
        EXPECT_TRUE(session.AuthenticateWithAgent());
        EXPECT_TRUE(session.IsAuthenticated());
    }
    agent.kill();
    agent.waitForFinished();
}

TEST_P(SshSessionTest, LogsInWithTheRightPasswordOnlyAndKeepsNone)
{
    if (GetParam() && UnprivilegedRerun::Delegated())
        return;
    if (!server.PasswordUnavailable().empty())
        GTEST_SKIP() << server.PasswordUnavailable();
    // Each row a new connection: the passwords tried on it, in order, and
    // whether the last let the user in.
    const struct
    {
        std::vector<std::string> tried;
        bool in;
    } rows[] = {
        {{"guess"}, false},
        {{""}, false},
        {{SshdServer::Password() + " "}, false},
        {{SshdServer::Password()}, true},
        // A refusal leaves the connection open for another try.
        {{"guess", SshdServer::Password()}, true},
    };
    for (const auto &row : rows) {
        SshSession session;
        Connect(session);
        bool in = false;
        for (const std::string &password : row.tried)
            in = session.AuthenticateWithPassword(password);
        const std::string tried = row.tried.back();
        EXPECT_EQ(in, row.in) << tried;
        EXPECT_EQ(session.IsAuthenticated(), row.in) << tried;
        if (!row.in) {
            EXPECT_NE(session.LastError().find("denied"), std::string::npos)
                << tried << ": " << session.LastError();
        }
    }
    // Neither a password nor the host is written anywhere under the home.
    for (const auto &entry : fs::recursive_directory_iterator(home.Home()))
        EXPECT_TRUE(entry.is_directory()) << entry.path();
}

INSTANTIATE_TEST_SUITE_P(Users,
                         SshSessionTest,
                         ::testing::Bool(),
                         [](const ::testing::TestParamInfo<bool> &info) {
                             return std::string(info.param ? "AsNobody" : "AsThisUser");
                         });
