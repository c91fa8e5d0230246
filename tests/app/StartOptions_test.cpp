#include "app/StartOptions.h"

#include <gtest/gtest.h>

using kestrin::StartOptions;
using Action = StartOptions::Action;

TEST(StartOptions, OptionsAreTakenOutAndEndAtTheDoubleDash)
{
    const StartOptions show({"one", "-", "--", "--help", "-x"});
    EXPECT_EQ(show.GetAction(), Action::Show);
    EXPECT_EQ(show.Paths(), (std::vector<std::string>{"one", "-", "--help", "-x"}));
    EXPECT_EQ(show.Text(), "");

    // Help explains even a start that also names what it does not know.
    EXPECT_EQ(StartOptions({"--bogus", "--version", "-h"}).GetAction(), Action::Help);
    EXPECT_EQ(StartOptions({"--bogus", "--version"}).GetAction(), Action::Version);

    const StartOptions unknown({"one", "-x", "--bogus"});
    EXPECT_EQ(unknown.GetAction(), Action::UnknownOption);
    EXPECT_EQ(unknown.Paths(), std::vector<std::string>{"one"});
    EXPECT_EQ(unknown.Text(), "kestrin: unknown option \"-x\"\nTry \"kestrin --help\".\n");
}
