#pragma once

#include "launch/AgentRequest.h"
#include "platform/RunningApplications.h"

#include <QCoroTask>

#include <memory>

namespace keldra {

/// Makes this the only copy of the program in its login session; answers whether it goes on.
///
/// It does not when another copy does what is asked for, or records: that one shows itself then. Any other copy is
/// asked to make way; one that gives no answer is told to end, and one that does not end in time is ended. From then on
/// `requests` are served. Where nobody can be reached it goes on.
QCoro::Task<bool> becomeOnlyCopy(std::shared_ptr<RunningApplications> applications, AgentRequest request,
                                 ApplicationRequests requests);

} // namespace keldra
