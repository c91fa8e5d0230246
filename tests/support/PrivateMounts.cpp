#include "PrivateMounts.h"

#include <sched.h>
#include <sys/mount.h>

namespace PrivateMounts {

void Enter()
{
    if (unshare(CLONE_NEWNS) != 0)
        return;
    // A new namespace still shares propagation with the one it came from:
    // without this, a mount here would show up there, and the other way round.
    mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
}

} // namespace PrivateMounts
