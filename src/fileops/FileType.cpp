#include "fileops/FileType.h"

#include "platform/Node.h"

#include <QMimeDatabase>

namespace kestrin {

std::string FileType::Of(const std::string &path)
{
    std::string type;
    if (platform::Node(path).ReadAttrString("BEOS:TYPE", &type) == B_OK && !type.empty())
        return type;
    static const QMimeDatabase database;
    return database.mimeTypeForFile(QString::fromUtf8(path.c_str())).name().toStdString();
}

std::string FileType::Identify(const std::string &path)
{
    static const QMimeDatabase database;
    const std::string type = database
                                 .mimeTypeForFile(QString::fromUtf8(path.c_str()),
                                                  QMimeDatabase::MatchContent)
                                 .name()
                                 .toStdString();
    platform::Node node(path);
    if (node.InitCheck() == B_OK)
        node.WriteAttrString("BEOS:TYPE", type, B_MIME_STRING_TYPE);
    return type;
}

bool FileType::IsArchive(const std::string &type)
{
    static const char *const kArchives[] = {
        "Zip File",
        "application/zip",
        "application/x-tar",
        "application/x-compressed-tar",
        "application/x-bzip-compressed-tar",
        "application/x-bzip2-compressed-tar",
        "application/x-xz-compressed-tar",
        "application/x-zstd-compressed-tar",
        "application/x-lzma-compressed-tar",
        "application/x-tarz",
        "application/x-7z-compressed",
        "application/x-iso9660-image",
        "application/x-cd-image",
        "application/x-cpio",
        "application/x-archive",
        "application/vnd.debian.binary-package",
        "application/vnd.rar",
        "application/x-rar",
    };
    for (const char *archive : kArchives) {
        if (type == archive)
            return true;
    }
    return false;
}

std::string FileType::Description(const std::string &type)
{
    static const QMimeDatabase database;
    const QMimeType known = database.mimeTypeForName(QString::fromStdString(type));
    return known.isValid() ? known.comment().toStdString() : std::string();
}

bool FileType::IsUnknown(const std::string &type)
{
    // shared-mime-info's default type, given to anything it cannot place.
    return type.empty() || type == "application/octet-stream";
}

} // namespace kestrin
