#pragma once

// Moves the test process into a mount namespace of its own, so that the
// tmpfs volumes one test mounts are never seen by the mount watchers of
// another test running beside it (the kernel hands a freed anonymous device
// number straight to the next tmpfs, which makes volumes of two tests look
// alike). Must run before the process starts a thread. Where the process may
// not have a namespace of its own nothing changes: the tests that mount skip
// there anyway, as mounting needs the same privilege.
namespace PrivateMounts {
void Enter();
}
