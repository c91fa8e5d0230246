#include "ScriptedServer.h"

#include <algorithm>
#include <cstdio>

using platform::SocketAddress;
using platform::TcpSocket;

namespace {

constexpr uint32_t kLoopback = 0x7f000001;

} // namespace

void ScriptedServer::Session::Send(const std::string &bytes)
{
    fControl->SendAll(bytes.data(), bytes.size());
}

std::string ScriptedServer::Session::ReadLine()
{
    for (;;) {
        std::string line = NextLine();
        if (line.rfind("AUTH ", 0) != 0)
            return line;
        Send("502 AUTH not understood\r\n");
    }
}

void ScriptedServer::Session::Answer(const std::string &reply)
{
    ReadLine();
    Send(reply);
}

unsigned ScriptedServer::Session::ReadPort()
{
    unsigned h[6] = {};
    const std::string line = ReadLine();
    if (sscanf(line.c_str(), "PORT %u,%u,%u,%u,%u,%u", &h[0], &h[1], &h[2], &h[3], &h[4], &h[5])
        != 6)
        return 0;
    return h[4] * 256 + h[5];
}

std::string ScriptedServer::Session::NextLine()
{
    for (;;) {
        const size_t end = fBuffered.find('\n');
        if (end != std::string::npos) {
            std::string line = fBuffered.substr(0, end + 1);
            fBuffered.erase(0, end + 1);
            std::lock_guard<std::mutex> guard(fServer->fLock);
            fServer->fReceived.push_back(line);
            return line;
        }
        if (fControl->WaitReady(true, kWaitSeconds, 0) != B_OK)
            return {};
        char chunk[4096];
        const ssize_t received = fControl->Receive(chunk, sizeof chunk);
        if (received <= 0)
            return {};
        fBuffered.append(chunk, size_t(received));
    }
}

unsigned ScriptedServer::Session::ListenForData(TcpSocket *listener)
{
    SocketAddress local;
    if (listener->Open() != B_OK || listener->BindEphemeral(kLoopback) != B_OK
        || listener->Listen(1) != B_OK || listener->LocalAddress(&local) != B_OK)
        return 0;
    return local.port;
}

bool ScriptedServer::Session::AcceptData(TcpSocket *listener, TcpSocket *data)
{
    return listener->WaitReady(true, kWaitSeconds, 0) == B_OK && listener->Accept(data) == B_OK;
}

bool ScriptedServer::Session::ConnectData(unsigned port, TcpSocket *data)
{
    return data->Connect(SocketAddress{kLoopback, uint16_t(port)}, int(kWaitSeconds * 1000))
           == B_OK;
}

bool ScriptedServer::Session::AcceptPassiveData(TcpSocket *data)
{
    ReadLine(); // PASV
    TcpSocket listener;
    const unsigned port = ListenForData(&listener);
    Send("227 Entering Passive Mode (" + PassiveNumbers("127.0.0.1", port) + ").\r\n");
    return AcceptData(&listener, data);
}

bool ScriptedServer::Session::SendPassiveData(TcpSocket *data)
{
    if (!AcceptPassiveData(data))
        return false;
    Answer("150 here\r\n");
    return true;
}

void ScriptedServer::Session::AnswerFeatures(const std::string &reply)
{
    Answer(reply); // to FEAT
}

void ScriptedServer::Session::WaitForClose()
{
    for (std::string line = ReadLine(); !line.empty(); line = ReadLine()) {
        if (line.rfind("QUIT", 0) == 0)
            Send("221 bye\r\n");
    }
}

ScriptedServer::ScriptedServer(Script script)
    : ScriptedServer(std::vector<Script>{std::move(script)})
{}

ScriptedServer::ScriptedServer(std::vector<Script> scripts)
    : fScripts(std::move(scripts))
{
    SocketAddress local;
    if (fListener.Open() == B_OK && fListener.BindEphemeral(kLoopback) == B_OK
        && fListener.Listen(1) == B_OK && fListener.LocalAddress(&local) == B_OK)
        fPort = local.port;
    fThread = std::thread([this] { Run(); });
}

ScriptedServer::~ScriptedServer()
{
    Finish();
}

void ScriptedServer::Run()
{
    for (const Script &script : fScripts) {
        TcpSocket control;
        if (fListener.WaitReady(true, kWaitSeconds, 0) != B_OK || fListener.Accept(&control) != B_OK)
            return;
        Session session(this, &control);
        script(session);
    }
}

std::vector<std::string> ScriptedServer::Finish()
{
    if (fThread.joinable())
        fThread.join();
    std::lock_guard<std::mutex> guard(fLock);
    return fReceived;
}

unsigned ClosedPort()
{
    TcpSocket closed;
    SocketAddress local;
    if (closed.Open() != B_OK || closed.BindEphemeral(kLoopback) != B_OK
        || closed.LocalAddress(&local) != B_OK)
        return 0;
    return local.port;
}

std::string PassiveNumbers(const std::string &host, unsigned port)
{
    std::string numbers = host;
    std::replace(numbers.begin(), numbers.end(), '.', ',');
    return numbers + "," + std::to_string(port / 256) + "," + std::to_string(port % 256);
}

void ScriptedServer::SilentAfterTheFirstBlock(Session &s)
{
    s.Send("220 hi\r\n");
    // USER, PASS, FEAT, CWD /x, TYPE I
    for (const char *reply : {"331 pass\r\n",
                              "230 in\r\n",
                              "502 Command not implemented.\r\n",
                              "250 ok\r\n",
                              "200 ok\r\n"})
        s.Answer(reply);
    s.Answer("213 100000\r\n"); // SIZE f
    platform::TcpSocket data;
    if (!s.SendPassiveData(&data))
        return;
    data.SendAll(std::string(1000, 'x').data(), 1000);
    s.ReadLine();
}
