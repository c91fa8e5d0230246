#pragma once

#include "ftp/FtpSession.h"
#include "sftp/SftpFolderClient.h"

namespace kestrin {

// What an SFTP login asks the user, in the alerts of the platform layer,
// from the worker that logs in: whether to trust a host whose key is not
// known yet (shown by type and SHA-256 fingerprint, as ssh shows it), a
// key's passphrase, the password; and the warning that a host's key changed.
class SftpQuestions
{
public:
    static SftpFolderClient::Questions ThroughAlerts(const FtpSession &session);

    enum TrustAnswer { kDoNotConnect = 0, kTrust = 1 };
};

} // namespace kestrin
