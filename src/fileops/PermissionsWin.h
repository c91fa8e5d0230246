#pragma once

#include "platform/Handler.h"

#include <QWidget>
#include <array>
#include <cstdint>

class QCheckBox;

namespace kestrin {

// Composes a permission mode from nine boxes (owner, group and public; read,
// write and execute) and sends it to the window that opened it as 617 with
// "Permissions", as often as OK is pressed; that window applies it. The
// boxes start unchecked: the window does not read the mode of the selection.
//
// GUI thread only.
class PermissionsWin : public QWidget, public platform::Handler
{
    Q_OBJECT

public:
    // Shows itself centred on `frame`; `target` must outlive the window or
    // the window must go first (the main window owns it).
    PermissionsWin(const QRect &frame, platform::Handler *target, QWidget *parent = nullptr);
    ~PermissionsWin() override;

    // The OR of the bits of the checked boxes.
    int32_t GetPermissions() const;
    // "rwxr-xr--" for 0754.
    static std::string GetStrPermissions(unsigned int mode);

    // 203 sends the mode, 204 closes the window.
    void MessageReceived(platform::Message &message) override;

private:
    platform::Handler *fTarget;
    std::array<QCheckBox *, 9> fBoxes{}; // children of this window
};

} // namespace kestrin
