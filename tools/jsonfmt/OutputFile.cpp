// The output through C stdio. A full disk shows in fwrite once the stream's buffer is passed
// on, and otherwise only in the final flush or close, so Close checks both.
#include "tools/jsonfmt/OutputFile.h"

#include <cerrno>
#include <cstring>

namespace jsonfmt {

OutputFile::OutputFile(const std::string& path)
    : fName(path.empty() ? "-" : path), fStandardOutput(fName == "-") {
    if (fStandardOutput) fFile = stdout;
}

OutputFile::~OutputFile() {
    if (fFile && !fStandardOutput) std::fclose(fFile);
}

void OutputFile::Fail(int error) const {
    throw WriteError("cannot write " + fName + ": " + std::strerror(error ? error : EIO));
}

void OutputFile::Write(std::string_view bytes) {
    errno = 0;
    if (!fFile) {
        fFile = std::fopen(fName.c_str(), "wb");
        if (!fFile) Fail(errno);
    }
    if (bytes.empty()) return;
    if (std::fwrite(bytes.data(), 1, bytes.size(), fFile) != bytes.size()) Fail(errno);
}

void OutputFile::Close() {
    if (!fFile) return; // nothing was written: a named file was never created
    errno = 0;
    const bool flushed = std::fflush(fFile) == 0 && !std::ferror(fFile);
    const int flushError = errno;
    if (fStandardOutput) {
        if (!flushed) Fail(flushError);
        return;
    }
    std::FILE* file = fFile;
    fFile = nullptr;
    errno = 0;
    const bool closed = std::fclose(file) == 0;
    if (!flushed) Fail(flushError);
    if (!closed) Fail(errno);
}

} // namespace jsonfmt
