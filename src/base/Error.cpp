#include "base/Error.h"

#include <system_error>

namespace keldra {

Error systemError(int errnoValue, std::string_view subject) {
    std::string words = std::generic_category().message(errnoValue);
    if (!subject.empty())
        words = std::string(subject) + ": " + words;
    return Error{"POSIX", errnoValue, std::move(words), {}};
}

} // namespace keldra
