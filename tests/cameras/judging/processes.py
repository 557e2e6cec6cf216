"""Starts the processes of a case. Each runs in a group that is killed at the end of the case."""

import contextlib
import os
import queue
import signal
import subprocess
import threading
from dataclasses import dataclass


@dataclass(frozen=True)
class Outcome:
    status: int
    out: str
    err: str
    timed_out: bool


def kill_group(process):
    with contextlib.suppress(ProcessLookupError):
        os.killpg(process.pid, signal.SIGKILL)
    process.wait()


class CameraProcess:
    """A camera. Its first line of output is the address; it prints "PLAY" for each client."""

    def __init__(self, command):
        self._process = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                         stdin=subprocess.DEVNULL, text=True, start_new_session=True)
        self._lines = queue.Queue()
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()

    def _read(self):
        for line in self._process.stdout:
            self._lines.put(line.strip())
        self._lines.put(None)

    def next_line(self, timeout):
        try:
            line = self._lines.get(timeout=timeout)
        except queue.Empty:
            raise RuntimeError(f"the camera printed nothing for {timeout} s") from None
        if line is None:
            raise RuntimeError(f"the camera ended: {self._process.stderr.read()[-300:]}")
        return line

    def close(self):
        self._process.terminate()
        with contextlib.suppress(subprocess.TimeoutExpired):
            self._process.wait(5)
        kill_group(self._process)
        self._reader.join()
        self._process.stdout.close()
        self._process.stderr.close()


class RecorderProcess:
    """A recorder. It runs in a folder, which also receives its output."""

    def __init__(self, command, folder, environment, largest_file=None):
        self._out, self._err = folder / "stdout", folder / "stderr"
        if largest_file is not None:
            command = ["prlimit", f"--fsize={largest_file}", *command]
        with self._out.open("w") as out, self._err.open("w") as err:
            # Keep Python's signal handling: SIGXFSZ is ignored, so a write beyond the limit fails.
            self._process = subprocess.Popen(command, stdout=out, stderr=err, stdin=subprocess.DEVNULL,
                                             env=environment, cwd=folder, start_new_session=True,
                                             restore_signals=largest_file is None)

    def send_signal(self, name):
        self._process.send_signal(getattr(signal, f"SIG{name}"))

    def wait(self, timeout):
        timed_out = False
        try:
            self._process.wait(timeout)
        except subprocess.TimeoutExpired:
            timed_out = True
        kill_group(self._process)
        return Outcome(self._process.returncode, self._out.read_text(errors="replace"),
                       self._err.read_text(errors="replace"), timed_out)
