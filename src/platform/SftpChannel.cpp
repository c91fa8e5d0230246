#include "platform/SftpChannel.h"

#include "platform/SshSession.h"

#include <libssh/libssh.h>
#include <libssh/sftp.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <deque>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

// Reads kept in flight at once: the server answers while the next requests
// travel, so a download is not one round trip per chunk.
constexpr size_t kReadsInFlight = 16;
constexpr uint32_t kChunk = 64 * 1024;
// libssh 0.10 has no writes in flight: each waits for its answer. Blocks as
// big as OpenSSH's server takes (256 KiB a message, its header included) make
// those waits four times fewer.
constexpr size_t kWriteChunk = 255 * 1024;

struct FileCloser
{
    void operator()(sftp_file_struct *file) const { sftp_close(file); }
};
using RemoteFile = std::unique_ptr<sftp_file_struct, FileCloser>;

struct DescriptorCloser
{
    int fd;
    ~DescriptorCloser()
    {
        if (fd >= 0)
            close(fd);
    }
};

SftpEntry EntryOf(sftp_attributes attributes)
{
    SftpEntry entry;
    entry.name = attributes->name != nullptr ? attributes->name : "";
    switch (attributes->type) {
    case SSH_FILEXFER_TYPE_REGULAR:
        entry.kind = SftpEntry::Kind::File;
        break;
    case SSH_FILEXFER_TYPE_DIRECTORY:
        entry.kind = SftpEntry::Kind::Folder;
        break;
    case SSH_FILEXFER_TYPE_SYMLINK:
        entry.kind = SftpEntry::Kind::Link;
        break;
    default:
        entry.kind = SftpEntry::Kind::Other;
    }
    entry.size = attributes->size;
    entry.modified = time_t(attributes->mtime);
    entry.accessed = time_t(attributes->atime);
    entry.mode = mode_t(attributes->permissions & 07777);
    return entry;
}

} // namespace

SftpChannel::SftpChannel(SshSession &session)
    : fSession(session)
{}

SftpChannel::~SftpChannel()
{
    if (fSftp != nullptr)
        sftp_free(fSftp);
}

status_t SftpChannel::Failed(const std::string &what)
{
    // A cut connection leaves the last status of the server behind: a
    // plain failure would read as the server refusing.
    if (!fSession.IsConnected()) {
        fError = what + ": the connection was lost: " + fSession.LastError();
        return B_IO_ERROR;
    }
    const int code = fSftp != nullptr ? sftp_get_error(fSftp) : SSH_FX_FAILURE;
    switch (code) {
    case SSH_FX_NO_SUCH_FILE:
    case SSH_FX_NO_SUCH_PATH:
        fError = what + ": no such file or folder.";
        return B_ENTRY_NOT_FOUND;
    case SSH_FX_PERMISSION_DENIED:
        fError = what + ": permission denied.";
        return B_PERMISSION_DENIED;
    case SSH_FX_FILE_ALREADY_EXISTS:
        fError = what + ": it exists already.";
        return B_FILE_EXISTS;
    case SSH_FX_FAILURE:
        // OpenSSH's server answers a plain failure for a folder that is not
        // empty and for a name that exists.
        fError = what + ": the server refused.";
        return B_ERROR;
    default:
        fError = what + ": " + fSession.LastError();
        return B_IO_ERROR;
    }
}

status_t SftpChannel::LocalFailure(const std::string &path)
{
    const int error = errno;
    fError = path + ": " + strerror(error) + ".";
    return StatusFromErrno(error);
}

status_t SftpChannel::Open()
{
    if (fSession.Handle() == nullptr || !fSession.IsAuthenticated()) {
        fError = "Not logged in.";
        return B_NO_INIT;
    }
    fSftp = sftp_new(fSession.Handle());
    if (fSftp == nullptr || sftp_init(fSftp) != SSH_OK) {
        fError = "The server offers no SFTP: " + fSession.LastError();
        return B_IO_ERROR;
    }
    return B_OK;
}

status_t SftpChannel::RealPath(const std::string &path, std::string *absolute)
{
    char *canonical = sftp_canonicalize_path(fSftp, path.c_str());
    if (canonical == nullptr)
        return Failed(path);
    *absolute = canonical;
    ssh_string_free_char(canonical);
    return B_OK;
}

status_t SftpChannel::List(const std::string &folder, std::vector<SftpEntry> *entries)
{
    sftp_dir dir = sftp_opendir(fSftp, folder.c_str());
    if (dir == nullptr)
        return Failed(folder);
    entries->clear();
    while (sftp_attributes attributes = sftp_readdir(fSftp, dir)) {
        SftpEntry entry = EntryOf(attributes);
        sftp_attributes_free(attributes);
        if (entry.name == "." || entry.name == "..")
            continue;
        if (entry.kind == SftpEntry::Kind::Link) {
            const std::string path = folder == "/" ? "/" + entry.name : folder + "/" + entry.name;
            if (char *target = sftp_readlink(fSftp, path.c_str())) {
                entry.linkTarget = target;
                ssh_string_free_char(target);
            }
        }
        entries->push_back(std::move(entry));
    }
    const bool complete = sftp_dir_eof(dir) != 0;
    sftp_closedir(dir);
    return complete ? B_OK : Failed(folder);
}

