#pragma once

#include "CopyTestSupport.h"
#include "SshdServer.h"

// A copy test against sshd on 127.0.0.1, whose key the home's ssh trusts and
// whose host it knows; skipped where sshd cannot run.
class SftpCopyTest : public CopyTest
{
protected:
    void SetUp() override
    {
        if (!server.Unavailable().empty())
            GTEST_SKIP() << server.Unavailable();
        server.PrepareHome(home, SshdServer::Trust::KeyAndHost);
        remote = server.Scratch();
    }

    // A request of the stored session "box" for `folder` on the server.
    platform::Message SftpRequest(uint32_t what, const std::string &folder) const
    {
        platform::Message request(what);
        request.AddString("Session", "box");
        request.AddString("Host", "127.0.0.1");
        request.AddString("User", SshdServer::User());
        request.AddString("Password", "");
        request.AddString("FtpPath", folder);
        request.AddInt32("Port", int32_t(server.Port()));
        return request;
    }

    SshdServer server;
    std::string remote;
};
