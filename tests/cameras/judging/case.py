"""A case: what a camera does, what the recorder is asked for, and what must result."""

import re
from dataclasses import dataclass

from .framework import Need

OUTPUT = "camera"  # the recording's name, without its extension
EXISTING_CONTENTS = b"written before the recording"


@dataclass(frozen=True)
class StreamExpectation:
    codec: str  # as ffprobe names it
    start: float  # s after the file's beginning
    seconds: float


@dataclass(frozen=True)
class Case:
    """One row of the table.

    camera        the arguments of test_camera, "simulated", "vlc" or "published" with theirs, or
                  "" for none;
                  after "relayed", the recorder records what relay_stream makes of the camera
    to            the extension of the file recorded into
    files         what each file must hold: codecs, and how long it is if not `seconds`, as in
                  "h264 aac 2.5". CODEC=SECONDS is a stream that stops before the others,
                  CODEC@SECONDS one that starts after them. If the recorder is killed or the disk is
                  full, the files must hold at least that
    seconds       what the recorder is asked for by --duration
    options       its other options; {folder}, {ca}, {password} and so on are filled in
    lines         regular expressions, each of which must match in the output; those that begin
                  with "not " must not
    address       what the recorder is given as the camera's address, if not {uri};
                  "{uri_with_login}USER:PASSWORD" puts these into it
    status        the recorder's exit status
    tolerance     s, of the durations
    largest_step  s, between two pictures
    rate          pictures in a second
    whole         False: pictures were lost on the way, so decoding may complain
    apart         s, by which the start of a stream may be early or late
    total         s, of all files together, where nothing may be lost between them
    signal        "NAME@SECONDS": sent to the recorder so long after PLAY
    password      written to a file for --password-file; must not show in what the recorder leaves
    environment   variables of the recorder, NAME=VALUE
    largest_file  bytes after which writing fails, as on a full disk
    existing      the file is there before
    second        a second recorder is started into the same file, and must be refused
    leaves        another file that the recorder must leave in {folder}
    needs         what the framework must have; without it the case is skipped
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
        """What file number `index` must hold."""
        *streams, last = self.files[index].split()
        if not re.fullmatch(r"[\d.]+", last):
            streams, last = [*streams, last], self.seconds
        return [_expected_stream(stream, float(last)) for stream in streams]

    def file_names(self):
        """One pattern for each file, in their order."""
        if "--segment" in self.options:
            return [rf"{OUTPUT}-\d{{8}}T\d{{6}}Z(-\d{{4}})?\.{self.to}"] * len(self.files)
        numbers = ["", *(f"-{number:04}" for number in range(1, len(self.files)))]
        return [rf"{OUTPUT}{number}\.{self.to}" for number in numbers[:len(self.files)]]

    def is_killed(self):
        return self.signal.startswith("KILL") or self.largest_file is not None

    def longest(self):
        """s, after which the case has failed."""
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
