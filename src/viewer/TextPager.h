#pragma once

#include "platform/Background.h"

#include <QAbstractScrollArea>
#include <atomic>
#include <cstdint>
#include <memory>

namespace kestrin {

class TextIndex;

// Shows a text file of any size read-only: only the rows on screen are read
// and laid out, from the file, so the first screen and the end of the file
// show at once while the index of its rows still grows on a worker. The
// view stays empty until the index's worker has read the first screen: the
// GUI thread never waits for a slow disk's first read. The place shown is
// the byte offset of the top row; the vertical scroll bar stands for the
// file's bytes. Finds run over the file on a worker.
//
// The scroll area is "TextScroll", the view inside it "textView".
class TextPager : public QAbstractScrollArea
{
    Q_OBJECT

public:
    enum class Wrap { None, Words, Anywhere };

    explicit TextPager(std::shared_ptr<TextIndex> index, QWidget *parent = nullptr);
    ~TextPager() override;

    const TextIndex &Index() const { return *fIndex; }
    void SetWrap(Wrap wrap);
    // The index found more rows: the scroll bars take them in. The first
    // time the index has its first bytes, the view shows them.
    void IndexGrew();
    // Whether the view shows the file (its first screen has been read).
    bool Showing() const { return fShowing; }
    Wrap WrapMode() const { return fWrap; }

    // The size all the rows the index knows would take: the widest row's
    // width by the height of every row.
    QSize TextSize() const;
    int RowHeight() const;

    // The byte offset of the top row, and the texts of the rows the view
    // has room for from there.
    int64_t Top() const { return fTop; }
    QStringList ShownRows() const;
    void ScrollToStart();
    void ScrollToEnd();

    // Looks for `text` after (or before) the current match, or from the top
    // row; SearchFinished tells how it went, and a match is scrolled to and
    // highlighted. A search that fails leaves nothing highlighted.
    void Find(const QString &text, bool forward);
    // A new search: from the top row shown, whatever was found before; only
    // a match of the same text that the top row shows is gone past, so that
    // asking again goes on.
    void FindFromTop(const QString &text);
    int64_t MatchOffset() const { return fMatch; }

signals:
    void SearchFinished(bool found);
    // The first screen is read and shown, or the file could not be opened
    // (the index's InitCheck() says which).
    void FirstScreenRead();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;

private:
    void SetTop(int64_t top);
    void StepRows(int count);
    int RowsOnScreen() const;
    void SyncScrollBars();
    void ScrollBarAction(int action);
    void Search(const QString &text, bool forward, int64_t from);
    void ShowMatch(int64_t offset, int length);
    int64_t OffsetOfValue(int value) const;
    int ValueOfOffset(int64_t offset) const;

    std::shared_ptr<TextIndex> fIndex;
    Wrap fWrap = Wrap::None;
    int64_t fTop = 0;
    int64_t fMatch = -1;
    int fMatchLength = 0;
    QByteArray fPattern;
    platform::Background::Task fSearch;
    bool fSyncing = false;
    bool fShowing = false;
};

} // namespace kestrin
