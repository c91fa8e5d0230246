#pragma once

#include "SshdServer.h"
#include "TempHome.h"
#include "ftp/FtpSession.h"
#include "sftp/SftpRequest.h"

#include <filesystem>
#include <gtest/gtest.h>

// A session "box" on a private sshd, from a home of its own with an empty
// ~/.ssh and no agent: each test chooses how the user gets in.
class SshdSessionTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!server.Unavailable().empty())
            GTEST_SKIP() << server.Unavailable();
        server.PrepareHome(home, SshdServer::Trust::Nothing);
        session.name = "box";
        session.host = "127.0.0.1";
        session.port = std::to_string(server.Port());
        session.user = SshdServer::User();
        session.remoteDir = server.Scratch();
    }

    void InstallUserKey()
    {
        std::filesystem::copy_file(server.UserKey(),
                                   home.Home() + "/.ssh/id_ed25519",
                                   std::filesystem::copy_options::overwrite_existing);
    }

    static kestrin::SftpRequest Request(kestrin::SftpRequest::Step step,
                                        const std::string &base,
                                        const std::string &name = {})
    {
        kestrin::SftpRequest request;
        request.step = step;
        request.base = base;
        request.name = name;
        return request;
    }

    TempHome home;
    SshdServer server;
    kestrin::FtpSession session;
};
