// LineEditor: the prompt's line reader on a terminal, through libedit: editing keys, the
// user's ~/.editrc, a history for the session (also kept in a file when one is named),
// and Ctrl-C abandoning the line being typed instead of ending vhost.
#pragma once

#include "tools/vhost/script/LineReader.h"

#include <cstdio>
#include <string>

struct editline;
struct history;

namespace vhost {

class LineEditor final : public LineReader {
public:
    /// Edits lines typed on standard input, drawn with the prompt `> ` on `screen` (a
    /// terminal). The history starts with the lines of `historyFile` and the file is
    /// rewritten after each line; empty: the history lasts for the session only.
    LineEditor(std::FILE* screen, std::string historyFile);
    ~LineEditor() override;
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;

    /// A Ctrl-C while the line is typed gives eCancelled; Ctrl-D on an empty line eEnd.
    EResult ReadLine(std::string& line) override;

private:
    void Remember(const std::string& line);

    std::FILE* fScreen;
    std::string fHistoryFile;
    bool fHistoryFileWarned = false;
    ::history* fHistory;
    ::editline* fEditor;
};

/// The prompt's history file: $VHOST_HISTORY when set (empty: none), else
/// $HOME/.vhost_history (none without HOME).
std::string HistoryFilePath();

} // namespace vhost
