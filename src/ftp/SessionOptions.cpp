#include "ftp/SessionOptions.h"

namespace kestrin {

std::string SessionOptions::FileNameOf(const std::string &sessionFile)
{
    return sessionFile + ".kestrin";
}

SessionOptions SessionOptions::Read(const std::string &sessionFile)
{
    SessionOptions options;
    options.fFile = SideFile::Read(FileNameOf(sessionFile));
    return options;
}

bool SessionOptions::Remove(const std::string &sessionFile)
{
    return SideFile::Remove(FileNameOf(sessionFile));
}

std::string SessionOptions::Get(const std::string &key) const
{
    return fFile.Get(key);
}

void SessionOptions::Set(const std::string &key, const std::string &value)
{
    fFile.Set(key, value);
}

bool SessionOptions::Write() const
{
    return fFile.Write();
}

} // namespace kestrin
