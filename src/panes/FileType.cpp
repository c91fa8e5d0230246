#include "panes/FileType.h"

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

} // namespace kestrin
