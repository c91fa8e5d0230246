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
    // Whether files of this type open as archives in a pane: the kinds
    // libarchive reads that people meet (zip, tar and its compressed forms,
    // 7z, ISO images, cpio, ar and Debian packages, rar). Formats built on
    // zip (office documents, Java archives) are documents, not archives.
    static bool IsArchive(const std::string &type);
    // The short description of a type (the MIME database's comment);
    // empty for a type the database does not know.
    static std::string Description(const std::string &type);
    // Whether `type` is what the database answers when it knows nothing.
    static bool IsUnknown(const std::string &type);
};

} // namespace kestrin
