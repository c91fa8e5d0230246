#pragma once

#include "fileops/EntryFacts.h"
#include "platform/Background.h"

#include <QWidget>
#include <atomic>
#include <memory>
#include <string>

class QLabel;

namespace kestrin {

class AttributeView;

// The information window of one entry: its icon and name, then its size,
// dates, kind, path, where a link leads, and its attributes. A folder's
// total is counted on a worker and shown when it arrives, so a huge folder
// never holds the window up; closing the window stops the count.
//
// GUI thread only; the worker touches nothing but its own counters.
class GetInfo : public QWidget
{
    Q_OBJECT

public:
    // Reads the entry at `path` (a link itself), its dates in the profile's
    // date format, and shows the window beside `near`.
    GetInfo(const std::string &path, const QRect &near, QWidget *parent = nullptr);
    ~GetInfo() override;

    const EntryFacts &Facts() const { return fFacts; }
    // The count of a folder's total is under way.
    bool IsCounting() const { return fCounting; }

signals:
    // A folder's total is shown.
    void SizeArrived();

private:
    QLabel *AddLabel(const QString &name, const QString &text, int y);
    QLabel *AddValue(const QString &name, const std::string &text, int y);
    void CountFolder();
    void FolderCounted(double size, int32_t count);

    EntryFacts fFacts;
    QLabel *fSize = nullptr;
    AttributeView *fAttributes = nullptr;
    platform::Background::Task fCount;
    bool fCounting = false;
};

} // namespace kestrin
