"""The cameras of a run."""

import subprocess
import sys
import threading
from pathlib import Path

TEST_CAMERA = Path(__file__).resolve().parents[1] / "cameras/test-camera"
CONTENTS = (["h264-short-gop", "aac"], ["h264-short-gop"], ["h264-short-gop", "mulaw"])


class Camera:
    """A test camera that misbehaves on request. Counts the sessions that start to play."""

    def __init__(self, number, lifetime):
        contents = CONTENTS[number % len(CONTENTS)]
        self.has_one_stream = len(contents) == 1
        command = [sys.executable, "-S", str(TEST_CAMERA), *contents, "--commands", "--lifetime", str(lifetime)]
        self._process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.uri = self._process.stdout.readline().strip()
        if not self.uri:
            raise RuntimeError(f"camera {number} does not start")
        self.sessions = 0
        self._reader = threading.Thread(target=self._count_sessions, daemon=True)
        self._reader.start()

    def _count_sessions(self):
        for _ in self._process.stdout:
            self.sessions += 1

    def tell(self, command):
        self._process.stdin.write(command + "\n")
        self._process.stdin.flush()

    def close(self):
        self._process.terminate()
        self._process.wait()
        self._reader.join()
        self._process.stdin.close()
        self._process.stdout.close()
