#include "platform/x11/WakeUp.h"

#include <sys/eventfd.h>
#include <unistd.h>

namespace keldra {

WakeUp::WakeUp() : m_descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

WakeUp::~WakeUp() {
    close(m_descriptor);
}

void WakeUp::wake() {
    eventfd_write(m_descriptor, 1);
}

void WakeUp::clear() {
    eventfd_t count = 0;
    eventfd_read(m_descriptor, &count);
}

} // namespace keldra
