#pragma once

#include "base/Result.h"

#include <QDBusConnection>
#include <QDBusMessage>

#include <chrono>

namespace keldra {

/// Sends a method call. Main thread, with Qt's loop running; answers on main.
/// Errors: what the bus or the other side says, by its own name and words; no answer within `patience`.
void callBus(const QDBusConnection& bus, const QDBusMessage& call, std::chrono::milliseconds patience,
             Completion<QDBusMessage> done);

/// A call to the bus itself.
QDBusMessage busMethod(const QString& method, const QVariantList& arguments);

} // namespace keldra
