#include "async/MainQueue.h"

#include <QThread>

namespace keldra {

void MainQueue::post(Work work) {
    QMetaObject::invokeMethod(&m_context, std::move(work), Qt::QueuedConnection);
}

bool MainQueue::tryPost(Work work) {
    post(std::move(work));
    return true;
}

void MainQueue::sync(const Work& work) {
    if (isCurrent())
        work();
    else
        QMetaObject::invokeMethod(&m_context, work, Qt::BlockingQueuedConnection);
}

Timer MainQueue::every(Duration period, Work work) {
    return m_scheduler->every(period, std::move(work));
}

bool MainQueue::isCurrent() const {
    return QThread::currentThread() == m_context.thread();
}

} // namespace keldra
