#pragma once

#include <QString>
#include <QWidget>

namespace kestrin {

// A progress bar in the manner of BeOS's BStatusBar: a label and a text on the
// left above the bar, a trailing text and a trailing label on the right, the bar
// below them.
//
// The value always lies in [0, max]. A max that is zero or negative (a 32-bit
// byte total that wrapped past 2 GiB) is kept as given, so MaxValue() shows
// what the caller set, but the value stays 0 and the bar is drawn empty.
//
// GUI thread only: every member is owned and touched by the GUI thread.
class StatusBar : public QWidget
{
    Q_OBJECT

public:
    explicit StatusBar(QWidget *parent = nullptr);
    ~StatusBar() override;

    // As on BeOS: the value goes back to 0, the maximum to 100, both texts are
    // cleared and the labels are replaced.
    void Reset(const QString &label = QString(), const QString &trailingLabel = QString());
    void SetMaxValue(float max);
    // Moves the value by `delta`; a null text leaves that text as it is.
    void Update(float delta,
                const QString &text = QString(),
                const QString &trailingText = QString());

    void SetText(const QString &text);
    void SetTrailingText(const QString &text);
    void SetLabel(const QString &label);
    void SetTrailingLabel(const QString &label);

    float CurrentValue() const { return fValue; }
    float MaxValue() const { return fMax; }
    QString Text() const { return fText; }
    QString TrailingText() const { return fTrailingText; }
    QString Label() const { return fLabel; }
    QString TrailingLabel() const { return fTrailingLabel; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    // The largest value the bar can hold: 0 when the maximum is not positive.
    float Ceiling() const;
    float Clamped(float value) const;

    QString fLabel;
    QString fText;
    QString fTrailingText;
    QString fTrailingLabel;
    float fValue = 0;
    float fMax = 100;
};

} // namespace kestrin
