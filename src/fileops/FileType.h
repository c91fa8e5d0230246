#pragma once

#include <string>

namespace kestrin {

// The type of a file as Kestrin decides it: the BEOS:TYPE attribute when the
// file carries one, else what the shared MIME database finds from the name
// and the content.
class FileType
{
public:
    static std::string Of(const std::string &path);
    // Works the type out from the content again and keeps it in the
    // BEOS:TYPE attribute where the file system allows; answers the type.
    static std::string Identify(const std::string &path);
    // The short description of a type (the MIME database's comment);
    // empty for a type the database does not know.
    static std::string Description(const std::string &type);
    // Whether `type` is what the database answers when it knows nothing.
    static bool IsUnknown(const std::string &type);
};

} // namespace kestrin
