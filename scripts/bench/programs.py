"""The measured processes. Every process is a context manager, which ends the process."""

import ctypes
import os
import select
import signal
import subprocess
import tempfile
import time

READY_SECONDS = 180
STOP_SECONDS = 30
MAX_MESSAGE = 2 ** 31 - 1


class Failure(Exception):
    """Raised when a program fails. The text is the reason."""


def die_with_parent():
    """Lets the kernel kill this process when the process that started it dies."""
    pr_set_pdeathsig = 1
    ctypes.CDLL(None).prctl(pr_set_pdeathsig, signal.SIGKILL)


class Program:
    """A program whose output is read line by line."""

    def __init__(self, command):
        self.name = os.path.basename(str(command[0]))
        self.errors = tempfile.TemporaryFile()
        self.buffer = b""
        self.process = subprocess.Popen([str(word) for word in command], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, stderr=self.errors, bufsize=0,
                                        preexec_fn=die_with_parent)

    def __enter__(self):
        return self

    def __exit__(self, *unused):
        self.process.stdin.close()
        self.process.terminate()
        try:
            self.process.wait(STOP_SECONDS)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        self.process.stdout.close()
        self.errors.close()

    def read_line(self, seconds=READY_SECONDS):
        deadline = time.monotonic() + seconds
        while b"\n" not in self.buffer:
            readable, _, _ = select.select([self.process.stdout], [], [], max(deadline - time.monotonic(), 0))
            piece = os.read(self.process.stdout.fileno(), 65536) if readable else b""
            if not piece:
                raise Failure(f"{self.name}: {self.error_text() or 'no answer'}")
            self.buffer += piece
        line, _, self.buffer = self.buffer.partition(b"\n")
        return line.decode()

    def write_line(self, line):
        self.process.stdin.write(f"{line}\n".encode())

    def error_text(self):
        self.errors.seek(0)
        return self.errors.read().decode(errors="replace").strip()[-500:]


class Agent(Program):
    """A running topo-agentd on a store."""

    def __init__(self, programs, store, options=()):
        self.folder = tempfile.TemporaryDirectory(prefix="topo-bench-")
        ior_file = os.path.join(self.folder.name, "manager.ior")
        super().__init__([programs / "topo-agentd", "--store", store, "--endpoint", "127.0.0.1:0", "--max-message",
                          MAX_MESSAGE, "--ior-file", ior_file, *options])
        try:
            self.read_line()
            with open(ior_file, encoding="ascii") as file:
                self.reference = file.read().strip()
        except BaseException:
            self.__exit__()
            raise

    def __exit__(self, *unused):
        super().__exit__()
        self.folder.cleanup()


def run_rounds(command, warm_ups, rounds, cases, seconds=600):
    """Runs a program that measures cases in turns; returns the list of numbers of each case, one a round."""
    words = [*command, warm_ups, rounds, *cases]
    try:
        result = subprocess.run([str(word) for word in words], capture_output=True, text=True, timeout=seconds,
                                check=False, preexec_fn=die_with_parent)
    except subprocess.TimeoutExpired:
        raise Failure(f"{command[0]}: not finished in {seconds} s") from None
    if result.returncode != 0:
        raise Failure(result.stderr.strip()[-500:] or f"{command[0]}: status {result.returncode}")
    lines = [[float(number) for number in line.split()] for line in result.stdout.splitlines()]
    if len(lines) != rounds or any(len(line) != len(cases) for line in lines):
        raise Failure(f"{command[0]}: unexpected output")
    return [list(column) for column in zip(*lines)]
