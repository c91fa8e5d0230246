// The desktop's keyring, on a private session bus: GNOME Keyring's daemon
// keeps, finds, replaces and forgets secrets; without it every call says why.

#include "PrivateKeyring.h"
#include "TempHome.h"
#include "platform/Keyring.h"

#include <gtest/gtest.h>

using platform::Keyring;

namespace {

const Keyring &TestKeyring()
{
    static const Keyring keyring("org.kestrin.Kestrin.Test", {"site", "who"});
    return keyring;
}

} // namespace

TEST(Keyring, KeepsFindsReplacesAndForgetsSecrets)
{
    TempHome home;
    PrivateKeyring daemon;
    if (!daemon.Unavailable().empty())
        GTEST_SKIP() << daemon.Unavailable();
    const Keyring &keyring = TestKeyring();
    ASSERT_EQ(keyring.Unavailable(), "");

    const Keyring::Attributes one{{"site", "one"}, {"who", "me"}};
    const Keyring::Attributes other{{"site", "one"}, {"who", "you"}};
    ASSERT_EQ(keyring.Store(one, "first", "s3cret w\xc3\xb6rd"), "");
    ASSERT_EQ(keyring.Store(other, "second", "another"), "");
    EXPECT_EQ(keyring.Lookup(one).secret, "s3cret w\xc3\xb6rd");
    EXPECT_EQ(keyring.Lookup(other).secret, "another");
    // Stored again under the same attributes: replaced, not added.
    ASSERT_EQ(keyring.Store(one, "first", "changed"), "");
    EXPECT_EQ(keyring.Lookup(one).secret, "changed");

    const Keyring::Found none = keyring.Lookup({{"site", "two"}, {"who", "me"}});
    EXPECT_EQ(none.secret, std::nullopt);
    EXPECT_EQ(none.error, "");

    // Clearing by a part of the attributes clears every secret that has it.
    EXPECT_EQ(keyring.Clear({{"site", "one"}}), "");
    EXPECT_EQ(keyring.Lookup(one).secret, std::nullopt);
    EXPECT_EQ(keyring.Lookup(other).secret, std::nullopt);
    EXPECT_EQ(keyring.Clear({{"site", "one"}}), "");
}

TEST(Keyring, WithoutASecretServiceOnTheBusEveryCallSaysWhy)
{
    TempHome home;
    const std::string noBus = PrivateKeyring::UseBus();
    if (!noBus.empty())
        GTEST_SKIP() << noBus;
    const Keyring &keyring = TestKeyring();
    const std::string why = "No desktop keyring: no Secret Service (such as GNOME Keyring) "
                            "answers on the session bus.";
    EXPECT_EQ(keyring.Unavailable(), why);
    EXPECT_EQ(keyring.Store({{"site", "one"}}, "first", "secret"), why);
    const Keyring::Found found = keyring.Lookup({{"site", "one"}});
    EXPECT_EQ(found.secret, std::nullopt);
    EXPECT_EQ(found.error, why);
    EXPECT_EQ(keyring.Clear({{"site", "one"}}), why);
}
