#pragma once

#include "platform/Errors.h"
#include "platform/TypeCodes.h"

#include <string>
#include <sys/types.h>
#include <vector>

struct attr_info
{
    type_code type = 0;
    off_t size = 0; // of the data alone
};

namespace platform {

class Entry;

// The attributes of one node (BNode), kept in Linux extended attributes the
// way Haiku's own tools keep them there: attribute NAME lives in the xattr
// "user.haiku." + NAME (with "/" written "%\" and "%" written "%%"), whose
// value is the type code, 4 bytes little-endian, followed by the data. Every
// other xattr, and a "user.haiku." one that does not follow that form, is an
// attribute of type B_XATTR_TYPE under its full xattr name, read and written
// byte for byte. A link's own attributes are meant, never its target's.
class Node
{
public:
    Node() = default;
    explicit Node(const std::string &path);

    status_t SetTo(const std::string &path);
    status_t SetTo(const Entry &entry);
    status_t InitCheck() const { return fStatus; }
    void Unset();

    // A file system without extended attributes has no attributes: B_OK and
    // an empty list. A name that both conventions produce is listed once.
    status_t GetAttrNames(std::vector<std::string> *names) const;
    status_t GetAttrInfo(const std::string &name, attr_info *info) const;

    // `type` is not checked on reading, as on BeOS. Answers the bytes copied
    // (0 past the end) or a negative status.
    ssize_t ReadAttr(
        const std::string &name, type_code type, off_t offset, void *buffer, size_t size) const;
    // At offset 0 the whole attribute is replaced; further on, the data
    // before `offset` is kept (a gap reads as zeros) and the type is set, so
    // an attribute can be written in chunks. Answers `size` or a negative
    // status; a file system refuses values beyond its limit (ext4: about
    // 4 KB, any: 64 KB).
    ssize_t WriteAttr(
        const std::string &name, type_code type, off_t offset, const void *buffer, size_t size);
    status_t RemoveAttr(const std::string &name);

    // The value up to its first NUL, whatever its type.
    status_t ReadAttrString(const std::string &name, std::string *value) const;
    // Stored NUL-terminated, as BeOS stores strings.
    status_t WriteAttrString(const std::string &name,
                             const std::string &value,
                             type_code type = B_STRING_TYPE);

private:
    struct Attribute
    {
        type_code type = 0;
        std::string data;
    };

    status_t Load(const std::string &name, Attribute *attribute) const;
    status_t ReadXattr(const std::string &xattr, std::string *value) const;

    std::string fPath;
    status_t fStatus = B_NO_INIT;
};

} // namespace platform