status_t SftpChannel::Stat(const std::string &path, SftpEntry *entry)
{
    sftp_attributes attributes = sftp_lstat(fSftp, path.c_str());
    if (attributes == nullptr)
        return Failed(path);
    *entry = EntryOf(attributes);
    sftp_attributes_free(attributes);
    const size_t slash = path.find_last_of('/');
    entry->name = slash == std::string::npos ? path : path.substr(slash + 1);
    return B_OK;
}

status_t SftpChannel::MakeFolder(const std::string &path, mode_t mode)
{
    return sftp_mkdir(fSftp, path.c_str(), mode) == 0 ? B_OK : Failed(path);
}

status_t SftpChannel::RemoveFile(const std::string &path)
{
    return sftp_unlink(fSftp, path.c_str()) == 0 ? B_OK : Failed(path);
}

status_t SftpChannel::RemoveFolder(const std::string &path)
{
    return sftp_rmdir(fSftp, path.c_str()) == 0 ? B_OK : Failed(path);
}

status_t SftpChannel::Rename(const std::string &from, const std::string &to)
{
    return sftp_rename(fSftp, from.c_str(), to.c_str()) == 0 ? B_OK : Failed(from);
}

status_t SftpChannel::SetMode(const std::string &path, mode_t mode)
{
    return sftp_chmod(fSftp, path.c_str(), mode) == 0 ? B_OK : Failed(path);
}

status_t SftpChannel::SetTimes(const std::string &path, time_t accessed, time_t modified)
{
    timeval times[2] = {{accessed, 0}, {modified, 0}};
    return sftp_utimes(fSftp, path.c_str(), times) == 0 ? B_OK : Failed(path);
}

status_t SftpChannel::MakeLink(const std::string &target, const std::string &path)
{
    return sftp_symlink(fSftp, target.c_str(), path.c_str()) == 0 ? B_OK : Failed(path);
}

status_t SftpChannel::Download(const std::string &remote,
                               const std::string &local,
                               uint64_t offset,
                               const Progress &progress)
{
    RemoteFile file(sftp_open(fSftp, remote.c_str(), O_RDONLY, 0));
    if (file == nullptr)
        return Failed(remote);
    const DescriptorCloser target{open(local.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600)};
    if (target.fd < 0) {
        return LocalFailure(local);
    }
    if ((offset > 0 && sftp_seek64(file.get(), offset) != 0)
        || lseek(target.fd, off_t(offset), SEEK_SET) < 0)
        return Failed(remote);

    std::deque<uint32_t> pending;
    // One read first, twice as many after each whole block: a small file
    // takes one request and one answer, a big one soon has every read in
    // flight.
    size_t inFlight = 1;
    bool atEnd = false;
    bool shortRead = false;
    std::vector<char> buffer(kChunk);
    uint64_t done = offset;
    status_t status = B_OK;
    while (status == B_OK) {
        while (!atEnd && pending.size() < inFlight) {
            const int id = sftp_async_read_begin(file.get(), kChunk);
            if (id < 0)
                return Failed(remote);
            pending.push_back(uint32_t(id));
        }
        if (pending.empty())
            break;
        const int count = sftp_async_read(file.get(), buffer.data(), kChunk, pending.front());
        pending.pop_front();
        if (count < 0) {
            status = Failed(remote);
        } else if (count > 0 && shortRead) {
            // Data after a short answer would land at the wrong place.
            fError = remote + ": the server answered out of order.";
            status = B_IO_ERROR;
        } else if (count < int(kChunk)) {
            // Only the end of a file is answered short by a sane server.
            atEnd = true;
            shortRead = count > 0;
            if (count > 0 && write(target.fd, buffer.data(), size_t(count)) == count)
                done += uint64_t(count);
            else if (count > 0)
                status = LocalFailure(local);
        } else if (write(target.fd, buffer.data(), size_t(count)) != count) {
            status = LocalFailure(local);
        } else {
            done += uint64_t(count);
            inFlight = std::min(kReadsInFlight, inFlight * 2);
            if (progress && !progress(done))
                status = B_CANCELED;
        }
    }
    // Answers to reads still on their way are taken, so the channel stays in step.
    for (uint32_t id : pending)
        sftp_async_read(file.get(), buffer.data(), kChunk, id);
    return status;
}

status_t SftpChannel::Upload(const std::string &local,
                             const std::string &remote,
                             uint64_t offset,
                             mode_t mode,
                             const Progress &progress)
{
    const DescriptorCloser source{open(local.c_str(), O_RDONLY | O_CLOEXEC)};
    if (source.fd < 0) {
        return LocalFailure(local);
    }
    const int flags = O_WRONLY | O_CREAT | (offset == 0 ? O_TRUNC : 0);
    RemoteFile file(sftp_open(fSftp, remote.c_str(), flags, mode));
    if (file == nullptr)
        return Failed(remote);
    if ((offset > 0 && sftp_seek64(file.get(), offset) != 0)
        || lseek(source.fd, off_t(offset), SEEK_SET) < 0)
        return Failed(remote);
    std::vector<char> buffer(kWriteChunk);
    uint64_t done = offset;
    for (;;) {
        const ssize_t count = read(source.fd, buffer.data(), buffer.size());
        if (count < 0) {
            return LocalFailure(local);
        }
        if (count == 0)
            return B_OK;
        if (sftp_write(file.get(), buffer.data(), size_t(count)) != count)
            return Failed(remote);
        done += uint64_t(count);
        if (progress && !progress(done))
            return B_CANCELED;
    }
}

} // namespace platform
