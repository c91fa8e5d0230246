#include "ScriptedServer.h"

#include <algorithm>

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

bool ScriptedServer::Session::SendPassiveData(TcpSocket *data)
{
    ReadLine(); // PASV
    TcpSocket listener;
    const unsigned port = ListenForData(&listener);
    Send("227 Entering Passive Mode (" + PassiveNumbers("127.0.0.1", port) + ").\r\n");
    if (!AcceptData(&listener, data))
        return false;
    ReadLine();
    Send("150 here\r\n");
    return true;
}

void ScriptedServer::Session::AnswerFeatures(const std::string &reply)
{
    ReadLine(); // FEAT
    Send(reply);
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

std::string PassiveNumbers(const std::string &host, unsigned port)
{
    std::string numbers = host;
    std::replace(numbers.begin(), numbers.end(), '.', ',');
    return numbers + "," + std::to_string(port / 256) + "," + std::to_string(port % 256);
}

void ScriptedServer::SilentAfterTheFirstBlock(Session &s)
{
    s.Send("220 hi\r\n");
    for (const char *reply : {"331 pass\r\n", "230 in\r\n"}) {
        s.ReadLine(); // USER, PASS
        s.Send(reply);
    }
    s.AnswerFeatures();
    for (const char *reply : {"250 ok\r\n", "200 ok\r\n"}) {
        s.ReadLine(); // CWD /x, TYPE I
        s.Send(reply);
    }
    s.ReadLine(); // SIZE f
    s.Send("213 100000\r\n");
    platform::TcpSocket data;
    if (!s.SendPassiveData(&data))
        return;
    data.SendAll(std::string(1000, 'x').data(), 1000);
    s.ReadLine();
}
