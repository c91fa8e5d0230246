#include "platform/Node.h"

#include "support/TempHome.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <sys/xattr.h>

using namespace platform;
namespace fs = std::filesystem;

namespace {

std::optional<std::string> RawXattr(const std::string &path, const std::string &name)
{
    std::string value(70000, '\0');
    const ssize_t size = lgetxattr(path.c_str(), name.c_str(), value.data(), value.size());
    if (size < 0)
        return std::nullopt;
    value.resize(size_t(size));
    return value;
}

std::vector<std::string> RawXattrNames(const std::string &path)
{
    std::string list(65536, '\0');
    const ssize_t size = llistxattr(path.c_str(), list.data(), list.size());
    std::vector<std::string> names;
    for (size_t start = 0; size > 0 && start < size_t(size); start += names.back().size() + 1)
        names.emplace_back(list.c_str() + start);
    std::sort(names.begin(), names.end());
    return names;
}

bool Lists(const Node &node, const std::string &name)
{
    std::vector<std::string> names;
    node.GetAttrNames(&names);
    return std::find(names.begin(), names.end(), name) != names.end();
}

} // namespace

TEST(NodeTest, TypedAttributesUseHaikusXattrLayout)
{
    TempHome home;
    const std::string path = home.Root() + "/file";
    WriteFileBytes(path, "");
    Node node(path);
    ASSERT_EQ(node.InitCheck(), B_OK);

    const int32_t rating = 0x01020304;
    ASSERT_EQ(node.WriteAttr("Media:Rating", B_INT32_TYPE, 0, &rating, 4), 4);
    // 'LONG' little-endian, then the data as given.
    EXPECT_EQ(RawXattr(path, "user.haiku.Media:Rating"),
              std::string("GNOL") + std::string(reinterpret_cast<const char *>(&rating), 4));
    attr_info info;
    ASSERT_EQ(node.GetAttrInfo("Media:Rating", &info), B_OK);
    EXPECT_EQ(info.type, B_INT32_TYPE);
    EXPECT_EQ(info.size, 4);
    int32_t back = 0;
    EXPECT_EQ(node.ReadAttr("Media:Rating", B_INT32_TYPE, 0, &back, sizeof back), 4);
    EXPECT_EQ(back, rating);
    char tail[8];
    EXPECT_EQ(node.ReadAttr("Media:Rating", B_INT32_TYPE, 3, tail, sizeof tail), 1);
    EXPECT_EQ(node.ReadAttr("Media:Rating", B_INT32_TYPE, 9, tail, sizeof tail), 0);

    ASSERT_EQ(node.WriteAttrString("BEOS:TYPE", "text/plain", B_MIME_STRING_TYPE), B_OK);
    EXPECT_EQ(RawXattr(path, "user.haiku.BEOS:TYPE"), std::string("SMIMtext/plain\0", 15));
    std::string text;
    ASSERT_EQ(node.ReadAttrString("BEOS:TYPE", &text), B_OK);
    EXPECT_EQ(text, "text/plain");
    ASSERT_EQ(node.WriteAttr("BEOS:TYPE", B_STRING_TYPE, 0, "ab", 2), 2);
    EXPECT_EQ(RawXattr(path, "user.haiku.BEOS:TYPE"), "RTSCab") << "offset 0 replaces it all";

    ASSERT_EQ(node.WriteAttrString("a/b%c", "odd"), B_OK);
    EXPECT_EQ(RawXattr(path, "user.haiku.a%\\b%%c"), std::string("RTSCodd\0", 8));
    EXPECT_TRUE(Lists(node, "a/b%c"));
    ASSERT_EQ(node.RemoveAttr("a/b%c"), B_OK);
    EXPECT_FALSE(RawXattr(path, "user.haiku.a%\\b%%c"));

    EXPECT_EQ(node.ReadAttr("nothing", B_ANY_TYPE, 0, tail, sizeof tail), B_ENTRY_NOT_FOUND);
    EXPECT_EQ(node.RemoveAttr("nothing"), B_ENTRY_NOT_FOUND);
    EXPECT_EQ(Node(home.Root() + "/missing").InitCheck(), B_ENTRY_NOT_FOUND);
}

