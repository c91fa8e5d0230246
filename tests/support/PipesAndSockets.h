#pragma once

// Entries that are neither files nor folders, made for real: a pipe, and a
// socket file left behind by a bound socket.

#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

inline void MakeFifo(const std::string &path)
{
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0) << path << ": " << strerror(errno);
}

// The socket is closed again at once; its entry stays, as a server's does
// when it dies without removing it.
inline void MakeSocketFile(const std::string &path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    ASSERT_LT(path.size(), sizeof address.sun_path) << path;
    memcpy(address.sun_path, path.c_str(), path.size() + 1);
    const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_GE(fd, 0) << strerror(errno);
    const int bound = bind(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address);
    const int error = errno;
    close(fd);
    ASSERT_EQ(bound, 0) << path << ": " << strerror(error);
}
