#pragma once

#include "platform/Errors.h"

#include <cstdint>
#include <ctime>
#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

struct sftp_session_struct;

namespace platform {

class SshSession;

// One entry of a remote folder, with what a pane and Get Info show of it.
struct SftpEntry
{
    enum class Kind { File, Folder, Link, Other };
    std::string name;
    Kind kind = Kind::Other;
    uint64_t size = 0;
    time_t modified = 0;
    time_t accessed = 0;
    mode_t mode = 0; // the permission bits
    std::string linkTarget;
};

// The SFTP subsystem over an authenticated SshSession: what a pane and a
// transfer ask of a server. Calls answer B_OK or a status: B_ENTRY_NOT_FOUND,
// B_PERMISSION_DENIED, B_FILE_EXISTS, B_CANCELED when the progress callback
// said stop, B_IO_ERROR when the connection failed (Error() then has the
// server's or libssh's words).
//
// Used by one thread at a time, with its session.
class SftpChannel
{
public:
    explicit SftpChannel(SshSession &session);
    ~SftpChannel();
    SftpChannel(const SftpChannel &) = delete;
    SftpChannel &operator=(const SftpChannel &) = delete;

    status_t Open();
    std::string Error() const { return fError; }
    // For a failure the caller finds in what the server answered.
    void SetError(std::string error) { fError = std::move(error); }

    // The absolute form of `path` ("." is the login folder).
    status_t RealPath(const std::string &path, std::string *absolute);
    // Every entry of `folder` but "." and "..", links described as links.
    status_t List(const std::string &folder, std::vector<SftpEntry> *entries);
    // The entry itself, a link not followed.
    status_t Stat(const std::string &path, SftpEntry *entry);
    status_t MakeFolder(const std::string &path, mode_t mode);
    status_t RemoveFile(const std::string &path);
    status_t RemoveFolder(const std::string &path);
    status_t Rename(const std::string &from, const std::string &to);
    status_t SetMode(const std::string &path, mode_t mode);
    status_t SetTimes(const std::string &path, time_t accessed, time_t modified);
    status_t MakeLink(const std::string &target, const std::string &path);

    // Told the bytes moved so far; answering false stops the transfer.
    using Progress = std::function<bool(uint64_t done)>;
    // Copies the remote file into the local one from `offset` on (0 for a
    // whole file, the local size to resume); the local file is created or
    // extended, never cut.
    status_t Download(const std::string &remote,
                      const std::string &local,
                      uint64_t offset,
                      const Progress &progress);
    // Copies the local file to the remote one from `offset` on; the remote
    // file is created (mode `mode`) or written from `offset`.
    status_t Upload(const std::string &local,
                    const std::string &remote,
                    uint64_t offset,
                    mode_t mode,
                    const Progress &progress);

private:
    status_t Failed(const std::string &what);
    status_t LocalFailure(const std::string &path);

    SshSession &fSession;
    sftp_session_struct *fSftp = nullptr;
    std::string fError;
};

} // namespace platform
