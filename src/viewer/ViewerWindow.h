#pragma once

#include "platform/Handler.h"

#include <QMainWindow>
#include <memory>
#include <string>

class QAction;
class QFileDialog;
class QLineEdit;
class QMenu;

namespace kestrin {

class TextPager;
class TImageView;

// Shows one file read-only: a text in a TextPager, an image in a TImageView,
// chosen by the file's type; anything else leaves the window empty. Pipes,
// sockets and devices are refused before anything reads them. The file's
// content is read on workers: the window opens before its first block is
// read, and fills when it is.
//
// `owner` (the main window, a platform::Handler) takes the entries dropped
// on a viewer and the "Quit" command; a viewer is a window of its own that
// goes when its owner goes.
//
// GUI thread only.
class ViewerWindow : public QMainWindow, public platform::Handler
{
    Q_OBJECT

public:
    ViewerWindow(const QRect &frame, const std::string &path, QWidget *owner = nullptr);
    ~ViewerWindow() override;

    // A viewer on `path` at the place new viewers take, shown; it deletes
    // itself when closed.
    static ViewerWindow *Open(const std::string &path, QWidget *owner);

    // 2 an image, 1 a text, 3 anything else, 0 no path, -1 no type (after
    // an alert). Titles the window with the leaf name.
    int32_t GetType(const std::string &path);
    void OpenFile(const QRect &frame, const std::string &path);
    void AddText(const QRect &frame);
    void AddImage(const QRect &frame);
    void RedoSizes();
    // A viewer for every file among the message's "refs", the last first.
    void RefsReceived(const platform::Message &message);

    void MessageReceived(platform::Message &message) override;

    TextPager *TextView() const { return fTextView; }
    TImageView *ImageView() const { return fImageView; }
    QFileDialog *OpenPanel() const { return fPanel; }

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    QAction *AddItem(QMenu *menu,
                     const QString &label,
                     uint32_t code,
                     const QKeySequence &keys = {});
    QAction *AddScaleItem(QMenu *menu, const QString &label, float scale, int32_t mode);
    void AddTextMenu();
    void AddImageMenu();
    void FirstScreenRead();
    void FitToText();
    void FitWindow(QSize size);
    void ApplyWrap();
    void ShowOpenPanel();
    void AddFindKeys();
    void ShowFindField();
    void FindAgain(bool forward);
    platform::Handler *Owner() const;

    std::string fPath;
    TextPager *fTextView = nullptr;
    TImageView *fImageView = nullptr;
    QFileDialog *fPanel = nullptr;
    QLineEdit *fFindField = nullptr;
    QAction *fWrapText = nullptr;
    QAction *fWrapToEdge = nullptr;
    QAction *fStretch = nullptr;
    float fWidestLine = 1.0f;
};

} // namespace kestrin
