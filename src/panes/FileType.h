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
};

} // namespace kestrin
