#include "cli/CommandErrors.h"

#include "cli/Arguments.h"

namespace keldra {
namespace {

constexpr int interruptedStatus = 130;

} // namespace

Error interruptedError() {
    return Error{"Interrupted", interruptedStatus, "interrupted", {}};
}

Error unwritableOutput() {
    return Error{"Console", 1, "the result could not be written to standard output", {}};
}

int exitStatus(const Error& error) {
    if (error == interruptedError())
        return interruptedStatus;
    return isUsageError(error) ? 2 : 1;
}

} // namespace keldra
