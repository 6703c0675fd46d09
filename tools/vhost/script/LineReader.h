// LineReader: where the interactive prompt gets its lines. The plain reader here serves
// pipes and tests; the command-line tool adds an editing one for terminals, so the
// interpreter never depends on the line-editing library.
#pragma once

#include <istream>
#include <string>

namespace vhost {

class LineReader {
public:
    enum class EResult {
        eLine,      ///< a line was read
        eCancelled, ///< the user abandoned the line being typed; ask again
        eEnd,       ///< no more input
    };

    virtual ~LineReader() = default;
    /// Reads the next line into `line`, without its line break.
    virtual EResult ReadLine(std::string& line) = 0;
};

/// Lines of a stream as they come: no prompt, no editing, never cancelled.
class StreamLineReader final : public LineReader {
public:
    explicit StreamLineReader(std::istream& in) : fIn(in) {}
    EResult ReadLine(std::string& line) override {
        return std::getline(fIn, line) ? EResult::eLine : EResult::eEnd;
    }

private:
    std::istream& fIn;
};

} // namespace vhost
