"""Features of newer GStreamer releases that some test cases need."""

import subprocess
from dataclasses import dataclass


@dataclass(frozen=True)
class Need:
    release: tuple  # the first release with the feature
    what: str

    def __str__(self):
        return f"needs GStreamer {'.'.join(map(str, self.release))}, which {self.what}"


DECODE_TIMES = Need((1, 22), "computes the decode times of B-frames")
VP9_PARSER = Need((1, 20), "has a parser for VP9")
OPUS_IN_MP4 = Need((1, 20), "writes Opus into .mp4 so that ffmpeg reads it")
STATUS_NOT_FOUND = Need((1, 20), "reports the status 404")
OMITTED_STREAMS = Need((1, 20), "can omit a stream that the camera refuses")
RETURNING_SSRC = Need((1, 20), "adds a stream again after its SSRC was removed")
FRAGMENTS = Need((1, 20), "writes complete fragments into .mp4")


def framework_release():
    version = subprocess.run(["pkg-config", "--modversion", "gstreamer-1.0"],
                             stdout=subprocess.PIPE, check=True, text=True).stdout
    return tuple(map(int, version.split(".")[:2]))
