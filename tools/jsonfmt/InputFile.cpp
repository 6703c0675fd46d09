// Reading inputs with C stdio and fstat: a directory opens like a file on Linux, so it is
// recognised before reading, and errno gives every other failure its reason.
#include "tools/jsonfmt/InputFile.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace jsonfmt {

namespace {

constexpr size_t kStep = 64 * 1024;

bool Fail(std::string& reason, int error) {
    reason = std::strerror(error);
    return false;
}

bool ReadAll(std::FILE* file, std::string& bytes, std::string& reason) {
    struct stat info {};
    if (fstat(fileno(file), &info) == 0) {
        if (S_ISDIR(info.st_mode)) return Fail(reason, EISDIR);
        // Room for the whole file and the last, short step: no regrowth, no second copy.
        if (S_ISREG(info.st_mode)) bytes.reserve(static_cast<size_t>(info.st_size) + kStep);
    }
    size_t used = 0;
    for (;;) {
        bytes.resize(used + kStep);
        const size_t got = std::fread(bytes.data() + used, 1, kStep, file);
        used += got;
        if (got < kStep) break;
    }
    bytes.resize(used);
    if (std::ferror(file)) return Fail(reason, errno ? errno : EIO);
    return true;
}

} // namespace

bool ReadWholeInput(const std::string& path, std::string& bytes, std::string& reason) {
    bytes.clear();
    if (path == "-") {
        const bool ok = ReadAll(stdin, bytes, reason);
        std::clearerr(stdin);
        return ok;
    }
    errno = 0;
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (!file) return Fail(reason, errno ? errno : ENOENT);
    errno = 0;
    const bool ok = ReadAll(file, bytes, reason);
    std::fclose(file); // read-only: closing cannot lose anything
    return ok;
}

} // namespace jsonfmt
