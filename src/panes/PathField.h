#pragma once

#include <QLineEdit>
#include <string>

class QCompleter;
class QStringListModel;

namespace kestrin {

class PathCompletion;

// A pane's header made editable: the place's path, to change, type or paste
// over. Return hands the text on (Accepted); Escape, or a click elsewhere,
// gives up (Cancelled). While a path is typed the sub-folders of the folder
// it names are offered in a pop-up, read on a worker; Tab takes the one
// highlighted, else the first.
//
// GUI thread only.
class PathField : public QLineEdit
{
    Q_OBJECT

public:
    explicit PathField(QWidget *parent = nullptr);

    // Shows `text`, all of it selected, with the focus; `standing` is where
    // a relative path starts; `complete` whether folder names are offered.
    // Once shown, it keeps what was typed and only selects it all again.
    void Begin(const QString &text, const std::string &standing, bool complete);
    // Shows `path` with the part from `from` on selected and coloured, as
    // the part that is not there.
    void MarkMissing(const QString &path, int from, const QString &problem);
    bool IsMarkingMissing() const { return fMarking; }
    QCompleter *Completer() const { return fCompleter; }

signals:
    void Accepted(const QString &text);
    void Cancelled();
    // The text changed after a missing part was marked: the mark is gone.
    void Unmarked();

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void Offered(const QStringList &completions);
    void TakeCompletion();
    void Unmark();

    QPalette fPlain;
    PathCompletion *fCompletion;
    QStringListModel *fNames;
    QCompleter *fCompleter;
    std::string fStanding;
    bool fComplete = true;
    bool fMarking = false;
    // Typed in since Begin: only then do completions pop up.
    bool fEdited = false;
};

} // namespace kestrin
