#pragma once

#include <map>
#include <string>
#include <string_view>

namespace keldra {

/// Why an operation failed. Compared by domain and code; `message` is for people.
struct Error {
    std::string domain;
    int code = 0;
    /// The words a user reads.
    std::string message;
    /// What a developer wants beside the words, for the log.
    std::map<std::string, std::string> info;

    friend bool operator==(const Error& a, const Error& b) { return a.code == b.code && a.domain == b.domain; }
};

/// An error of the operating system, in its own words, e.g. "disk.mov: No space left on device".
/// `subject` names what the operation was about; it may be empty.
Error systemError(int errnoValue, std::string_view subject = {});

} // namespace keldra
