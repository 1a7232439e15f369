// ProgramSystem on POSIX systems: argv, /proc/self/exe, isatty and read.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "minihost/script/ProgramSystem.h"

namespace minihost {

namespace {

// All bytes of the file open as fd; false with error set.
bool ReadAll(int fd, std::string& text, std::string& error) {
    char block[65536];
    while (true) {
        ssize_t const n = ::read(fd, block, sizeof block);
        if (n > 0) {
            text.append(block, static_cast<std::size_t>(n));
        } else if (n == 0) {
            return true;
        } else if (errno != EINTR) {
            error = std::strerror(errno);
            return false;
        }
    }
}

}  // namespace

std::vector<std::string> ProgramArguments(int argc, char** argv) {
    return std::vector<std::string>(argv, argv + argc);
}

void UseBinaryStandardStreams() {}

std::string ProgramPath() {
    std::string buffer(4096, '\0');
    ssize_t const length = ::readlink("/proc/self/exe", buffer.data(), buffer.size());
    if (length <= 0 || static_cast<std::size_t>(length) >= buffer.size()) {
        return "";
    }
    buffer.resize(static_cast<std::size_t>(length));
    return buffer;
}

std::string DirectoryOf(std::string const& path) {
    std::size_t const slash = path.rfind('/');
    if (slash == std::string::npos) {
        return ".";
    }
    return slash == 0 ? "/" : path.substr(0, slash);
}

bool StandardInputIsTerminal() { return ::isatty(STDIN_FILENO) == 1; }

bool ReadWholeFile(std::string const& path, std::string& text, std::string& error) {
    int const fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        error = std::strerror(errno);
        return false;
    }
    bool const ok = ReadAll(fd, text, error);
    ::close(fd);
    return ok;
}

bool ReadStandardInput(std::string& text, std::string& error) {
    return ReadAll(STDIN_FILENO, text, error);
}

}  // namespace minihost
