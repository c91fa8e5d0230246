#pragma once

#include "widgets/StatusBar.h"

#include <QPointer>
#include <QWidget>
#include <string>

namespace kestrin {

class StatusBar;

// The bar below a pane's list: the summary of the listed files, or, while a
// folder is read, a progress bar named "progress" in its place.
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

    QSize sizeHint() const override;

signals:
    void Clicked();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    void PlaceBar();

    std::string fText;
    QPointer<StatusBar> fBar;
};

} // namespace kestrin
