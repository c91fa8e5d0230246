#pragma once

#include "platform/Message.h"

#include <QIcon>
#include <QRect>
#include <memory>
#include <string>
#include <vector>

namespace kestrin {

class KestrinWindow;

// Kestrin itself: opens the main window where the settings left it and
// hands it the folders and documents Kestrin is started on or handed later.
// The Qt application object is main's; this one keeps no state but the
// window. The window's icon is set once the window has been painted.
//
// GUI thread only.
class KestrinApplication
{
public:
    // The main screen's frame inset by 10, 40, 20 and 50: the window's
    // frame before the settings move it.
    static QRect InitialFrame(const QRect &screen);

    // The PNG files of Kestrin's icon, smallest first, from the installed
    // tree's hicolor theme (or the source tree's); the window's icon.
    static std::vector<std::string> IconFiles();
    static QIcon Icon();

    KestrinApplication();
    ~KestrinApplication();

    KestrinWindow *Window() const { return fWindow.get(); }

    // An argument as a path: a file: URL (what the desktop hands over for
    // %U) becomes its local path; another URL, which names nothing on this
    // machine's disks, an empty string; anything else is a path as given.
    static std::string ArgumentPath(const std::string &argument);

    // Folders (or documents) named on the command line, argv[1] on, as
    // paths or file: URLs; the last one is left shown.
    void ArgvReceived(const std::vector<std::string> &arguments);
    // Entries handed over as "refs"; the first one is left shown.
    void RefsReceived(const platform::Message &message);

private:
    std::unique_ptr<KestrinWindow> fWindow;
};

} // namespace kestrin
