#!/usr/bin/env python3
# vhost's prompt as a person at a terminal meets it: vhost runs on a pseudo-terminal and
# the test types keys and reads the screen. Checks line editing, history recall within a
# session and from the history file, Ctrl-C abandoning a line, help, and Ctrl-D.
#   ReplTest.py VHOST
import fcntl
import os
import pty
import re
import select
import signal
import struct
import sys
import tempfile
import termios
import time


TIMEOUT = 30  # generous: the machine may be busy with a parallel build
UP, LEFT = b"\x1b[A", b"\x1b[D"
CTRL_C, CTRL_D = b"\x03", b"\x04"
PROMPT = b"> "


class Session:
    """One vhost on its own pseudo-terminal, which is its controlling terminal, so that
    Ctrl-C raises SIGINT as it does for a person."""

    def __init__(self, vhost, env):
        self.pid, self.fd = pty.fork()
        if self.pid == 0:
            fcntl.ioctl(0, termios.TIOCSWINSZ, struct.pack("HHHH", 24, 100, 0, 0))
            os.execve(vhost, [vhost], env)
        self.screen = b""
        self.mark = 0  # expect() searches what came after the previous match

    def send(self, keys):
        os.write(self.fd, keys)

    def expect(self, pattern, what):
        regex = re.compile(pattern)
        while True:
            found = regex.search(self.screen, self.mark)
            if found:
                self.mark = found.end()
                return self.screen[found.start() : found.end()]
            chunk = self.read()
            if not chunk:
                fail(f"no {what} within {TIMEOUT} s, or vhost ended", self.screen)
            self.screen += chunk

    def read(self):
        """What vhost wrote next; b"" after TIMEOUT or once vhost has ended."""
        ready, _, _ = select.select([self.fd], [], [], TIMEOUT)
        try:
            return os.read(self.fd, 4096) if ready else b""
        except OSError:  # EIO: vhost closed the terminal
            return b""

    def prompt(self):
        self.expect(re.escape(PROMPT), "prompt")
        self.await_editing()

    def await_editing(self):
        """libedit draws the prompt before it switches the terminal from line mode to
        editing; keys sent in between would meet the terminal's own line editing (where
        Ctrl-D is no key at all), so wait for the switch."""
        deadline = time.monotonic() + TIMEOUT
        while termios.tcgetattr(self.fd)[3] & termios.ICANON:
            if time.monotonic() > deadline:
                fail("the terminal never left line mode", self.screen)
            time.sleep(0.01)

    def finish(self):
        """Ends the session with Ctrl-D and returns the exit status."""
        self.send(CTRL_D)
        while chunk := self.read():
            self.screen += chunk
        deadline = time.monotonic() + TIMEOUT
        while (status := os.waitpid(self.pid, os.WNOHANG))[0] == 0:
            if time.monotonic() > deadline:
                os.kill(self.pid, signal.SIGKILL)
                os.waitpid(self.pid, 0)
                fail("vhost did not end after Ctrl-D", self.screen)
            time.sleep(0.01)
        status = status[1]
        os.close(self.fd)
        return os.waitstatus_to_exitcode(status)


def fail(message, screen):
    sys.stderr.write(f"FAIL: {message}\n--- screen:\n{screen!r}\n")
    sys.exit(1)


def output_line(text):
    """Output on a line of its own: the terminal turns each \\n into \\r\\n."""
    return b"\r\n" + re.escape(text) + b"\r\n"


def editing_history_cancel_and_help(vhost, env):
    session = Session(vhost, env)
    session.prompt()
    # The Left arrow moves the cursor: "print(4)" becomes "print(42)".
    session.send(b"print(4)" + LEFT + b"2\r")
    session.expect(output_line(b"42"), "output of the edited line")
    session.prompt()
    # Up recalls that line, which is then edited again.
    session.send(UP + LEFT + b"3\r")
    session.expect(output_line(b"423"), "output of the recalled line")
    session.prompt()
    # Ctrl-C abandons the half-typed line; the next line starts afresh. The key waits for
    # the echo: the terminal drops typed-ahead input that vhost has not read yet.
    session.send(b"print(999")
    session.expect(re.escape(b"print(999"), "echo")
    session.send(CTRL_C)
    session.expect(b"\r\n" + re.escape(PROMPT), "a fresh prompt")
    session.send(b"print(5)\r")
    session.expect(output_line(b"5"), "output after Ctrl-C")
    session.prompt()
    session.send(b"help JSON.Set\r")
    session.expect(re.escape(b"CONST_FUNCTION JSON JSON.Set (JSON,STRING,JSON) : "), "overloads")
    session.prompt()
    status = session.finish()
    for bad in (b"unexpected", b"expected ','"):
        if bad in session.screen:
            fail(f"the session reports an error ({bad!r})", session.screen)
    if status != 0:
        fail(f"exit status {status} after Ctrl-D, expected 0", session.screen)


def history_file_is_read_back(vhost, env):
    session = Session(vhost, env)
    session.prompt()
    session.send(UP + b"\r")  # the previous session's last line: help JSON.Set
    session.expect(re.escape(b"CONST_FUNCTION JSON JSON.Set (JSON,STRING,BOOLEAN) : "),
                   "the recalled help")
    session.prompt()
    if session.finish() != 0:
        fail("the second session failed", session.screen)


def history_file_choice(vhost, env, expected_file):
    """Runs one line; the history then exists in expected_file, or nowhere in HOME."""
    session = Session(vhost, env)
    session.prompt()
    session.send(b"print(7)\r")
    session.expect(output_line(b"7"), "output")
    session.prompt()
    session.finish()
    written = os.listdir(env["HOME"])
    if expected_file is None and written:
        fail(f"VHOST_HISTORY='' still wrote {written}", session.screen)
    if expected_file is not None and not os.path.exists(expected_file):
        fail(f"no history file {expected_file}", session.screen)


def main():
    vhost = sys.argv[1]
    with tempfile.TemporaryDirectory() as work:
        home = os.path.join(work, "home")
        os.mkdir(home)
        # HOME points away from the user's ~/.editrc and ~/.vhost_history.
        env = {"PATH": os.environ.get("PATH", "/usr/bin:/bin"), "TERM": "xterm", "HOME": home,
               "VHOST_HISTORY": os.path.join(work, "history")}
        editing_history_cancel_and_help(vhost, env)
        history_file_is_read_back(vhost, env)
        history_file_choice(vhost, {**env, "VHOST_HISTORY": ""}, None)
        default_env = {key: value for key, value in env.items() if key != "VHOST_HISTORY"}
        history_file_choice(vhost, default_env, os.path.join(home, ".vhost_history"))
    print("vhost prompt: 4 sessions passed")


if __name__ == "__main__":
    main()
