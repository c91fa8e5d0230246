#include "viewer/ViewerWindow.h"

#include "platform/AlertRecorder.h"
#include "support/MessageRecorder.h"
#include "support/TempHome.h"
#include "viewer/TImageView.h"
#include "viewer/TextIndex.h"
#include "viewer/TextPager.h"
#include "viewer/ViewerMessages.h"

#include <QApplication>
#include <QFileDialog>
#include <QImageWriter>
#include <QLineEdit>
#include <QMenuBar>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <optional>
#include <sys/stat.h>

using kestrin::TextPager;
using kestrin::TImageView;
using kestrin::ViewerWindow;

namespace {

const QRect kFrame(QPoint(50, 50), QPoint(250, 250));

std::string Text(const QRect &rect)
{
    return std::to_string(rect.x()) + "," + std::to_string(rect.y()) + " "
           + std::to_string(rect.width()) + "x" + std::to_string(rect.height());
}

// What the calling thread has read so far, as the kernel counts it (none
// where the kernel keeps no count per thread).
std::optional<int64_t> BytesReadByThisThread()
{
    std::ifstream io("/proc/thread-self/io");
    std::string name;
    int64_t value = 0;
    while (io >> name >> value) {
        if (name == "rchar:")
            return value;
    }
    return std::nullopt;
}

class ViewerTest : public ::testing::Test
{
protected:
    std::string File(const std::string &name, const std::string &bytes)
    {
        const std::string path = fHome.Root() + "/" + name;
        WriteFileBytes(path, bytes);
        return path;
    }
    std::string Image(const std::string &name, QSize size, const char *format)
    {
        const std::string path = fHome.Root() + "/" + name;
        QImage image(size, QImage::Format_RGB32);
        image.fill(Qt::darkCyan);
        QImageWriter writer(QString::fromStdString(path), format);
        EXPECT_TRUE(writer.write(image)) << writer.errorString().toStdString();
        return path;
    }
    static QMenu *Menu(ViewerWindow &window, const char *title)
    {
        for (QAction *action : window.menuBar()->actions()) {
            if (action->text() == title)
                return action->menu();
        }
        return nullptr;
    }
    static QAction *Item(QMenu *menu, const char *label)
    {
        for (QAction *action : menu->actions()) {
            if (action->text() == label)
                return action;
        }
        return nullptr;
    }
    static void Send(ViewerWindow &window, uint32_t what)
    {
        platform::Message message(what);
        window.MessageReceived(message);
    }
    // Laid out as the user sees it.
    static void Show(QWidget &window)
    {
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
    }
    static QRect Screen() { return QGuiApplication::primaryScreen()->geometry(); }
    static QRect Room() { return QGuiApplication::primaryScreen()->availableGeometry(); }
    // Whether the text's first screen came from the index's worker.
    static bool TextRead(ViewerWindow &window)
    {
        return QTest::qWaitFor(
            [&] { return window.TextView() != nullptr && window.TextView()->Showing(); }, 20000);
    }
    // Active, for its keys, and its text read.
    static bool ShowActive(ViewerWindow &window)
    {
        window.show();
        QApplication::setActiveWindow(&window);
        return QTest::qWaitForWindowActive(&window) && TextRead(window);
    }
    // Types `typed` into the find field and waits for the search to end.
    static bool FindText(ViewerWindow &window, QSignalSpy &finished, const QString &typed)
    {
        QTest::keyClick(&window, Qt::Key_F, Qt::ControlModifier);
        auto *field = window.findChild<QLineEdit *>("findField");
        if (!field->isVisible())
            return false;
        QTest::keyClicks(field, typed);
        QTest::keyClick(field, Qt::Key_Return);
        return finished.wait();
    }

