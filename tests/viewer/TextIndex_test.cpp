#include "viewer/RowText.h"
#include "viewer/TextFinder.h"
#include "viewer/TextIndex.h"

#include "support/TempHome.h"

#include <QTest>
#include <filesystem>
#include <future>
#include <gtest/gtest.h>

using kestrin::RowText;
using kestrin::TextFinder;
using kestrin::TextIndex;

namespace {

constexpr int64_t kPiece = TextIndex::kPieceBytes;

std::vector<std::string> AllRows(const TextIndex &index)
{
    std::vector<std::string> rows;
    for (int64_t row = 0; row < index.Size(); row = index.NextRow(row))
        rows.push_back(index.RowAt(row).bytes);
    return rows;
}

// An index of `path` that its worker has read to the end.
std::shared_ptr<TextIndex> Complete(const std::string &path, int64_t budget = 1 << 20)
{
    const auto index = std::make_shared<TextIndex>(path);
    index->Start(budget);
    EXPECT_TRUE(QTest::qWaitFor([&] { return index->Complete(); }, 60000));
    return index;
}

// "line 0\n" ... up to `bytes`.
std::string NumberedLines(size_t bytes, int64_t *lines)
{
    std::string text;
    *lines = 0;
    while (text.size() < bytes)
        text += "line " + std::to_string((*lines)++) + "\n";
    return text;
}

} // namespace

TEST(TextIndex, RowsAreLinesAndPiecesOfLongLinesWithOrWithoutTheIndex)
{
    TempHome home;
    const std::string path = home.Root() + "/rows.txt";
    // A multi-byte character straddles the first piece's end.
    std::string longLine(kPiece - 1, 'x');
    longLine += "\xc3\xa9" + std::string(2 * kPiece, 'y');
    WriteFileBytes(path, "dos\r\n\n" + longLine + "\nlast");
    TextIndex unindexed(path);
    ASSERT_EQ(unindexed.Open(), B_OK);
    const auto shared = Complete(path);
    const TextIndex &indexed = *shared;
    EXPECT_EQ(indexed.KnownRows(), 7);
    EXPECT_EQ(indexed.LongestRow().second, kPiece);

    const std::vector<std::string> rows = AllRows(indexed);
    ASSERT_EQ(rows.size(), 7u);
    EXPECT_EQ(rows[0], "dos");
    EXPECT_EQ(rows[1], "");
    EXPECT_EQ(rows[6], "last");
    QString joined;
    for (size_t i = 2; i < 6; i++)
        joined += RowText::Decode(rows[i]);
    EXPECT_EQ(joined, QString::fromUtf8(longLine.c_str())) << "each character shows once, whole";
    for (int64_t row = 0; row < indexed.KnownRows(); row++)
        EXPECT_EQ(indexed.NextRow(indexed.RowStart(row)),
                  row + 1 < indexed.KnownRows() ? indexed.RowStart(row + 1) : indexed.Size());

    // Reading around an offset finds the rows the index finds.
    for (int64_t offset = 0; offset < indexed.Size(); offset += 97)
        ASSERT_EQ(unindexed.RowContaining(offset), indexed.RowContaining(offset)) << offset;
    EXPECT_EQ(unindexed.PreviousRow(indexed.Size() - 4), indexed.RowStart(5));
}

TEST(TextIndex, TheFirstRowsAndTheEndAreThereBeforeTheIndexIsComplete)
{
    TempHome home;
    const std::string path = home.Root() + "/big.log";
    int64_t lines = 0;
    const std::string text = NumberedLines(24 << 20, &lines);
    WriteFileBytes(path, text);

    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    const auto shared = std::make_shared<TextIndex>(path);
    const TextIndex &index = *shared;
    EXPECT_EQ(index.InitCheck(), B_NO_INIT) << "opened on the worker";
    EXPECT_EQ(index.Size(), 0);
    // The worker waits, once it has the first bytes, until it is released.
    shared->Start(1 << 20, [released] { released.wait(); });
    ASSERT_TRUE(QTest::qWaitFor([&] { return index.FirstBytesRead(); }, 60000));
    ASSERT_FALSE(index.Complete());
    EXPECT_GT(index.KnownRows(), 1000);
    EXPECT_LT(index.IndexedBytes(), index.Size());
    EXPECT_EQ(index.RowAt(0).bytes, "line 0");
    const int64_t last = index.RowContaining(index.Size() - 1);
    EXPECT_EQ(index.RowAt(last).bytes, "line " + std::to_string(lines - 1));
    EXPECT_EQ(index.RowAt(index.PreviousRow(last)).bytes, "line " + std::to_string(lines - 2));

    release.set_value();
    ASSERT_TRUE(QTest::qWaitFor([&] { return index.Complete(); }, 60000));
    EXPECT_EQ(index.KnownRows(), lines);
    EXPECT_EQ(index.RowStart(lines - 1), last);
}

