"""The output of recorders: files and gaps."""

import json
import re
import subprocess
from dataclasses import dataclass
from datetime import datetime

GAP = re.compile(r"gap from (\S+) to (\S+) \(.*?\): (.*)", re.S)


@dataclass(frozen=True)
class Gap:
    camera: int
    begin: float  # UTC, s
    end: float
    cause: str

    def seconds(self):
        return self.end - self.begin


def _utc(text):
    return datetime.fromisoformat(text.replace("Z", "+00:00")).timestamp()


def camera_number(name):
    return int(name.removeprefix("camera"))


def gaps_in(log):
    """Returns the gaps that record_cameras logged."""
    for line in log.read_text().splitlines():
        event = json.loads(line)
        match = GAP.fullmatch(event["text"])
        if match:
            yield Gap(camera_number(event["camera"]), _utc(match[1]), _utc(match[2]), match[3])


def duration(path):
    """Returns the duration of a file in s. Raises RuntimeError if the file does not play."""
    decoded = subprocess.run(["ffmpeg", "-nostdin", "-v", "fatal", "-i", str(path), "-f", "null", "-"],
                             capture_output=True, text=True, timeout=120)
    probed = subprocess.run(["ffprobe", "-v", "error", "-show_entries", "format=duration", "-of", "csv=p=0", str(path)],
                            capture_output=True, text=True, timeout=60)
    if decoded.returncode != 0 or probed.returncode != 0:
        raise RuntimeError(f"{path.name} does not play: {decoded.stderr.strip()} {probed.stderr.strip()}")
    return float(probed.stdout)
