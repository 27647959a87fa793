// Preloaded (LD_PRELOAD) it stands between a program and its disk, where the program's recordings are concerned:
//
//   KELDRA_FAULTS_LOG=FILE        a line for each fdatasync that succeeded: CLOCK_MONOTONIC seconds at its return
//   KELDRA_FAULTS_SYNC_MS=N       fdatasync takes so much longer
//   KELDRA_FAULTS_WRITE_MS=N      every write takes so much longer
//   KELDRA_FAULTS_WRITES_TO=END   to files with that end of a name; unless told otherwise, the growing ones
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <fcntl.h>
#include <string_view>
#include <sys/types.h>
#include <unistd.h>

namespace {

long setting(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? 0 : std::strtol(value, nullptr, 10);
}

void delay(long milliseconds) {
    const timespec length{milliseconds / 1000, milliseconds % 1000 * 1'000'000};
    if (milliseconds > 0)
        ::nanosleep(&length, nullptr);
}

bool isMeant(int descriptor) {
    static const char* const end = std::getenv("KELDRA_FAULTS_WRITES_TO");
    char link[64];
    char path[4096];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
    const ssize_t length = ::readlink(link, path, sizeof path);
    return length > 0 && std::string_view(path, std::size_t(length)).ends_with(end == nullptr ? ".mov" : end);
}

template <typename Function>
Function* real(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" int fdatasync(int descriptor) {
    static auto* const next = real<int(int)>("fdatasync");
    static const long milliseconds = setting("KELDRA_FAULTS_SYNC_MS");
    delay(milliseconds);
    const int answer = next(descriptor);
    const char* log = std::getenv("KELDRA_FAULTS_LOG");
    if (answer == 0 && log != nullptr) {
        timespec now{};
        ::clock_gettime(CLOCK_MONOTONIC, &now);
        if (std::FILE* file = std::fopen(log, "a"); file != nullptr) {
            std::fprintf(file, "%ld.%06ld\n", long(now.tv_sec), now.tv_nsec / 1000);
            std::fclose(file);
        }
    }
    return answer;
}

extern "C" ssize_t write(int descriptor, const void* bytes, std::size_t count) {
    static auto* const next = real<ssize_t(int, const void*, std::size_t)>("write");
    static const long milliseconds = setting("KELDRA_FAULTS_WRITE_MS");
    if (milliseconds > 0 && isMeant(descriptor))
        delay(milliseconds);
    return next(descriptor, bytes, count);
}
