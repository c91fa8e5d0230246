#pragma once

#include "platform/Background.h"

#include <QObject>
#include <QStringList>
#include <string>
#include <vector>

namespace kestrin {

// The folder names a path field offers while a path is typed: the
// sub-folders of the folder named by the text up to its last "/", read on
// a worker so that typing never waits on the disk. Each completion is that
// text followed by a folder's name and "/", the way it was typed ("~/wo"
// offers "~/work/"). Names starting with "." are offered once the name
// typed starts with one. The answer for a folder the text has left is
// dropped.
//
// GUI thread only.
class PathCompletion : public QObject
{
    Q_OBJECT

public:
    explicit PathCompletion(QObject *parent = nullptr);
    ~PathCompletion() override;

    // `standing` is where a relative path starts.
    void Typed(const std::string &text, const std::string &standing);

signals:
    void Offered(const QStringList &completions);

private:
    void Offer();

    std::string fStem;
    std::string fStanding;
    bool fDotted = false;
    bool fRead = false;
    std::vector<std::string> fNames;
    platform::Background::Task fTask;
};

} // namespace kestrin
