#pragma once

#include "platform/Handler.h"

#include <QString>
#include <QWidget>
#include <array>
#include <cstdint>

class QLabel;
class QPushButton;

namespace kestrin {

// The question asked when a copy meets a target that exists already: the two
// paths, a description of each, and six answers. A pressed button hides the
// window and becomes the decision; the decision stays until the next
// DoDisplay(), so a caller may read it after the window has gone.
//
// GUI thread only: every member is owned and touched by the GUI thread. A
// worker that waits for the answer waits on its own condition, woken from
// Answered().
class OverWin : public QWidget, public platform::Handler
{
    Q_OBJECT

public:
    // Hidden at first, centred on `frame` (the progress window's frame).
    OverWin(const QRect &frame, const QString &title, QWidget *parent = nullptr);
    ~OverWin() override;

    void SetPaths(const QString &line1,
                  const QString &line2,
                  const QString &line3,
                  const QString &line4);
    void DoDisplay();
    void HideDisplay();
    bool IsShown() const { return fShown; }
    int32_t Decision() const { return fDecision; }

    // 1000 to 1005 answer the question; the buttons send these.
    void MessageReceived(platform::Message &message) override;

signals:
    void Answered(int32_t decision);

protected:
    // Only an answer closes the question.
    void closeEvent(QCloseEvent *event) override;

private:
    QPushButton *AddButton(const QString &label, const QString &name, int32_t code);

    std::array<QLabel *, 4> fLines{}; // children of this window
    bool fShown = false;
    int32_t fDecision = 0;
};

} // namespace kestrin
