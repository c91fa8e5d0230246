#pragma once

#include "panes/ContentComparison.h"
#include "platform/Background.h"

#include <QWidget>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class QPushButton;
class QTimer;

namespace kestrin {

class StatusBar;

// The progress of a comparison of two folders by content: the files of the
// same size are read on a worker while a bar shows the bytes done of the
// bytes to read. Cancel (or Escape) stops the worker and drops its answer;
// otherwise `done` gets the names that differ, and the window closes.
//
// Create it with new: a window of its own that deletes itself when closed,
// or goes with `parent` (the main window). GUI thread only.
class CompareWin : public QWidget
{
    Q_OBJECT

public:
    using Done = std::function<void(std::vector<std::string>)>;

    CompareWin(const QRect &frame,
               const std::string &leftFolder,
               const std::string &rightFolder,
               std::vector<FolderComparison::Entry> files,
               Done done,
               QWidget *parent);
    ~CompareWin() override;

private:
    void ShowProgress();

    StatusBar *fBar;          // child of this window
    QPushButton *fCancel;     // child of this window
    QTimer *fTimer;           // child of this window
    std::shared_ptr<ContentComparison::Progress> fProgress;
    std::vector<std::string> fNames; // of the files, in the order they are read
    platform::Background::Task fTask;
};

} // namespace kestrin
