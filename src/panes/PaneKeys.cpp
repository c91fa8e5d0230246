#include "panes/PaneKeys.h"

#include "panes/DirListItem.h"
#include "panes/MarkedList.h"
#include "panes/PaneCommands.h"
#include "panes/PaneMessages.h"
#include "panes/PaneModel.h"
#include "widgets/ColumnListView.h"

#include <QKeyEvent>
#include <QScrollBar>
#include <algorithm>
#include <utility>

namespace kestrin {

namespace {

// Whether a name begins with the typed character, case folded. Names are
// bytes: ASCII is compared as it stands, anything else as the UTF-8 it should
// be. A scan of a million rows asks this a million times, so the two ASCII
// forms of the character are worked out once and most names need no decoding.
class FirstLetter
{
public:
    explicit FirstLetter(QChar typed)
        : fFolded(typed.toCaseFolded())
    {
        if (typed.unicode() < 0x80) {
            fLower = char(QChar(typed).toLower().unicode());
            fUpper = char(QChar(typed).toUpper().unicode());
        }
    }

    // `first` is the row name's first byte, which settles most rows alone:
    // those are never read.
    bool Begins(char first, const DirListItem &row) const
    {
        if (first == 0)
            return false;
        if (static_cast<unsigned char>(first) < 0x80)
            return fLower != 0 && (first == fLower || first == fUpper);
        const std::string &name = row.Name();
        const QString decoded = QString::fromUtf8(name.data(),
                                                  qsizetype(std::min<size_t>(name.size(), 4)));
        return !decoded.isEmpty() && decoded[0].toCaseFolded() == fFolded;
    }

private:
    QChar fFolded;
    char fLower = 0; // 0 when the typed character is not ASCII
    char fUpper = 0;
};

} // namespace

PaneKeys::PaneKeys(ColumnListView &view, PaneModel &model, PaneCommands &commands)
    : fView(view)
    , fModel(model)
    , fCommands(commands)
    , fMarked(model.Marked())
{}

bool PaneKeys::Handle(QKeyEvent *event)
{
    const int selection = fView.CurrentSelection();
    const Qt::KeyboardModifiers modifiers = event->modifiers();
    const bool control = modifiers & Qt::ControlModifier;
    const bool shift = modifiers & Qt::ShiftModifier;
    const int key = event->key();
    const int last = fView.CountItems() - 1;

    if (key == Qt::Key_Delete) {
        if (selection > 0 || !fMarked.Rows().empty())
            fCommands.Trash();
        return false;
    }
    if (key == Qt::Key_PageDown) {
        PageDown();
        return true;
    }
    if (key == Qt::Key_Backspace) {
        fModel.NavigateUp();
        return false;
    }
    if (key == Qt::Key_Space) {
        if (selection >= 1) {
            fMarked.Toggle(selection);
            fCommands.GetSize();
        }
        return true;
    }
    if (key == Qt::Key_Insert) {
        if (selection >= 1)
            fMarked.Toggle(selection);
        if (selection + 1 <= last) {
            fView.Select(selection + 1);
            fView.ScrollToSelection();
        }
        return true;
    }
    const QString text = event->text();
    const bool plain = !(modifiers & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
    if (plain && text.size() == 1 && (text[0].isLetterOrNumber() || text[0] == '.')) {
        TypeAhead(text);
        return true;
    }
    if (plain && text == "*") {
        if (last >= 1)
            fMarked.ToggleRange(1, last);
        return true;
    }
    if (plain && text == "+") {
        if (last >= 1)
            fMarked.Mark(1, last);
        return true;
    }
    if (plain && text == "-") {
        if (last >= 1)
            fMarked.Unmark(1, last);
        return true;
    }
    if (key == Qt::Key_Up || key == Qt::Key_Down) {
        if (shift && selection >= 1)
            fMarked.Toggle(selection);
        return false;
    }
    if (key >= Qt::Key_F1 && key <= Qt::Key_F9)
        return FunctionKey(key, control, shift);
    return false;
}

bool PaneKeys::FunctionKey(int key, bool control, bool shift)
{
    PaneCommands &commands = fCommands;
    const int selection = fView.CurrentSelection();
    switch (key) {
    case Qt::Key_F1:
        fModel.Notify(kMsgHelpKeys);
        break;
    case Qt::Key_F2:
        fModel.Refresh();
        break;
    case Qt::Key_F3:
        commands.View();
        break;
    case Qt::Key_F4:
        commands.OpenEditor();
        break;
    case Qt::Key_F5:
        if (control)
            commands.Pack();
        else
            commands.CopyOut();
        break;
    case Qt::Key_F6:
        if (selection >= 1 || !fMarked.Rows().empty()) {
            if (shift)
                commands.Edit();
            else
                commands.SendRequest(kMsgCopyRequest, "Move", false);
        }
        break;
    case Qt::Key_F7: {
        platform::Message request(control ? kMsgNewQuery : kMsgNewFolder);
        fModel.SendToWindow(request);
        break;
    }
    case Qt::Key_F8:
        commands.Trash();
        break;
    case Qt::Key_F9:
        commands.SendRequest(kMsgCopyRequest, "Link", true);
        break;
    default:
        return false;
    }
    return true;
}

void PaneKeys::TypeAhead(const QString &text)
{
    const FirstLetter typed(text[0]);
    const int count = fView.CountItems();
    if (count == 0)
        return;
    const int selection = fView.CurrentSelection();
    int start = 0;
    const std::vector<char> &firstBytes = fView.SearchBytes();
    const auto begins = [&](int index) {
        return typed.Begins(firstBytes[size_t(index)], *fModel.Row(index));
    };
    if (selection >= 0 && selection < count - 1 && begins(selection))
        start = selection + 1;
    // From the start to the end, then from the top round to the start again.
    for (const auto &[from, to] : {std::pair{start, count}, std::pair{0, start + 1}}) {
        for (int index = from; index < std::min(to, count); index++) {
            if (begins(index)) {
                fView.Select(index);
                fView.ScrollToSelection();
                return;
            }
        }
    }
}

void PaneKeys::PageDown()
{
    // The row at the bottom left corner of the list, 2 units in.
    const QPoint corner(2, fView.viewport()->height() - 2);
    if (fView.IndexOf(corner) == 0)
        return;
    fView.verticalScrollBar()->triggerAction(QAbstractSlider::SliderPageStepAdd);
    int index = fView.IndexOf(corner);
    // Below the last row: the last row, rather than no selection at all.
    if (index < 0)
        index = fView.CountItems() - 1;
    if (index >= 0) {
        fView.Select(index);
        fView.ScrollToSelection();
    }
}

} // namespace kestrin
