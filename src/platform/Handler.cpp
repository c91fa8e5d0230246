#include "platform/Handler.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QThread>

namespace platform {

status_t CheckGuiThread()
{
    const QCoreApplication *app = QCoreApplication::instance();
    if (app == nullptr)
        return B_NO_INIT;
    return QThread::currentThread() == app->thread() ? B_OK : B_NOT_ALLOWED;
}

Handler::Handler()
    : fSelf(std::make_shared<Handler *>(this))
{}

Handler::~Handler()
{
    *fSelf = nullptr;
}

void Handler::MessageReceived(Message &) {}

status_t Handler::Post(const Message &message) const
{
    QCoreApplication *app = QCoreApplication::instance();
    if (!app)
        return B_NO_INIT;
    QMetaObject::invokeMethod(
        app,
        [self = fSelf, message]() {
            if (Handler *handler = *self) {
                Message delivered = message;
                handler->MessageReceived(delivered);
            }
        },
        Qt::QueuedConnection);
    return B_OK;
}

} // namespace platform
