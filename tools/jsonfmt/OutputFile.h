// The output: standard output, or a file that is opened (and emptied) only when the first
// document is ready to be written, so that `jsonfmt -o a.json a.json` formats a file in place
// and an input that fails leaves an existing file untouched.
#pragma once

#include <cstdio>
#include <stdexcept>
#include <string>
#include <string_view>

namespace jsonfmt {

/// A write, flush or close that failed: "cannot write NAME: REASON".
class WriteError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class OutputFile {
public:
    /// `path` empty or "-": standard output.
    explicit OutputFile(const std::string& path);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    /// Closes a file that Close did not (its failure then goes unreported).
    ~OutputFile();

    /// "-" for standard output, else the path.
    const std::string& Name() const noexcept { return fName; }
    /// Writes all of `bytes`; throws WriteError.
    void Write(std::string_view bytes);
    /// Flushes and closes; throws WriteError. Standard output is flushed, not closed.
    void Close();

private:
    [[noreturn]] void Fail(int error) const;

    std::string fName;
    std::FILE* fFile = nullptr; // null until the first write to a named file
    bool fStandardOutput;
};

} // namespace jsonfmt
