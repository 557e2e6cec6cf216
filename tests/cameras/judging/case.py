"""A test case: a camera, the options of the recorder, and the expected result."""

import re
from dataclasses import dataclass

from .framework import Need

OUTPUT = "camera"  # name of the recording, without its extension
EXISTING_CONTENTS = b"written before the recording"


@dataclass(frozen=True)
class StreamExpectation:
    codec: str  # name in ffprobe
    start: float  # s after the beginning of the file
    seconds: float


@dataclass(frozen=True)
class Case:
    """A row of the table.

    camera        the arguments of test-camera; or "simulated", "vlc" or "published" with their
                  arguments; or "" for none. With the prefix "relayed", the recorder records the output
                  of relay_stream
    to            the extension of the recorded file
    files         the expected streams of each file: codecs, and the duration if it is not `seconds`, as
                  in "h264 aac 2.5". CODEC=SECONDS is a stream that stops before the others,
                  CODEC@SECONDS one that starts after them. If the recorder is killed or the disk is
                  full, these are the minimum
    seconds       the --duration of the recorder
    options       other options of the recorder; {folder}, {ca}, {password} and so on are replaced
    lines         regular expressions, each of which must match in the output; those that begin
                  with "not " must not match
    address       the camera's address for the recorder, if not {uri};
                  "{uri_with_login}USER:PASSWORD" inserts these into the address
    status        the exit status of the recorder
    tolerance     s, of the durations
    largest_step  s, between two pictures
    rate          pictures per second
    whole         False: pictures were lost, so decoding may report errors
    apart         s, tolerance of the start of a stream
    total         s, of a stream in all files together, if nothing may be lost between them
    signal        "NAME@SECONDS": signal to the recorder, at a time after PLAY
    password      written to a file for --password-file; the recorder must not reveal it
    environment   environment variables of the recorder, NAME=VALUE
    largest_file  bytes after which writing fails, as on a full disk
    existing      the file exists before the recorder starts
    second        a second recorder for the same file is started, and must be refused
    leaves        another file in {folder} that the recorder must not remove
    needs         features of the framework; without them, the case is skipped
    """

    name: str
    camera: str
    to: str
    files: tuple = ()
    seconds: float = 2
    options: str = ""
    lines: tuple = ()
    address: str = "{uri}"
    status: int = 0
    tolerance: float = 0.25
    largest_step: float = 0.1
    rate: float = 25
    whole: bool = True
    apart: float = 0.3
    total: float = None
    signal: str = ""
    password: str = ""
    environment: tuple = ()
    largest_file: int = None
    existing: bool = False
    second: bool = False
    leaves: str = ""
    needs: Need = None

    def expected_streams(self, index):
        """Returns the expected streams of file number `index`."""
        *streams, last = self.files[index].split()
        if not re.fullmatch(r"[\d.]+", last):
            streams, last = [*streams, last], self.seconds
        return [_expected_stream(stream, float(last)) for stream in streams]

    def file_names(self):
        """Returns a pattern for each file, in order."""
        if "--segment" in self.options:
            return [rf"{OUTPUT}-\d{{8}}T\d{{6}}Z(-\d{{4}})?\.{self.to}"] * len(self.files)
        numbers = ["", *(f"-{number:04}" for number in range(1, len(self.files)))]
        return [rf"{OUTPUT}{number}\.{self.to}" for number in numbers[:len(self.files)]]

    def is_killed(self):
        return self.signal.startswith("KILL") or self.largest_file is not None

    def longest(self):
        """Returns the time in s after which the case fails."""
        return self.seconds + 45


def _expected_stream(text, seconds):
    codec, start, stop = re.fullmatch(r"(\w+)(?:@([\d.]+))?(?:=([\d.]+))?", text).groups()
    start = float(start or 0)
    return StreamExpectation(codec, start, float(stop or seconds) - start)


def as_tuple(value):
    return (value,) if isinstance(value, str) else tuple(value)


def row(name, camera, to, files=(), **others):
    for field in ("lines", "environment"):
        others[field] = as_tuple(others.get(field, ()))
    return Case(name, camera, to, as_tuple(files), **others)