TEST(NodeTest, WritesInChunksAtOffsets)
{
    TempHome home;
    const std::string path = home.Root() + "/file";
    WriteFileBytes(path, "");
    Node node(path);

    ASSERT_EQ(node.WriteAttr("chunk", B_RAW_TYPE, 0, "hello", 5), 5);
    ASSERT_EQ(node.WriteAttr("chunk", B_RAW_TYPE, 5, " world", 6), 6);
    ASSERT_EQ(node.WriteAttr("chunk", B_STRING_TYPE, 14, "!", 1), 1);
    EXPECT_EQ(RawXattr(path, "user.haiku.chunk"), std::string("RTSChello world\0\0\0!", 19));
    ASSERT_EQ(node.WriteAttr("chunk", B_STRING_TYPE, 1, "E", 1), 1);
    EXPECT_EQ(RawXattr(path, "user.haiku.chunk"), std::string("RTSChEllo world\0\0\0!", 19));

    ASSERT_EQ(node.WriteAttr("fresh", B_RAW_TYPE, 3, "x", 1), 1);
    EXPECT_EQ(RawXattr(path, "user.haiku.fresh"), std::string("TWARx", 5).insert(4, 3, '\0'));

    ASSERT_EQ(node.WriteAttr("user.plain", B_XATTR_TYPE, 0, "ab", 2), 2);
    ASSERT_EQ(node.WriteAttr("user.plain", B_XATTR_TYPE, 2, "cd", 2), 2);
    EXPECT_EQ(RawXattr(path, "user.plain"), "abcd");

    // Over the 64 KB any Linux file system allows: a status, not a crash.
    const std::string huge(70000, 'h');
    EXPECT_LT(node.WriteAttr("huge", B_RAW_TYPE, 0, huge.data(), huge.size()), 0);
}

TEST(NodeTest, ForeignXattrsAreAttributesCopiedByteForByte)
{
    TempHome home;
    const std::string source = home.Root() + "/source";
    const std::string copy = home.Root() + "/copy";
    WriteFileBytes(source, "");
    WriteFileBytes(copy, "");
    const std::string binary("\0\x01\xff bin", 7);
    ASSERT_EQ(lsetxattr(source.c_str(), "user.foo", binary.data(), binary.size(), 0), 0);
    // Too short for a type header: not a typed attribute, whatever its name says.
    ASSERT_EQ(lsetxattr(source.c_str(), "user.haiku.short", "ab", 2, 0), 0);
    ASSERT_EQ(lsetxattr(source.c_str(), "user.haiku.bad%escape", "RTSCx", 5, 0), 0);
    Node node(source);
    ASSERT_EQ(node.WriteAttrString("Comment", "kept"), B_OK);

    std::vector<std::string> names;
    ASSERT_EQ(node.GetAttrNames(&names), B_OK);
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names,
              (std::vector<std::string>{"Comment",
                                        "user.foo",
                                        "user.haiku.bad%escape",
                                        "user.haiku.short"}));
    attr_info info;
    ASSERT_EQ(node.GetAttrInfo("user.foo", &info), B_OK);
    EXPECT_EQ(info.type, B_XATTR_TYPE);
    EXPECT_EQ(info.size, 7);
    EXPECT_EQ(node.GetAttrInfo("short", &info), B_ENTRY_NOT_FOUND);

    // What a copier does: every listed attribute, read and written as it is.
    Node target(copy);
    for (const std::string &name : names) {
        ASSERT_EQ(node.GetAttrInfo(name, &info), B_OK) << name;
        std::string data(size_t(info.size), '\0');
        ASSERT_EQ(node.ReadAttr(name, info.type, 0, data.data(), data.size()), info.size);
        ASSERT_EQ(target.WriteAttr(name, info.type, 0, data.data(), data.size()), info.size)
            << name;
    }
    const std::vector<std::string> raw = RawXattrNames(source);
    EXPECT_EQ(RawXattrNames(copy), raw);
    for (const std::string &name : raw)
        EXPECT_EQ(RawXattr(copy, name), RawXattr(source, name)) << name;

    ASSERT_EQ(node.RemoveAttr("user.foo"), B_OK);
    EXPECT_FALSE(RawXattr(source, "user.foo"));
}

TEST(NodeTest, ALinkHasItsOwnAttributes)
{
    TempHome home;
    const std::string path = home.Root() + "/file";
    WriteFileBytes(path, "");
    fs::create_symlink("file", home.Root() + "/link");
    ASSERT_EQ(Node(path).WriteAttrString("Comment", "on the file"), B_OK);

    Node link(home.Root() + "/link");
    ASSERT_EQ(link.InitCheck(), B_OK);
    EXPECT_FALSE(Lists(link, "Comment"));
    attr_info info;
    EXPECT_EQ(link.GetAttrInfo("Comment", &info), B_ENTRY_NOT_FOUND);
    // Linux keeps user.* xattrs off links; the refusal is reported.
    EXPECT_LT(link.WriteAttrString("Comment", "on the link"), 0);
    std::string text;
    ASSERT_EQ(Node(path).ReadAttrString("Comment", &text), B_OK);
    EXPECT_EQ(text, "on the file");
}
