#pragma once

#include "platform/Errors.h"
#include "platform/Message.h"

#include <memory>

namespace platform {

// B_OK on the GUI thread of a running application; B_NO_INIT without an
// application, B_NOT_ALLOWED on any other thread. What every watcher that
// delivers to handlers checks before it touches its tables.
status_t CheckGuiThread();

// Something that receives messages. Handlers live on the GUI thread: they are
// created, receive messages and are destroyed there. Any thread may post to a
// handler; the message is delivered on the GUI thread, or dropped if the handler
// is gone by then.
class Handler
{
public:
    Handler();
    virtual ~Handler();

    Handler(const Handler &) = delete;
    Handler &operator=(const Handler &) = delete;

    virtual void MessageReceived(Message &message);

    // Synchronous delivery: a direct call on the calling thread.
    void Dispatch(Message &message) { MessageReceived(message); }

    // Queued delivery on the GUI thread; safe from any thread while the handler
    // exists. B_NO_INIT when there is no application to deliver through.
    status_t Post(const Message &message) const;

private:
    // Shared with every posted message in flight. Written only by the destructor,
    // read only at delivery; both on the GUI thread, so no lock is needed.
    std::shared_ptr<Handler *> fSelf;
};

} // namespace platform