TEST(TextIndex, EmptyShrunkAndUnreadableFilesReadAsWhatIsLeft)
{
    TempHome home;
    const std::string empty = home.Root() + "/empty";
    WriteFileBytes(empty, "");
    const auto shared = Complete(empty);
    const TextIndex &none = *shared;
    EXPECT_EQ(none.KnownRows(), 0);
    EXPECT_EQ(none.RowContaining(10), 0);
    EXPECT_EQ(none.RowAt(0).bytes, "");

    const std::string shrinking = home.Root() + "/shrinking";
    int64_t lines = 0;
    WriteFileBytes(shrinking, NumberedLines(4 << 20, &lines));
    const auto sized = std::make_shared<TextIndex>(shrinking);
    const TextIndex &index = *sized;
    ASSERT_EQ(sized->Open(), B_OK);
    std::filesystem::resize_file(shrinking, 1000);
    sized->Start(8 << 20);
    ASSERT_TRUE(QTest::qWaitFor([&] { return index.Complete(); }, 60000));
    EXPECT_EQ(index.RowAt(index.Size() - 10).bytes, "") << "what went reads as nothing";
    EXPECT_EQ(index.RowAt(index.RowContaining(500)).bytes.substr(0, 5), "line ");
    EXPECT_LT(index.KnownRows(), 200);

    // A file that shrinks while the worker indexes it ends where it ends.
    const std::string cut = home.Root() + "/cut";
    const std::string cutText = NumberedLines(12 << 20, &lines);
    WriteFileBytes(cut, cutText);
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    const auto cutShared = std::make_shared<TextIndex>(cut);
    const TextIndex &cutIndex = *cutShared;
    cutShared->Start(1 << 20, [released] { released.wait(); });
    ASSERT_TRUE(QTest::qWaitFor([&] { return cutIndex.FirstBytesRead(); }, 60000));
    std::filesystem::resize_file(cut, 2 << 20);
    release.set_value();
    ASSERT_TRUE(QTest::qWaitFor([&] { return cutIndex.Complete(); }, 60000));
    EXPECT_EQ(cutIndex.Size(), int64_t(cutText.size())) << "the size taken at opening";
    // The rows end with the last line that began before the cut.
    const int64_t lastRow = cutIndex.RowStart(cutIndex.KnownRows() - 1);
    EXPECT_LE(lastRow, 2 << 20);
    EXPECT_GT(lastRow, (2 << 20) - 20);
    EXPECT_EQ(cutIndex.RowContaining(cutIndex.Size() - 1), lastRow);
    EXPECT_EQ(cutIndex.RowAt(cutIndex.RowStart(1000)).bytes, "line 1000");

    // What cannot be opened says so on the worker's first call.
    EXPECT_NE(TextIndex(home.Root() + "/missing").Open(), B_OK);
    const auto missing = std::make_shared<TextIndex>(home.Root() + "/missing");
    std::atomic<int> calls{0};
    missing->Start(1 << 20, [&calls] { calls++; });
    ASSERT_TRUE(QTest::qWaitFor([&] { return missing->FirstBytesRead() && calls == 1; }, 60000));
    EXPECT_NE(missing->InitCheck(), B_OK);
    EXPECT_FALSE(missing->Complete());
    EXPECT_EQ(missing->RowAt(0).bytes, "");
}

TEST(TextFinder, FindsForwardAndBackwardAcrossBlocksOrSaysThereIsNone)
{
    TempHome home;
    const std::string path = home.Root() + "/haystack";
    const int64_t block = 4 << 20;
    std::string text(3 * block, '.');
    const int64_t across = block - 3, late = 2 * block + 10;
    text.replace(size_t(across), 6, "needle");
    text.replace(size_t(late), 6, "needle");
    text += "needle";
    const int64_t end = int64_t(text.size()) - 6;
    WriteFileBytes(path, text);
    TextIndex index(path);
    ASSERT_EQ(index.Open(), B_OK);

    EXPECT_EQ(TextFinder::Find(index, "needle", 0, true), across);
    EXPECT_EQ(TextFinder::Find(index, "needle", across + 1, true), late);
    EXPECT_EQ(TextFinder::Find(index, "needle", late + 1, true), end);
    EXPECT_EQ(TextFinder::Find(index, "needle", end + 1, true), -1);
    EXPECT_EQ(TextFinder::Find(index, "needle", index.Size(), false), end);
    EXPECT_EQ(TextFinder::Find(index, "needle", end, false), late);
    EXPECT_EQ(TextFinder::Find(index, "needle", late, false), across);
    EXPECT_EQ(TextFinder::Find(index, "needle", across, false), -1);
    EXPECT_EQ(TextFinder::Find(index, "absent", 0, true), -1);
    const std::atomic<bool> stop{true};
    EXPECT_EQ(TextFinder::Find(index, "needle", 0, true, &stop), -1);
}

TEST(RowText, AnyBytesReadAsCharacters)
{
    EXPECT_EQ(RowText::Decode("caf\xc3\xa9"), QString::fromUtf8("café"));
    EXPECT_EQ(RowText::Decode("caf\xe9"), QString::fromUtf8("café")) << "Latin-1";
    EXPECT_EQ(RowText::Decode(std::string("a\0b\x7f\tc", 6)), QString::fromUtf8("a␀b␡\tc"));
    // The tail of a character the row before shows, then UTF-8.
    EXPECT_EQ(RowText::Decode("\xa9t\xc3\xa9"), QString::fromUtf8("té"));
    EXPECT_EQ(RowText::CharactersBefore("\xc3\xa9t\xc3\xa9", 3), 2);
    EXPECT_EQ(RowText::CharactersBefore("\xe9t\xe9", 2), 2);
}