    TempHome fHome;
    platform::AlertRecorder fAlerts;
};

TEST_F(ViewerTest, ATextShowsWithItsMenusAndWraps)
{
    ViewerWindow window(kFrame, File("notes.txt", "first\nsecond line\n\tthird\n"));
    Show(window);
    ASSERT_TRUE(TextRead(window));
    EXPECT_EQ(window.windowTitle(), "notes.txt");
    EXPECT_EQ(window.menuBar()->objectName(), "MenuBar");
    QMenu *file = Menu(window, "File");
    ASSERT_NE(file, nullptr);
    const std::tuple<const char *, uint32_t, QKeySequence> items[]
        = {{"Open", platform::FourCC("open"), QKeySequence("Ctrl+O")},
           {"Close", B_QUIT_REQUESTED, QKeySequence("Ctrl+W")},
           {"Quit", B_QUIT_REQUESTED, QKeySequence("Ctrl+Q")}};
    for (const auto &[label, code, keys] : items) {
        QAction *item = Item(file, label);
        ASSERT_NE(item, nullptr) << label;
        EXPECT_EQ(item->data().toUInt(), code) << label;
        EXPECT_EQ(item->shortcut(), keys) << label;
    }
    EXPECT_TRUE(file->actions().at(1)->isSeparator());
    EXPECT_EQ(Menu(window, "Image"), nullptr);
    QMenu *text = Menu(window, "Text");
    ASSERT_NE(text, nullptr);
    QAction *wrap = Item(text, "Wrap Text");
    QAction *edge = Item(text, "Wrap to Edge");
    EXPECT_EQ(wrap->data().toUInt(), platform::FourCC("wrap"));
    EXPECT_EQ(edge->data().toUInt(), platform::FourCC("edge"));

    TextPager *view = window.TextView();
    EXPECT_EQ(view->objectName(), "TextScroll");
    EXPECT_NE(window.findChild<QWidget *>("textView"), nullptr);
    EXPECT_EQ(view->ShownRows().mid(0, 3), QStringList({"first", "second line", "\tthird"}));
    EXPECT_FALSE(wrap->isChecked());
    EXPECT_EQ(view->WrapMode(), TextPager::Wrap::None);

    wrap->trigger();
    EXPECT_TRUE(wrap->isChecked());
    EXPECT_EQ(view->WrapMode(), TextPager::Wrap::Words);
    Send(window, kestrin::kMsgWrapToEdge);
    EXPECT_TRUE(edge->isChecked());
    EXPECT_EQ(view->WrapMode(), TextPager::Wrap::Anywhere);
    edge->trigger();
    Send(window, kestrin::kMsgWrapText);
    EXPECT_FALSE(wrap->isChecked());
    EXPECT_EQ(view->WrapMode(), TextPager::Wrap::None);
    EXPECT_EQ(fAlerts.Count(), 0u);
}

// A viewer opens where it was put, wholly on the screen's free area, as big
// as what it shows, and wide enough for its menus and a few words a row.
TEST_F(ViewerTest, TheWindowFitsItsTextOrPictureWithinTheScreen)
{
    ViewerWindow small(kFrame, File("small.txt", "abc\nabcdef\nab\n"));
    Show(small);
    ASSERT_TRUE(TextRead(small));
    const QSize text = small.TextView()->TextSize();
    EXPECT_EQ(text.height(), 3 * small.TextView()->RowHeight());
    // Wide enough for the laid out row, which may take a fraction of a unit more.
    const qreal widest = QFontMetricsF(small.TextView()->font()).horizontalAdvance("abcdef");
    EXPECT_TRUE(text.width() >= widest && text.width() <= widest + 2) << text.width();
    // As tall as the text, with no more than a scroll bar's room to spare;
    // sixty columns wide, with every menu in the menu bar.
    const QSize view = small.TextView()->viewport()->size();
    EXPECT_TRUE(view.height() >= text.height() && view.height() <= text.height() + 14)
        << view.height();
    const int columns = view.width() / QFontMetrics(small.TextView()->font()).averageCharWidth();
    EXPECT_TRUE(columns >= 60 && columns <= 62) << columns;
    auto *more = small.menuBar()->findChild<QWidget *>("qt_menubar_ext_button");
    EXPECT_TRUE(more == nullptr || !more->isVisible()) << "menus folded away";
    EXPECT_EQ(small.geometry().topLeft(), kFrame.topLeft());
    EXPECT_TRUE(Room().contains(small.frameGeometry())) << Text(small.frameGeometry());

    // The window opens before the file is read, and fits it once it is. A
    // slow disk or a network mount would hold up whoever reads the file: the
    // GUI thread reads none of it.
    std::string tall = std::string(3000, 'w') + "\n";
    while (tall.size() < (4u << 20))
        tall += "row\n";
    const std::string path = File("wide.txt", tall);
    const std::optional<int64_t> before = BytesReadByThisThread();
    ViewerWindow big(kFrame, path);
    big.show();
    const std::optional<int64_t> after = BytesReadByThisThread();
    if (before && after) {
        EXPECT_LT(*after - *before, 64 << 10) << "bytes the GUI thread read";
    }
    ASSERT_NE(big.TextView(), nullptr);
    EXPECT_FALSE(big.TextView()->Showing());
    EXPECT_TRUE(big.TextView()->ShownRows().isEmpty());
    EXPECT_EQ(big.size(), kFrame.size());
    ASSERT_TRUE(TextRead(big));
    EXPECT_EQ(big.geometry().left() + big.width(), Screen().right() - 100);
    EXPECT_EQ(big.geometry().top() + big.height(), Screen().bottom() - 100);
    EXPECT_TRUE(Room().contains(big.frameGeometry())) << Text(big.frameGeometry());

    // A picture: the window takes its size, within the screen's free area.
    ViewerWindow picture(kFrame, Image("middling.png", QSize(300, 200), "png"));
    Show(picture);
    ASSERT_TRUE(QTest::qWaitFor([&] { return picture.ImageView()->Decoded(); }));
    EXPECT_EQ(Text(picture.geometry()),
              Text(QRect(kFrame.topLeft(),
                         QSize(300 + 14, 200 + picture.menuBar()->sizeHint().height() + 14))));
    ViewerWindow huge(kFrame, Image("huge.png", Room().size() * 2, "png"));
    Show(huge);
    ASSERT_TRUE(QTest::qWaitFor([&] { return huge.ImageView()->Decoded(); }));
    EXPECT_TRUE(Room().contains(huge.frameGeometry())) << Text(huge.frameGeometry());
    EXPECT_EQ(Text(huge.frameGeometry()), Text(Room())) << "the whole free area";
}

TEST_F(ViewerTest, WhatIsNeitherTextNorImageOrCannotBeReadShowsNothing)
{
    ViewerWindow zip(kFrame, File("a.zip", std::string("PK\x05\x06", 4) + std::string(18, '\0')));
    EXPECT_NE(Menu(zip, "Text"), nullptr);
    EXPECT_EQ(zip.TextView(), nullptr);
    EXPECT_EQ(zip.ImageView(), nullptr);
    EXPECT_EQ(fAlerts.Count(), 0u);

    ViewerWindow missing(kFrame, fHome.Root() + "/gone.txt");
    EXPECT_EQ(missing.windowTitle(), "gone.txt");
    std::vector<std::string> texts;
    for (const platform::Alert &alert : fAlerts.Shown())
        texts.push_back(alert.text);
    EXPECT_EQ(texts,
              std::vector<std::string>({"Error opening node!",
                                        "Error opening node info!",
                                        "An error occured, don't be surprised nothing happened."}));
    EXPECT_EQ(fAlerts.Shown().front().title, "Error!");
    fAlerts.Clear();

    ViewerWindow nothing(kFrame, "");
    ASSERT_EQ(fAlerts.Count(), 1u);
    EXPECT_EQ(fAlerts.Shown()[0].text, "No file type, nothing to do.");
    fAlerts.Clear();

    // A pipe nobody writes to would hold up whoever opens it for reading.
    const std::string fifo = fHome.Root() + "/pipe";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    ViewerWindow pipe(kFrame, fifo);
    ASSERT_EQ(fAlerts.Count(), 1u);
    EXPECT_NE(fAlerts.Shown()[0].text.find("\"pipe\" is a pipe"), std::string::npos);
    EXPECT_EQ(pipe.TextView(), nullptr);
    fAlerts.Clear();

    // Binary bytes under a text type, and Latin-1, read as characters.
    ViewerWindow binary(kFrame,
                        File("data.txt", std::string("\x89PNG\0\xff\xfe\n", 8) + "caf\xe9\n"));
    ASSERT_NE(binary.TextView(), nullptr);
    Show(binary);
    ASSERT_TRUE(TextRead(binary));
    EXPECT_EQ(binary.TextView()->ShownRows().mid(0, 2),
              QStringList({QString::fromUtf8("�PNG␀ÿþ"), QString::fromUtf8("café")}));
    ViewerWindow empty(kFrame, File("empty.txt", ""));
    ASSERT_TRUE(TextRead(empty));
    EXPECT_TRUE(empty.TextView()->ShownRows().isEmpty());
    EXPECT_EQ(fAlerts.Count(), 0u);

    // A text that cannot be opened is told once the worker has tried.
    const std::string dangling = fHome.Root() + "/dangling.txt";
    ASSERT_EQ(symlink((fHome.Root() + "/nowhere").c_str(), dangling.c_str()), 0);
    ViewerWindow unopened(kFrame, dangling);
    ASSERT_TRUE(QTest::qWaitFor([&] { return fAlerts.Count() == 1; }));
    EXPECT_EQ(fAlerts.Shown()[0].text, "An error occured, don't be surprised nothing happened.");
    EXPECT_EQ(unopened.TextView(), nullptr);
    fAlerts.Clear();

    // A picture that does not decode leaves the view empty, without a word.
    const std::string bytes = ReadFileBytes(Image("whole.png", QSize(64, 64), "png")).value();
    ViewerWindow truncated(kFrame, File("truncated.png", bytes.substr(0, bytes.size() / 3)));
    ViewerWindow jpeg(kFrame, Image("photo.jpg", QSize(20, 10), "jpeg"));
    ASSERT_NE(truncated.ImageView(), nullptr);
    ASSERT_NE(jpeg.ImageView(), nullptr);
    ASSERT_TRUE(QTest::qWaitFor(
        [&] { return truncated.ImageView()->Decoded() && jpeg.ImageView()->Decoded(); }));
    EXPECT_TRUE(truncated.ImageView()->ImageSize().isEmpty());
    EXPECT_EQ(jpeg.ImageView()->ImageSize(), QSize(20, 10));
    EXPECT_EQ(fAlerts.Count(), 0u);
}

TEST_F(ViewerTest, ImagesScaleByFactorStretchAndFitTheScreen)
{
    ViewerWindow window(kFrame, Image("picture.png", QSize(41, 31), "png"));
    ASSERT_EQ(Menu(window, "Text"), nullptr);
    QMenu *image = Menu(window, "Image");
    ASSERT_NE(image, nullptr);
    QAction *stretch = Item(image, "Stretch to Fit");
    EXPECT_EQ(stretch->data().toUInt(), platform::FourCC("tfit"));
    QMenu *scale = Item(image, "Scale")->menu();
    ASSERT_NE(scale, nullptr);
    QStringList labels;
    for (QAction *item : scale->actions()) {
        labels << (item->isSeparator() ? "-" : item->text());
        if (!item->isSeparator()) {
            EXPECT_EQ(item->data().toUInt(), platform::FourCC("scal"));
        }
    }
    EXPECT_EQ(labels, QStringList({"50%", "100%", "200%", "-", "Max"}));

    TImageView *view = window.ImageView();
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(view->objectName(), "imageView");
    ASSERT_TRUE(QTest::qWaitFor([view] { return view->Decoded(); }));
    EXPECT_EQ(view->ImageSize(), QSize(41, 31));

    Item(scale, "200%")->trigger();
    float width = 0, height = 0;
    view->GetMaxSize(&width, &height);
    EXPECT_EQ(QSizeF(width, height), QSizeF(82, 62));
    EXPECT_EQ(window.width(), 82 + 14) << "the window follows the scaled picture";

    Item(scale, "Max")->trigger();
    EXPECT_EQ(view->ScaleMode(), 0);
    const QPoint origin(0, window.menuBar()->sizeHint().height());
    const float across = float(Screen().width() - 1 - 14 - origin.x() - 12) / 40;
    const float down = float(Screen().height() - 1 - 14 - origin.y() - 32) / 30;
    EXPECT_FLOAT_EQ(view->Scale(), std::min(across, down));

    stretch->trigger();
    EXPECT_TRUE(stretch->isChecked());
    EXPECT_EQ(view->ScaleMode(), 1);
    stretch->trigger();
    EXPECT_EQ(view->ScaleMode(), 0);
    EXPECT_EQ(fAlerts.Count(), 0u);
}

// A picture of many pixels shows at once from a first look, then whole: a
// PNG's top-left corner, as big as the screen; a JPEG all of it, at the
// screen's size.
TEST_F(ViewerTest, ABigPictureShowsAFirstLookThenTheWhole)
{
    const QSize size(4100, 2000);
    const std::pair<const char *, QRect> cases[] = {{"png", QRect(QPoint(0, 0), Room().size())},
                                                    {"jpeg", QRect(QPoint(0, 0), size)}};
    for (const auto &[format, area] : cases) {
        ViewerWindow window(kFrame, Image(std::string("big.") + format, size, format));
        TImageView *view = window.ImageView();
        ASSERT_NE(view, nullptr);
        std::optional<bool> completeAtFirst;
        QRect firstArea;
        QObject::connect(view, &TImageView::ImageDecoded, [&] {
            completeAtFirst = view->Complete();
            firstArea = view->DecodedArea();
        });
        ASSERT_TRUE(QTest::qWaitFor([view] { return view->Complete(); }, 20000)) << format;
        ASSERT_TRUE(completeAtFirst.has_value()) << format;
        EXPECT_FALSE(*completeAtFirst) << format;
        EXPECT_EQ(Text(firstArea), Text(area)) << format;
        EXPECT_EQ(view->ImageSize(), size) << format;
        EXPECT_EQ(Text(view->DecodedArea()), Text(QRect(QPoint(0, 0), size))) << format;
    }
}

TEST_F(ViewerTest, BigTextsShowTheirEndAtOnceAndFindInTheFile)
{
    std::string text;
    for (int i = 0; text.size() < (6u << 20); i++)
        text += "entry " + std::to_string(i) + "\n";
    text += std::string(3 * kestrin::TextIndex::kPieceBytes, 'j') + "needle tail\n";
    const std::string path = File("big.log", text);
    ViewerWindow window(kFrame, path);
    ASSERT_TRUE(ShowActive(window));
    TextPager *view = window.TextView();
    EXPECT_EQ(view->ShownRows().front(), "entry 0");

    QTest::keyClick(view, Qt::Key_End, Qt::ControlModifier);
    EXPECT_EQ(view->ShownRows().mid(view->ShownRows().size() - 2),
              QStringList({QString(kestrin::TextIndex::kPieceBytes, 'j'), "needle tail"}))
        << "a long line shows in pieces";
    QTest::keyClick(view, Qt::Key_Home, Qt::ControlModifier);
    EXPECT_EQ(view->Top(), 0);
    QTest::keyClick(view, Qt::Key_Down);
    EXPECT_EQ(view->ShownRows().front(), "entry 1");

    QSignalSpy finished(view, &TextPager::SearchFinished);
    ASSERT_TRUE(FindText(window, finished, "entry 2"));
    EXPECT_EQ(view->MatchOffset(), int64_t(text.find("entry 2")));
    EXPECT_EQ(view->ShownRows().front(), "entry 2");
    QTest::keyClick(&window, Qt::Key_F3);
    ASSERT_TRUE(finished.wait());
    EXPECT_EQ(view->ShownRows().front(), "entry 20");
    QTest::keyClick(&window, Qt::Key_F3, Qt::ShiftModifier);
    ASSERT_TRUE(finished.wait());
    EXPECT_EQ(view->ShownRows().front(), "entry 2");

    ASSERT_TRUE(FindText(window, finished, "needle"));
    EXPECT_EQ(view->MatchOffset(), int64_t(text.find("needle")));
    EXPECT_EQ(view->ShownRows().front(), "needle tail");

    // A new find starts from the top row shown, wherever the last one ended,
    // and the top row's own match counts; one that finds nothing leaves
    // nothing highlighted.
    auto *field = window.findChild<QLineEdit *>("findField");
    view->setFocus();
    QTest::keyClick(view, Qt::Key_Home, Qt::ControlModifier);
    ASSERT_TRUE(FindText(window, finished, "entry 1"));
    EXPECT_EQ(view->MatchOffset(), int64_t(text.find("entry 1"))) << "not from the last match";
    QTest::keyClick(field, Qt::Key_Return);
    ASSERT_TRUE(finished.wait());
    EXPECT_EQ(view->MatchOffset(), int64_t(text.find("entry 10"))) << "Enter again goes on";
    ASSERT_TRUE(FindText(window, finished, "no such text"));
    EXPECT_FALSE(finished.last().at(0).toBool());
    EXPECT_EQ(view->MatchOffset(), -1) << "the old highlight is gone";
    ASSERT_TRUE(FindText(window, finished, "entry 1"));
    EXPECT_EQ(view->MatchOffset(), int64_t(text.find("entry 10"))) << "the top row's own match";
    ASSERT_TRUE(FindText(window, finished, "needle"));
    QTest::keyClick(&window, Qt::Key_F3);
    ASSERT_TRUE(finished.wait());
    EXPECT_FALSE(finished.last().at(0).toBool());

    // Cut in the middle of a line, far above the end the index knows.
    ASSERT_TRUE(QTest::qWaitFor([view] { return view->Index().Complete(); }, 20000));
    std::filesystem::resize_file(path, 1003);
    QTest::keyClick(view, Qt::Key_End, Qt::ControlModifier);
    EXPECT_EQ(view->ShownRows().join(""), "") << "what went reads as nothing";
    view->viewport()->grab();
    QTest::keyClick(view, Qt::Key_PageUp);
    QTest::keyClick(view, Qt::Key_Home, Qt::ControlModifier);
    const QStringList rows = view->ShownRows();
    ASSERT_FALSE(rows.isEmpty());
    EXPECT_EQ(rows.front(), "entry 0");
    view->viewport()->grab();
    ASSERT_TRUE(FindText(window, finished, "needle"));
    EXPECT_FALSE(finished.last().at(0).toBool()) << "the end that went is not found";
    ASSERT_TRUE(FindText(window, finished, "entry 20"));
    EXPECT_TRUE(finished.last().at(0).toBool());
    EXPECT_EQ(view->ShownRows().front(), "entry 20");
    EXPECT_EQ(fAlerts.Count(), 0u);

    // Escape leaves the find field first, then closes the viewer.
    QTest::keyClick(field, Qt::Key_Escape);
    EXPECT_FALSE(field->isVisible());
    EXPECT_TRUE(window.isVisible());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    EXPECT_FALSE(window.isVisible());
}

TEST_F(ViewerTest, TheOpenPanelStartsAtHomeAndOpensTheChosenFileInANewViewer)
{
    QWidget owner;
    const std::string chosen = File("chosen.txt", "chosen\n");
    ViewerWindow window(kFrame, File("first.txt", "first\n"), &owner);
    Send(window, kestrin::kMsgViewerOpen);
    QFileDialog *panel = window.OpenPanel();
    ASSERT_NE(panel, nullptr);
    EXPECT_EQ(panel->directory().absolutePath().toStdString(), fHome.Home());
    emit panel->filesSelected({QString::fromStdString(chosen)});
    ViewerWindow *opened = nullptr;
    for (ViewerWindow *viewer : owner.findChildren<ViewerWindow *>()) {
        if (viewer->windowTitle() == "chosen.txt")
            opened = viewer;
    }
    ASSERT_NE(opened, nullptr);
    EXPECT_EQ(opened->geometry().topLeft(), QPoint(50, 50));
    EXPECT_TRUE(opened->isVisible());
}

} // namespace
