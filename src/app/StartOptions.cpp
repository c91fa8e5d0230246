#include "app/StartOptions.h"

#include "app/AppInfo.h"

namespace kestrin {

StartOptions::StartOptions(const std::vector<std::string> &arguments)
{
    bool help = false;
    bool version = false;
    bool optionsEnded = false;
    for (const std::string &argument : arguments) {
        // A lone dash names nothing Kestrin knows, but it is no option either.
        if (optionsEnded || argument.size() < 2 || argument[0] != '-') {
            fPaths.push_back(argument);
        } else if (argument == "--") {
            optionsEnded = true;
        } else if (argument == "-h" || argument == "--help") {
            help = true;
        } else if (argument == "--version") {
            version = true;
        } else if (fUnknownOption.empty()) {
            fUnknownOption = argument;
        }
    }
    if (help)
        fAction = Action::Help;
    else if (version)
        fAction = Action::Version;
    else if (!fUnknownOption.empty())
        fAction = Action::UnknownOption;
}

std::string StartOptions::Text() const
{
    switch (fAction) {
    case Action::Help:
        return Usage();
    case Action::Version:
        return VersionLine();
    case Action::UnknownOption:
        return "kestrin: unknown option \"" + fUnknownOption + "\"\nTry \"kestrin --help\".\n";
    case Action::Show:
        break;
    }
    return std::string();
}

std::string StartOptions::Usage()
{
    return "Usage: kestrin [OPTION]... [FOLDER|FILE|URL]...\n"
           "Shows each folder in the focused pane, the last one staying there; a file\n"
           "shows its folder with the file selected. Paths and file:// URLs are taken.\n"
           "When Kestrin is already running, they are handed to it and this start ends.\n"
           "\n"
           "  -h, --help     print this help and exit\n"
           "      --version  print the version and exit\n"
           "      --         end of the options: what follows is shown as it is\n";
}

std::string StartOptions::VersionLine()
{
    return std::string(kProductName) + " " + kVersion + "\n";
}

} // namespace kestrin
