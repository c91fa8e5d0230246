#pragma once

#include "ftp/FtpSession.h"

#include <optional>
#include <string>

namespace kestrin {

// One end of a transfer, as the pane that shows it describes it: what kind
// of place it is, the folder (a local folder, the folder the results or the
// archive stand in, or the folder on the server) and, on a server, the
// session that reaches it. The transfer planner decides on these alone.
struct TransferPlace
{
    // An SFTP folder's session is stored as an FTP one's is, with the same
    // six keys.
    enum class Kind { Folder, QueryResults, FtpFolder, Archive, SftpFolder };

    Kind kind = Kind::Folder;
    std::string folder;
    std::optional<FtpSession> server;

    static TransferPlace LocalFolder(std::string path)
    {
        return {Kind::Folder, std::move(path), {}};
    }
};

} // namespace kestrin
