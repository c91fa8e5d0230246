#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace platform {

// The desktop's keyring: whatever keeps secrets for the programs of the
// user's session on its D-Bus session bus (the freedesktop.org Secret
// Service: GNOME Keyring, KeePassXC, KWallet's bridge), reached through
// libsecret. A secret is stored in the keyring's default collection and
// found again by the schema's name and its attribute values.
//
// Every call talks to the bus and waits for the answer, and for the user
// when the keyring asks to be unlocked: never call one on the GUI thread.
// Each call opens a session with the keyring of its own, so a keyring that
// was started, stopped or restarted since the last call is seen as it is.
class Keyring
{
public:
    using Attributes = std::vector<std::pair<std::string, std::string>>;

    // The secrets of one kind: the schema's name (a reverse domain name) and
    // the names of every attribute its secrets may carry.
    Keyring(std::string schema, std::vector<std::string> attributeNames);
    ~Keyring();

    Keyring(const Keyring &) = delete;
    Keyring &operator=(const Keyring &) = delete;

    // Empty when a keyring answers on the session bus; else why there is
    // none, in words for the user.
    std::string Unavailable() const;

    // Stores `secret` under `attributes`, replacing a secret stored under
    // the same ones; `label` is what the desktop's keyring manager shows.
    // Empty, or why it could not.
    std::string Store(const Attributes &attributes,
                      const std::string &label,
                      const std::string &secret) const;

    struct Found
    {
        // The secret; none when nothing is stored under the attributes or
        // the keyring could not be asked.
        std::optional<std::string> secret;
        // Why the keyring could not be asked; empty when it answered.
        std::string error;
    };
    Found Lookup(const Attributes &attributes) const;

    // Removes every secret whose attributes include `attributes` (none
    // stored is no failure). Empty, or why it could not.
    std::string Clear(const Attributes &attributes) const;

private:
    struct Schema;
    std::unique_ptr<Schema> fSchema;
};

} // namespace platform
