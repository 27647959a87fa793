#include "base/Log.h"

#include <atomic>
#include <string>
#include <unistd.h>

namespace keldra {
namespace {

std::atomic<int> logDescriptor = STDOUT_FILENO;

} // namespace

void setLogStream(LogStream stream) {
    logDescriptor = stream == LogStream::standardOutput ? STDOUT_FILENO : STDERR_FILENO;
}

void logLine(std::string_view prefix, std::string_view text) {
    std::string line;
    line.reserve(prefix.size() + text.size() + 2);
    line.append(prefix).append(" ").append(text);
    for (char& character : line)
        if (character == '\n')
            character = ' ';
    line.push_back('\n');
    // One write is one line; there is nobody left to tell when the log itself cannot be written.
    [[maybe_unused]] const ssize_t written = ::write(logDescriptor, line.data(), line.size());
}

void logFailure(std::string_view operation, const Error& error) {
    std::string info = error.message;
    for (const auto& [key, value] : error.info)
        info += "; " + key + ": " + value;
    logLine("[KELDRA]", std::string(operation) + " failed: domain=" + error.domain +
                            " code=" + std::to_string(error.code) + " info=" + info);
}

} // namespace keldra
