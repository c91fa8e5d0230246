#pragma once

#include <QWidget>

namespace kestrin {

class EditControl;

// A bar with a label on its left half and a one-line field on its right,
// under a raised bevel. Nothing runs what is typed; the bar is a place for a
// command line that the main window may give a role.
//
// GUI thread only. The field is a child of the bar and keeps its geometry
// when the bar is resized, as it was placed when the bar was made.
class CommandLine : public QWidget
{
    Q_OBJECT

public:
    CommandLine(const QRect &frame, QWidget *parent = nullptr);
    ~CommandLine() override;

    EditControl *Edit() const { return fEdit; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    EditControl *fEdit; // child of this bar
};

} // namespace kestrin
