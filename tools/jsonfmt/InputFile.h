// Reading one input whole: a file, or standard input for "-". A parser needs the whole text;
// a regular file's room is taken once at its size, so that reading never holds it twice.
#pragma once

#include <string>

namespace jsonfmt {

/// Reads all of `path` ("-": standard input) into `bytes`. False, with the system's reason in
/// `reason` ("Is a directory", "No such file or directory"), when it cannot.
bool ReadWholeInput(const std::string& path, std::string& bytes, std::string& reason);

} // namespace jsonfmt
