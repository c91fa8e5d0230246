#include "fileops/GetInfo.h"

#include "CopyTestSupport.h"
#include "fileops/AttributeView.h"
#include "platform/Node.h"

#include <QLabel>
#include <QMimeDatabase>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>
#include <cstring>

using kestrin::GetInfo;

namespace {

QString Text(const GetInfo &window, const char *name)
{
    const QLabel *label = window.findChild<QLabel *>(name);
    return label != nullptr ? label->text() : QString("<none>");
}

// The labels top to bottom, as "objectName=text".
QStringList Labels(const GetInfo &window)
{
    QList<QLabel *> labels;
    for (QLabel *label : window.findChildren<QLabel *>()) {
        if (label->objectName().startsWith("lbl"))
            labels << label;
    }
    std::sort(labels.begin(), labels.end(), [](QLabel *a, QLabel *b) { return a->y() < b->y(); });
    QStringList texts;
    for (const QLabel *label : labels)
        texts << label->objectName() + "=" + label->text();
    return texts;
}

// The attribute rows, "name=value", sorted (the file system lists them in
// an order of its own).
QStringList Attributes(const GetInfo &window)
{
    const auto *view = window.findChild<kestrin::AttributeView *>("AttributeView");
    QStringList rows;
    for (int i = 0; view != nullptr && i < view->CountItems(); i++)
        rows << view->ItemAt(i)->ColumnText(0) + "=" + view->ItemAt(i)->ColumnText(1);
    rows.sort();
    return rows;
}

template<typename T>
void WriteTyped(platform::Node &node, const char *name, type_code type, T value)
{
    ASSERT_EQ(node.WriteAttr(name, type, 0, &value, sizeof value), ssize_t(sizeof value)) << name;
}

} // namespace

TEST(GetInfo, AFileWithTypedAttributesAndPlainXattrs)
{
    TempHome home;
    const std::string path = home.Root() + "/data";
    WriteFileBytes(path, std::string("\x01\x02\x03\x04\x00\xff", 6) + std::string(2042, 'x'));
    home.SetEnv("TZ", "UTC");
    SetModified(path, 947505600); // 2000-01-10 12:00:00
    platform::Node node(path);
    ASSERT_EQ(node.WriteAttrString("Mail:subject", "Hello there"), B_OK);
    WriteTyped<int32_t>(node, "Media:Rating", B_INT32_TYPE, -42);
    WriteTyped<int64_t>(node, "size64", B_INT64_TYPE, 1);
    WriteTyped<double>(node, "double", B_DOUBLE_TYPE, 1.5);
    WriteTyped<int32_t>(node, "odd/name", platform::FourCC("ABCD"), 7);
    ASSERT_EQ(node.WriteAttr("user.comment", B_XATTR_TYPE, 0, "plain text", 10), 10);
    ASSERT_EQ(node.WriteAttr("user.blob", B_XATTR_TYPE, 0, "\x01\x02\xff", 3), 3);

    GetInfo window(path, QRect(0, 0, 800, 600));
    EXPECT_EQ(window.windowTitle(), "data Info");
    EXPECT_EQ(Text(window, "name"), "data");
    EXPECT_EQ(Labels(window),
              QStringList({"lblSize=Size",
                           "lblCreated=Created",
                           "lblModified=Modified",
                           "lblKind=Kind",
                           "lblPath=Path",
                           "lblAttributes=Attributes"}));
    EXPECT_EQ(window.findChild<QLabel *>("lblSize")->y(), 50);
    EXPECT_EQ(window.findChild<QLabel *>("lblModified")->y(), 90);
    EXPECT_EQ(Text(window, "size"), "2 K");
    EXPECT_EQ(Text(window, "Modified"), "01/10/00 12:00");
    EXPECT_FALSE(Text(window, "Created").isEmpty());
    EXPECT_EQ(Text(window, "kind"), "Generic File");
    EXPECT_EQ(Text(window, "path"), QString::fromStdString(path));
    EXPECT_EQ(Text(window, "linkto"), "<none>");
    EXPECT_EQ(Text(window, "version"), "<none>");
    EXPECT_EQ(Attributes(window),
              QStringList({"Mail:subject=Hello there",
                           "Media:Rating=-42",
                           "double=B_DOUBLE_TYPE",
                           "odd/name=ABCD",
                           "size64=B_INT64_TYPE",
                           "user.blob=3 Bytes",
                           "user.comment=plain text"}));
}

