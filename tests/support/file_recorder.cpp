#include "support/file_recorder.h"

#include "support/c_library_names.h"

#include <climits>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace morvane::test {

namespace {

FileRecorder* active = nullptr;

std::string lastComponent(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

std::string nameOf(int descriptor) {
    const auto link = "/proc/self/fd/" + std::to_string(descriptor);
    std::array<char, PATH_MAX> target{};
    if (readlink(link.c_str(), target.data(), target.size() - 1) < 0)
        return "?";
    return lastComponent(target.data());
}

// Sets errno and returns true if a call is to fail.
bool failsSilently(const std::string& call) {
    const int error = active == nullptr ? 0 : active->begin(call);
    if (error != 0)
        errno = error;
    return error != 0;
}

// The same, and notes the call.
bool fails(const std::string& call) {
    if (active != nullptr)
        active->note(call);
    return failsSilently(call);
}

// The C library's function that one defined here replaces.
template <typename Function>
Function* original(const char* name) {
    void* const symbol = dlsym(RTLD_NEXT, name);
    if (symbol == nullptr)
        std::abort();
    return reinterpret_cast<Function*>(symbol);
}

} // namespace

FileRecorder::FileRecorder() {
    active = this;
}

FileRecorder::~FileRecorder() {
    active = nullptr;
}

void FileRecorder::fail(const std::string& call, int error, int count) {
    failures_.push_back({call, error, count});
}

void FileRecorder::before(const std::string& call, std::function<void()> action) {
    actions_.push_back({call, std::move(action)});
}

int FileRecorder::begin(const std::string& call) {
    for (const auto& [name, action] : actions_) {
        if (name == call)
            action();
    }
    int error = 0;
    for (auto& failure : failures_) {
        if (failure.call == call && failure.count-- == 0)
            error = failure.error;
    }
    return error;
}

} // namespace morvane::test

// The program's own definitions win over the C library's.
extern "C" {

int rename(const char* from, const char* to) {
    using morvane::test::lastComponent;
    if (morvane::test::fails("rename " + lastComponent(from) + " " + lastComponent(to)))
        return -1;
    return morvane::test::original<int(const char*, const char*)>("rename")(from, to);
}

int remove(const char* path) {
    if (morvane::test::fails("remove " + morvane::test::lastComponent(path)))
        return -1;
    return morvane::test::original<int(const char*)>("remove")(path);
}

int open(const char* path, int flags, ...) {
    mode_t mode = 0;
    if ((flags & O_CREAT) != 0) {
        if (morvane::test::fails("open " + morvane::test::lastComponent(path)))
            return -1;
        std::va_list arguments;
        va_start(arguments, flags);
        mode = va_arg(arguments, mode_t);
        va_end(arguments);
    } else if (morvane::test::failsSilently("look " + morvane::test::lastComponent(path))) {
        return -1;
    }
    return morvane::test::original<int(const char*, int, ...)>(NAME_OF_open)(path, flags, mode);
}

int stat(const char* path, struct stat* status) {
    if (morvane::test::failsSilently("stat " + morvane::test::lastComponent(path)))
        return -1;
    return morvane::test::original<int(const char*, struct stat*)>(NAME_OF_stat)(path, status);
}

int fchown(int descriptor, uid_t owner, gid_t group) {
    if (morvane::test::active != nullptr &&
        morvane::test::failsSilently("fchown " + morvane::test::nameOf(descriptor)))
        return -1;
    return morvane::test::original<int(int, uid_t, gid_t)>("fchown")(descriptor, owner, group);
}

int fsync(int descriptor) {
    if (morvane::test::active != nullptr &&
        morvane::test::fails("fsync " + morvane::test::nameOf(descriptor)))
        return -1;
    // The end of a test loses no data for want of a sync, so nothing waits for the disk; a
    // descriptor that is not open is an error as always.
    return fcntl(descriptor, F_GETFD) < 0 ? -1 : 0;
}

int fclose(std::FILE* stream) {
    const bool fails = morvane::test::active != nullptr &&
                       morvane::test::fails("fclose " + morvane::test::nameOf(fileno(stream)));
    const int error = errno;
    const int result = morvane::test::original<int(std::FILE*)>("fclose")(stream);
    if (!fails)
        return result;
    errno = error;
    return EOF;
}
}
