// LineEditor: libedit set up for vhost's prompt, with SIGINT caught while a line is read.
#include "tools/vhost/cli/LineEditor.h"

#include <histedit.h>
#include <sys/select.h>
#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <cwchar>

namespace vhost {

namespace {

constexpr int sHistorySize = 1000;

volatile std::sig_atomic_t sInterrupted = 0;

void NoteInterrupt(int) {
    sInterrupted = 1;
}

// While a line is read, SIGINT only notes the Ctrl-C, and stays blocked except inside the
// wait for the next key, which lets it in atomically (WaitForKey). A Ctrl-C that comes
// while libedit is drawing is thus taken by the next wait, not lost before a read that
// would block regardless.
class InterruptCatcher {
public:
    InterruptCatcher() {
        sInterrupted = 0;
        struct sigaction action {};
        action.sa_handler = NoteInterrupt;
        sigemptyset(&action.sa_mask);
        sigaction(SIGINT, &action, &fPreviousAction);
        sigset_t interrupt;
        sigemptyset(&interrupt);
        sigaddset(&interrupt, SIGINT);
        sigprocmask(SIG_BLOCK, &interrupt, &fPreviousMask);
    }
    // Unblocks before the old action is back, so that a Ctrl-C still pending is noted
    // here instead of ending vhost.
    ~InterruptCatcher() {
        sigprocmask(SIG_SETMASK, &fPreviousMask, nullptr);
        sigaction(SIGINT, &fPreviousAction, nullptr);
    }
    InterruptCatcher(const InterruptCatcher&) = delete;
    InterruptCatcher& operator=(const InterruptCatcher&) = delete;

private:
    struct sigaction fPreviousAction {};
    sigset_t fPreviousMask{};
};

// Waits until a key can be read; false with errno EINTR after a Ctrl-C.
bool WaitForKey() {
    sigset_t waitMask;
    sigprocmask(SIG_BLOCK, nullptr, &waitMask);
    sigdelset(&waitMask, SIGINT);
    for (;;) {
        if (sInterrupted) {
            errno = EINTR;
            return false;
        }
        fd_set readable;
        FD_ZERO(&readable);
        FD_SET(STDIN_FILENO, &readable);
        const int ready =
            pselect(STDIN_FILENO + 1, &readable, nullptr, nullptr, nullptr, &waitMask);
        if (ready > 0) return true;
        if (ready < 0 && errno != EINTR) return false;
    }
}

// libedit's character reader, replaced for WaitForKey. Like the built-in one it decodes
// the locale's multibyte characters and drops bytes that form none. Returns 1 with a
// character, 0 at the end of input, -1 after a Ctrl-C or a read error (libedit then gives
// up the line).
int ReadCharacter(EditLine*, wchar_t* character) {
    std::mbstate_t state{};
    for (;;) {
        if (!WaitForKey()) return -1;
        char byte = 0;
        const ssize_t count = read(STDIN_FILENO, &byte, 1);
        if (count == 0) return 0;
        if (count < 0) {
            if (errno == EINTR || errno == EAGAIN) continue;
            return -1;
        }
        const size_t used = std::mbrtowc(character, &byte, 1, &state);
        if (used == static_cast<size_t>(-2)) continue; // more bytes to come
        if (used == static_cast<size_t>(-1)) {
            state = std::mbstate_t{};
            continue;
        }
        return 1;
    }
}

const char* Prompt(EditLine*) {
    return "> ";
}

} // namespace

std::string HistoryFilePath() {
    if (const char* chosen = std::getenv("VHOST_HISTORY")) return chosen;
    const char* home = std::getenv("HOME");
    return home && *home ? std::string(home) + "/.vhost_history" : std::string();
}

LineEditor::LineEditor(std::FILE* screen, std::string historyFile)
    : fScreen(screen), fHistoryFile(std::move(historyFile)), fHistory(history_init()) {
    // libedit decodes typed characters by the locale it finds at el_init; the C locale
    // knows ASCII only.
    std::setlocale(LC_CTYPE, "");
    fEditor = el_init("vhost", stdin, screen, stderr);
    HistEvent event;
    history(fHistory, &event, H_SETSIZE, sHistorySize);
    history(fHistory, &event, H_SETUNIQUE, 1);
    // A missing file is simply the first session.
    if (!fHistoryFile.empty()) history(fHistory, &event, H_LOAD, fHistoryFile.c_str());
    el_set(fEditor, EL_EDITOR, "emacs");
    el_set(fEditor, EL_PROMPT, Prompt);
    el_set(fEditor, EL_GETCFN, ReadCharacter);
    el_set(fEditor, EL_HIST, history, fHistory);
    el_source(fEditor, nullptr);
}

LineEditor::~LineEditor() {
    el_end(fEditor);
    history_end(fHistory);
}

LineReader::EResult LineEditor::ReadLine(std::string& line) {
    int count = 0;
    const char* text = nullptr;
    bool interrupted = false;
    {
        InterruptCatcher catcher;
        text = el_gets(fEditor, &count);
        interrupted = sInterrupted != 0;
    }
    if (!text) {
        // The abandoned line stays on screen, marked; the next prompt starts below it, and
        // after Ctrl-D the shell's prompt does.
        const bool cancelled = count < 0 && interrupted;
        std::fputs(cancelled ? "^C\n" : "\n", fScreen);
        std::fflush(fScreen);
        return cancelled ? EResult::eCancelled : EResult::eEnd;
    }
    line.assign(text, static_cast<size_t>(count));
    if (!line.empty() && line.back() == '\n') line.pop_back();
    Remember(line);
    return EResult::eLine;
}

void LineEditor::Remember(const std::string& line) {
    if (line.find_first_not_of(" \t") == std::string::npos) return;
    HistEvent event;
    history(fHistory, &event, H_ENTER, line.c_str());
    if (fHistoryFile.empty() || fHistoryFileWarned) return;
    // Saved after every line, so a session that is killed keeps its history too.
    if (history(fHistory, &event, H_SAVE, fHistoryFile.c_str()) < 0) {
        std::fprintf(stderr, "vhost: cannot write the history file %s\n", fHistoryFile.c_str());
        fHistoryFileWarned = true;
    }
}

} // namespace vhost