TEST(GetInfo, KindFromTheTypeAndLinks)
{
    TempHome home;
    const std::string text = home.Root() + "/notes.txt";
    WriteFileBytes(text, "some words\n");
    const std::string link = home.Root() + "/shortcut";
    fs::create_symlink(text, link);
    const std::string dangling = home.Root() + "/nowhere";
    fs::create_symlink(home.Root() + "/gone", dangling);

    const QString plainText = QMimeDatabase().mimeTypeForName("text/plain").comment();
    GetInfo document(text, QRect());
    EXPECT_EQ(Text(document, "kind"), plainText);
    EXPECT_EQ(Text(document, "size"), "11 Bytes");

    platform::Node(text).WriteAttrString("BEOS:TYPE", "image/png", B_MIME_STRING_TYPE);
    GetInfo typed(text, QRect());
    EXPECT_EQ(Text(typed, "kind"), QMimeDatabase().mimeTypeForName("image/png").comment())
        << "the type the file carries wins over its name";

    GetInfo shortcut(link, QRect());
    EXPECT_EQ(Text(shortcut, "kind"), "Symbolic Link");
    EXPECT_EQ(Text(shortcut, "linkto"), QString::fromStdString(text));
    EXPECT_EQ(Labels(shortcut).at(5), "lbllinkto=Link To");
    EXPECT_EQ(Text(shortcut, "size"), QString("%1 Bytes").arg(text.size()));

    GetInfo broken(dangling, QRect());
    EXPECT_EQ(Text(broken, "kind"), "Symbolic Link");
    EXPECT_EQ(Text(broken, "linkto"), "");
}

TEST(GetInfo, AFolderShowsItsTotalWhenTheCountArrives)
{
    TempHome home;
    const std::string folder = home.Root() + "/stuff";
    fs::create_directories(folder + "/inner");
    WriteFileBytes(folder + "/a", std::string(2000, 'a'));
    WriteFileBytes(folder + "/b", std::string(3000, 'b'));
    WriteFileBytes(folder + "/inner/c", std::string(4000, 'c'));

    GetInfo window(folder, QRect());
    EXPECT_EQ(Text(window, "kind"), "Folder");
    QSignalSpy arrived(&window, &GetInfo::SizeArrived);
    ASSERT_TRUE(window.IsCounting() || arrived.count() == 1);
    ASSERT_TRUE(arrived.count() == 1 || arrived.wait(15000));
    EXPECT_FALSE(window.IsCounting());
    // Three entries directly inside; the inner file counts toward the size.
    EXPECT_EQ(Text(window, "size"), "8 K (3 files)");
}

TEST(GetInfo, ClosingTheWindowWhileAFolderIsCountedDropsTheCount)
{
    TempHome home;
    const std::string folder = home.Root() + "/many";
    fs::create_directories(folder);
    for (int i = 0; i < 200; i++)
        WriteFileBytes(folder + "/f" + std::to_string(i), "x");
    auto window = std::make_unique<GetInfo>(folder, QRect());
    EXPECT_TRUE(window->IsCounting());
    window.reset();
    // The worker's answer finds no window; nothing is left to reach it.
    QTest::qWait(0);
    GetInfo again(folder, QRect());
    QSignalSpy arrived(&again, &GetInfo::SizeArrived);
    ASSERT_TRUE(arrived.wait(15000));
    EXPECT_EQ(Text(again, "size"), "200 Bytes (200 files)");
}

TEST(GetInfo, TheRootVolume)
{
    GetInfo window("/", QRect());
    EXPECT_EQ(window.windowTitle(), "/ Info");
    EXPECT_EQ(Text(window, "kind"), "Volume");
    const QRegularExpression shape(
        R"(^\d+ (Bytes|K|M|G)\(\d+ (Bytes|K|M|G) used -- \d+ (Bytes|K|M|G) free\)$)");
    EXPECT_TRUE(shape.match(Text(window, "size")).hasMatch()) << Text(window, "size").toStdString();
    EXPECT_FALSE(window.IsCounting());
}
