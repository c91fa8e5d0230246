#include "fileops/AttributeText.h"

#include "app/NumberText.h"
#include "platform/Node.h"

#include <QString>
#include <array>
#include <cstdio>
#include <cstring>
#include <utility>

namespace kestrin {

namespace {

constexpr std::array<std::pair<type_code, const char *>, 35> kTypeNames{{
    {B_ANY_TYPE, "B_ANY_TYPE"},
    {B_ASCII_TYPE, "B_ASCII_TYPE"},
    {B_BOOL_TYPE, "B_BOOL_TYPE"},
    {B_CHAR_TYPE, "B_CHAR_TYPE"},
    {B_COLOR_8_BIT_TYPE, "B_COLOR_8_BIT_TYPE"},
    {B_DOUBLE_TYPE, "B_DOUBLE_TYPE"},
    {B_FLOAT_TYPE, "B_FLOAT_TYPE"},
    {B_GRAYSCALE_8_BIT_TYPE, "B_GRAYSCALE_8_BIT_TYPE"},
    {B_INT64_TYPE, "B_INT64_TYPE"},
    {B_INT16_TYPE, "B_INT16_TYPE"},
    {B_INT8_TYPE, "B_INT8_TYPE"},
    {B_MESSAGE_TYPE, "B_MESSAGE_TYPE"},
    {B_MESSENGER_TYPE, "B_MESSENGER_TYPE"},
    {B_MIME_TYPE, "B_MIME_TYPE"},
    {B_MONOCHROME_1_BIT_TYPE, "B_MONOCHROME_1_BIT_TYPE"},
    {B_OBJECT_TYPE, "B_OBJECT_TYPE"},
    {B_OFF_T_TYPE, "B_OFF_T_TYPE"},
    {B_PATTERN_TYPE, "B_PATTERN_TYPE"},
    {B_POINTER_TYPE, "B_POINTER_TYPE"},
    {B_POINT_TYPE, "B_POINT_TYPE"},
    {B_RAW_TYPE, "B_RAW_TYPE"},
    {B_RECT_TYPE, "B_RECT_TYPE"},
    {B_REF_TYPE, "B_REF_TYPE"},
    {B_RGB_32_BIT_TYPE, "B_RGB_32_BIT_TYPE"},
    {B_RGB_COLOR_TYPE, "B_RGB_COLOR_TYPE"},
    {B_SIZE_T_TYPE, "B_SIZE_T_TYPE"},
    {B_SSIZE_T_TYPE, "B_SSIZE_T_TYPE"},
    {B_TIME_TYPE, "B_TIME_TYPE"},
    {B_UINT64_TYPE, "B_UINT64_TYPE"},
    {B_UINT32_TYPE, "B_UINT32_TYPE"},
    {B_UINT16_TYPE, "B_UINT16_TYPE"},
    {B_UINT8_TYPE, "B_UINT8_TYPE"},
    {B_MEDIA_PARAMETER_TYPE, "B_MEDIA_PARAMETER_TYPE"},
    {B_MEDIA_PARAMETER_WEB_TYPE, "B_MEDIA_PARAMETER_WEB_TYPE"},
    {B_MEDIA_PARAMETER_GROUP_TYPE, "B_MEDIA_PARAMETER_GROUP_TYPE"},
}};

// Text a person can read as it stands: valid UTF-8 without control
// characters (a trailing NUL, as C strings are stored, is allowed).
bool IsPrintable(const std::string &data)
{
    std::string text = data;
    if (!text.empty() && text.back() == '\0')
        text.pop_back();
    if (text.empty())
        return false;
    const QString decoded = QString::fromUtf8(text.data(), qsizetype(text.size()));
    if (decoded.toUtf8().toStdString() != text)
        return false;
    for (const QChar c : decoded) {
        if (!c.isPrint() && c != u'\t')
            return false;
    }
    return true;
}

} // namespace

std::string AttributeText::TypeName(type_code type)
{
    for (const auto &[code, name] : kTypeNames) {
        if (code == type)
            return name;
    }
    return {};
}

std::string AttributeText::CodeText(type_code type)
{
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const char c = char((type >> shift) & 0xff);
        if (c < 0x20 || c > 0x7e) {
            char hex[16];
            snprintf(hex, sizeof hex, "0x%08x", type);
            return hex;
        }
        text += c;
    }
    return text;
}

std::string AttributeText::ValueText(type_code type, const std::string &data)
{
    if (type == B_STRING_TYPE)
        return data.substr(0, data.find('\0'));
    if (type == B_INT32_TYPE && data.size() == sizeof(int32_t)) {
        int32_t value;
        memcpy(&value, data.data(), sizeof value);
        return std::to_string(value);
    }
    if (type == B_XATTR_TYPE) {
        if (IsPrintable(data))
            return data.substr(0, data.find('\0'));
        char size[32];
        GetSizeString(int64_t(data.size()), size);
        return size;
    }
    const std::string name = TypeName(type);
    return name.empty() ? CodeText(type) : name;
}

std::vector<AttributeText::Row> AttributeText::Read(const std::string &path)
{
    std::vector<Row> rows;
    const platform::Node node(path);
    std::vector<std::string> names;
    if (node.InitCheck() != B_OK || node.GetAttrNames(&names) != B_OK)
        return rows;
    for (const std::string &name : names) {
        attr_info info;
        if (node.GetAttrInfo(name, &info) != B_OK)
            continue;
        std::string data(size_t(info.size), '\0');
        const ssize_t read = node.ReadAttr(name, info.type, 0, data.data(), data.size());
        if (read < 0)
            continue;
        data.resize(size_t(read));
        rows.push_back({name, ValueText(info.type, data)});
    }
    return rows;
}

} // namespace kestrin
