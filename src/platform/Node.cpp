#include "platform/Node.h"

#include "platform/Entry.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <set>
#include <sys/stat.h>
#include <sys/xattr.h>

namespace platform {

namespace {

constexpr char kTypedPrefix[] = "user.haiku.";
constexpr size_t kTypedPrefixLength = sizeof(kTypedPrefix) - 1;
constexpr size_t kTypeHeaderSize = 4;
// XATTR_NAME_MAX of linux/limits.h, which would clash with sys/xattr.h.
constexpr size_t kMaxXattrName = 255;

std::string Escape(const std::string &name)
{
    std::string escaped;
    escaped.reserve(name.size());
    for (char c : name) {
        if (c == '/')
            escaped += "%\\";
        else if (c == '%')
            escaped += "%%";
        else
            escaped += c;
    }
    return escaped;
}

// False for anything Escape cannot have produced, so such a name stays an
// untyped xattr rather than turning into a name that maps somewhere else.
bool Unescape(const std::string &escaped, std::string *name)
{
    name->clear();
    for (size_t i = 0; i < escaped.size(); i++) {
        if (escaped[i] != '%') {
            *name += escaped[i];
            continue;
        }
        if (i + 1 == escaped.size())
            return false;
        const char next = escaped[++i];
        if (next == '\\')
            *name += '/';
        else if (next == '%')
            *name += '%';
        else
            return false;
    }
    return !name->empty();
}

std::string TypedXattrName(const std::string &name)
{
    return kTypedPrefix + Escape(name);
}

void PutTypeHeader(type_code type, std::string *value)
{
    for (size_t i = 0; i < kTypeHeaderSize; i++)
        (*value)[i] = char((type >> (8 * i)) & 0xff);
}

type_code GetTypeHeader(const std::string &value)
{
    type_code type = 0;
    for (size_t i = 0; i < kTypeHeaderSize; i++)
        type |= type_code(uint8_t(value[i])) << (8 * i);
    return type;
}

bool IsMissing(status_t status)
{
    // No such xattr, a name outside every namespace, or no xattrs at all.
    return status == B_ENTRY_NOT_FOUND || status == B_UNSUPPORTED;
}

} // namespace

Node::Node(const std::string &path)
{
    SetTo(path);
}

status_t Node::SetTo(const std::string &path)
{
    Unset();
    if (path.empty())
        return fStatus = B_BAD_VALUE;
    struct stat info;
    if (lstat(path.c_str(), &info) != 0)
        return fStatus = LastError();
    fPath = path;
    return fStatus = B_OK;
}

status_t Node::SetTo(const Entry &entry)
{
    std::string path;
    if (status_t status = entry.GetPath(&path); status != B_OK) {
        Unset();
        return fStatus = status;
    }
    return SetTo(path);
}

void Node::Unset()
{
    fPath.clear();
    fStatus = B_NO_INIT;
}

status_t Node::ReadXattr(const std::string &xattr, std::string *value) const
{
    // The value may grow between asking its size and reading it.
    for (;;) {
        const ssize_t size = lgetxattr(fPath.c_str(), xattr.c_str(), nullptr, 0);
        if (size < 0)
            return LastError();
        value->resize(size_t(size));
        const ssize_t read = lgetxattr(fPath.c_str(), xattr.c_str(), value->data(), value->size());
        if (read >= 0) {
            value->resize(size_t(read));
            return B_OK;
        }
        if (errno != ERANGE)
            return LastError();
    }
}

status_t Node::Load(const std::string &name, Attribute *attribute) const
{
    if (fStatus != B_OK)
        return B_NO_INIT;
    if (name.empty())
        return B_BAD_VALUE;

    const std::string typed = TypedXattrName(name);
    std::string value;
    if (typed.size() <= kMaxXattrName) {
        const status_t status = ReadXattr(typed, &value);
        if (status == B_OK && value.size() >= kTypeHeaderSize) {
            attribute->type = GetTypeHeader(value);
            attribute->data = value.substr(kTypeHeaderSize);
            return B_OK;
        }
        if (status != B_OK && !IsMissing(status))
            return status;
    }

    const status_t status = ReadXattr(name, &value);
    if (status != B_OK)
        return IsMissing(status) ? B_ENTRY_NOT_FOUND : status;
    attribute->type = B_XATTR_TYPE;
    attribute->data = std::move(value);
    return B_OK;
}

status_t Node::GetAttrNames(std::vector<std::string> *names) const
{
    if (fStatus != B_OK)
        return B_NO_INIT;
    if (!names)
        return B_BAD_VALUE;
    names->clear();

    std::string list;
    for (;;) {
        const ssize_t size = llistxattr(fPath.c_str(), nullptr, 0);
        if (size < 0)
            return errno == ENOTSUP ? B_OK : LastError();
        list.resize(size_t(size));
        const ssize_t read = llistxattr(fPath.c_str(), list.data(), list.size());
        if (read >= 0) {
            list.resize(size_t(read));
            break;
        }
        if (errno != ERANGE)
            return LastError();
    }

    std::set<std::string> seen;
    for (size_t start = 0; start < list.size();) {
        size_t end = list.find('\0', start);
        if (end == std::string::npos)
            end = list.size();
        const std::string xattr = list.substr(start, end - start);
        start = end + 1;
        if (xattr.empty())
            continue;

        std::string name = xattr;
        if (xattr.compare(0, kTypedPrefixLength, kTypedPrefix) == 0) {
            std::string decoded;
            const ssize_t size = lgetxattr(fPath.c_str(), xattr.c_str(), nullptr, 0);
            if (Unescape(xattr.substr(kTypedPrefixLength), &decoded)
                && size >= ssize_t(kTypeHeaderSize))
                name = std::move(decoded);
        }
        if (seen.insert(name).second)
            names->push_back(std::move(name));
    }
    return B_OK;
}

status_t Node::GetAttrInfo(const std::string &name, attr_info *info) const
{
    if (!info)
        return B_BAD_VALUE;
    Attribute attribute;
    if (status_t status = Load(name, &attribute); status != B_OK)
        return status;
    info->type = attribute.type;
    info->size = off_t(attribute.data.size());
    return B_OK;
}

ssize_t Node::ReadAttr(
    const std::string &name, type_code /*type*/, off_t offset, void *buffer, size_t size) const
{
    if (offset < 0 || (!buffer && size > 0))
        return B_BAD_VALUE;
    Attribute attribute;
    if (status_t status = Load(name, &attribute); status != B_OK)
        return status;
    if (size_t(offset) >= attribute.data.size())
        return 0;
    const size_t count = std::min(size, attribute.data.size() - size_t(offset));
    memcpy(buffer, attribute.data.data() + offset, count);
    return ssize_t(count);
}

ssize_t Node::WriteAttr(
    const std::string &name, type_code type, off_t offset, const void *buffer, size_t size)
{
    if (fStatus != B_OK)
        return B_NO_INIT;
    if (name.empty() || offset < 0 || (!buffer && size > 0))
        return B_BAD_VALUE;

    const bool raw = type == B_XATTR_TYPE;
    const std::string xattr = raw ? name : TypedXattrName(name);
    if (xattr.size() > kMaxXattrName)
        return B_NAME_TOO_LONG;
    const size_t header = raw ? 0 : kTypeHeaderSize;

    std::string value;
    if (offset > 0) {
        const status_t status = ReadXattr(xattr, &value);
        if (status != B_OK && !IsMissing(status))
            return status;
        // A malformed typed value has no data worth keeping.
        if (status != B_OK || value.size() < header)
            value.clear();
    }
    const size_t start = header + size_t(offset);
    const size_t end = start + size;
    if (value.size() < end)
        value.resize(std::max(end, header), '\0');
    if (size > 0)
        memcpy(value.data() + start, buffer, size);
    if (!raw)
        PutTypeHeader(type, &value);

    if (lsetxattr(fPath.c_str(), xattr.c_str(), value.data(), value.size(), 0) != 0)
        return LastError();
    return ssize_t(size);
}

status_t Node::RemoveAttr(const std::string &name)
{
    if (fStatus != B_OK)
        return B_NO_INIT;
    if (name.empty())
        return B_BAD_VALUE;
    const std::string typed = TypedXattrName(name);
    if (typed.size() <= kMaxXattrName) {
        if (lremovexattr(fPath.c_str(), typed.c_str()) == 0)
            return B_OK;
        if (const status_t status = LastError(); !IsMissing(status))
            return status;
    }
    if (lremovexattr(fPath.c_str(), name.c_str()) == 0)
        return B_OK;
    const status_t status = LastError();
    return IsMissing(status) ? B_ENTRY_NOT_FOUND : status;
}

status_t Node::ReadAttrString(const std::string &name, std::string *value) const
{
    if (!value)
        return B_BAD_VALUE;
    Attribute attribute;
    if (status_t status = Load(name, &attribute); status != B_OK)
        return status;
    *value = attribute.data.substr(0, attribute.data.find('\0'));
    return B_OK;
}

status_t Node::WriteAttrString(const std::string &name, const std::string &value, type_code type)
{
    const std::string data = value + '\0';
    const ssize_t written = WriteAttr(name, type, 0, data.data(), data.size());
    return written < 0 ? status_t(written) : B_OK;
}

} // namespace platform
