#include "InetdListener.h"

#include <arpa/inet.h>
#include <csignal>
#include <fcntl.h>
#include <netinet/in.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

InetdListener::InetdListener(std::vector<std::string> argv, std::string log)
    : fArgv(std::move(argv))
    , fLog(std::move(log))
{}

InetdListener::~InetdListener()
{
    Stop();
}

bool InetdListener::Start(unsigned port)
{
    if (fThread.joinable() || !Listen(port))
        return false;
    fStop = false;
    fThread = std::thread([this] { Serve(); });
    return true;
}

bool InetdListener::Listen(unsigned port)
{
    if (fListener.Open() != B_OK)
        return false;
    const int reuse = 1;
    setsockopt(fListener.FD(), SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(uint16_t(port));
    platform::SocketAddress local;
    if (bind(fListener.FD(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0
        || fListener.Listen(8) != B_OK || fListener.LocalAddress(&local) != B_OK) {
        fListener.Close();
        return false;
    }
    fPort = local.port;
    return true;
}

void InetdListener::Stop()
{
    fStop = true;
    if (fThread.joinable())
        fThread.join();
    fListener.Close();
    DropSessions();
}

void InetdListener::DropSessions()
{
    std::lock_guard<std::mutex> guard(fLock);
    for (pid_t child : fChildren) {
        // The child leads its session's process group.
        kill(-child, SIGKILL);
        waitpid(child, nullptr, 0);
    }
    fChildren.clear();
}

void InetdListener::Serve()
{
    while (!fStop) {
        if (fListener.WaitReady(true, 0, 100000) != B_OK)
            continue;
        platform::TcpSocket connection;
        if (fListener.Accept(&connection) == B_OK)
            Spawn(connection);
    }
}

void InetdListener::Spawn(const platform::TcpSocket &connection)
{
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, connection.FD(), 0);
    posix_spawn_file_actions_adddup2(&actions, connection.FD(), 1);
    posix_spawn_file_actions_addopen(&actions, 2, fLog.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    posix_spawnattr_setpgroup(&attributes, 0);
    std::vector<char *> argv;
    for (const std::string &argument : fArgv)
        argv.push_back(const_cast<char *>(argument.c_str()));
    argv.push_back(nullptr);
    pid_t child = 0;
    if (posix_spawn(&child, argv[0], &actions, &attributes, argv.data(), environ) == 0) {
        std::lock_guard<std::mutex> guard(fLock);
        fChildren.push_back(child);
        fServed++;
    }
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
}
