#pragma once

#include "widgets/StatusBar.h"

#include <QPointer>
#include <QWidget>
#include <string>

class QLineEdit;

namespace kestrin {

class StatusBar;

// The bar below a pane's list: the summary of the listed files, or, while a
// folder is read, a progress bar named "progress" in its place. While the
// pane's rows are filtered, the filter's field ("filter") stands at its left
// and the summary follows it.
//
// GUI thread only.
class KsFtr : public QWidget
{
    Q_OBJECT

public:
    explicit KsFtr(QWidget *parent = nullptr);
    ~KsFtr() override;

    void SetText(const std::string &text);
    const std::string &Text() const { return fText; }

    // Shows the progress bar, empty, with this maximum.
    void Start(float max);
    void SetMax(float max);
    // One step further.
    void Update();
    // Removes the progress bar.
    void Stop();
    // Null unless a listing is running.
    StatusBar *ProgressBar() const { return fBar.data(); }

    // Shows the filter's field with `text` and gives it the focus.
    void OpenFilter(const std::string &text);
    // Shows `text` in the field, unless the user is typing into it; an empty
    // text outside the field closes it.
    void ShowFilter(const std::string &text);
    bool FilterShown() const;
    QLineEdit *FilterField() const { return fFilter; }

    QSize sizeHint() const override;

signals:
    void Clicked();
    // The text of the filter's field changed as the user typed.
    void FilterEdited(const std::string &text);
    // The user left the field: with Escape (`cleared`), or with Return or
    // a key that moves in the list, keeping the text.
    void FilterLeft(bool cleared);
    // The field lost the keyboard focus.
    void FilterFocusLost(Qt::FocusReason reason);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void PlaceBar();
    void PlaceFilter();

    std::string fText;
    QPointer<StatusBar> fBar;
    QLineEdit *fFilter;
};

} // namespace kestrin
