// Formatting every input in turn: read whole, parse, let the input go, check, and stream the
// document out. Problems with one input are reported and the next input is still formatted;
// a failed write ends the run.
#pragma once

#include "tools/jsonfmt/CommandLine.h"

#include <iosfwd>

namespace jsonfmt {

/// The exit statuses.
enum EExitStatus : int {
    kSuccess = 0, ///< every input valid (and written)
    kInvalid = 1, ///< an input is not a valid document
    kTrouble = 2, ///< a usage error, an input that cannot be read, output that cannot be written
};

/// Runs `options`, reporting each problem as one line on `errors`; returns the worst status.
int Format(const Options& options, std::ostream& errors);

/// Writes `text` to standard output; kTrouble (reported on `errors`) when that fails.
int PrintToStandardOutput(const std::string& text, std::ostream& errors);

} // namespace jsonfmt
