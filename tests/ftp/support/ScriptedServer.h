#pragma once

#include "platform/TcpSocket.h"

#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

// FTP conversations on 127.0.0.1, played by scripts on a thread of its own:
// it accepts one control connection per script, one after the other, and
// hands each to its script. Every wait is bounded, so a client that
// misbehaves ends the scripts in seconds.
class ScriptedServer
{
public:
    class Session
    {
    public:
        explicit Session(ScriptedServer *server, platform::TcpSocket *control)
            : fServer(server)
            , fControl(control)
        {}

        void Send(const std::string &bytes);
        // The next line from the client with its line end, recorded; "" when
        // none came in time or the client closed. Like the old servers the
        // scripts play, the session knows no TLS: it refuses AUTH itself
        // (502), and the script reads on from the USER that follows.
        std::string ReadLine();
        // Reads the client's next line and sends `reply` to it.
        void Answer(const std::string &reply);
        // Reads a PORT command and gives the port it names, 0 when none.
        unsigned ReadPort();
        // A listening socket on 127.0.0.1 for a passive data connection.
        unsigned ListenForData(platform::TcpSocket *listener);
        bool AcceptData(platform::TcpSocket *listener, platform::TcpSocket *data);
        bool ConnectData(unsigned port, platform::TcpSocket *data);
        // Answers the client's PASV with a data connection on 127.0.0.1 and
        // takes it.
        bool AcceptPassiveData(platform::TcpSocket *data);
        // That, and answers the LIST (or RETR) that follows with 150.
        bool SendPassiveData(platform::TcpSocket *data);
        // Answers the FEAT a client asks once logged in: by default, as a
        // server that offers nothing beyond RFC 959.
        void AnswerFeatures(const std::string &reply = "502 Command not implemented.\r\n");
        // Answers QUIT and waits for the client to close the connection.
        void WaitForClose();

    private:
        std::string NextLine();

        ScriptedServer *fServer;
        platform::TcpSocket *fControl;
        std::string fBuffered;
    };

    using Script = std::function<void(Session &)>;

    explicit ScriptedServer(Script script);
    explicit ScriptedServer(std::vector<Script> scripts);
    ~ScriptedServer();

    unsigned Port() const { return fPort; }
    // Ends the conversations (waits for the scripts) and gives every line the
    // client sent.
    std::vector<std::string> Finish();

    static constexpr long kWaitSeconds = 5;

    // A download that stalls: a login, the first 1,000 bytes of file "f" in
    // folder "/x" (of 100,000 announced), then nothing until the client
    // hangs up or the wait ends.
    static void SilentAfterTheFirstBlock(Session &s);

private:
    void Run();

    std::vector<Script> fScripts;
    platform::TcpSocket fListener;
    unsigned fPort = 0;
    std::mutex fLock;
    std::vector<std::string> fReceived;
    std::thread fThread;
};

// "h1,h2,h3,h4,p1,p2" for 127.0.0.1 or another address and a port.
std::string PassiveNumbers(const std::string &host, unsigned port);

// A port on 127.0.0.1 that nothing listens on: bound, and let go at once.
unsigned ClosedPort();
