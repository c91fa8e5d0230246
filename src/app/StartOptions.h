#pragma once

#include <string>
#include <vector>

namespace kestrin {

// What one start of Kestrin is asked for by its arguments (argv[1] on): the
// folders, files or URLs to show, or help or the version. Options end at
// "--"; what follows is shown even when it starts with a dash. Help wins over
// the version, and both over an option Kestrin does not know, so that
// `kestrin --bogus --help` still explains itself.
class StartOptions
{
public:
    enum class Action { Show, Help, Version, UnknownOption };

    explicit StartOptions(const std::vector<std::string> &arguments);

    Action GetAction() const { return fAction; }
    // Every argument that is not an option, in order.
    const std::vector<std::string> &Paths() const { return fPaths; }

    // What to print: the usage for help, one line for the version (both on
    // standard output), and what went wrong for an unknown option (on
    // standard error).
    std::string Text() const;

    static std::string Usage();
    static std::string VersionLine();

private:
    Action fAction = Action::Show;
    std::vector<std::string> fPaths;
    std::string fUnknownOption; // the first one
};

} // namespace kestrin
