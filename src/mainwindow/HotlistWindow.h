#pragma once

#include <QDialog>

class QListWidget;
class QPushButton;

namespace kestrin {

// The small window that edits the hotlist: its entries in order, renamed in
// place (Return or F2), removed (Delete) and moved (Ctrl+Up, Ctrl+Down).
// Each change is kept at once; Close (or Escape) ends it. One at a time: a
// second Open brings the first forward.
//
// GUI thread only.
class HotlistWindow : public QDialog
{
    Q_OBJECT

public:
    static HotlistWindow *Open(QWidget *parent);

private:
    explicit HotlistWindow(QWidget *parent);
    void Fill();
    void Keep();
    void RenameCurrent();
    void RemoveCurrent();
    void MoveCurrent(int by);
    void UpdateButtons();

    QListWidget *fList;
    QPushButton *fRename;
    QPushButton *fRemove;
    QPushButton *fUp;
    QPushButton *fDown;
};

} // namespace kestrin
