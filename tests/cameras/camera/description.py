"""Turns the session descriptions that ffmpeg writes into the one that the camera serves."""

import re
from dataclasses import dataclass

# How the addresses of streams are given, and which are known. A client that asks for another address
# is answered with 404, or dropped if they are appended.
ADDRESSES = {
    "based": "relative to a base address that the camera names",
    "appended": "relative, without a base address; only appended to the camera's address they are known",
    "resolved": "relative, without a base address; only resolved as references they are known",
    "absolute": "absolute, without a base address",
}
METADATA = ["m=application 0 RTP/AVP 107", "a=rtpmap:107 vnd.onvif.metadata/90000", "a=control:metadata"]

STATIC_RTPMAPS = {0: "PCMU/8000", 8: "PCMA/8000", 9: "G722/8000", 14: "MPA/90000",
                  26: "JPEG/90000", 32: "MPV/90000"}


@dataclass(frozen=True)
class Stream:
    """What the camera must know of a stream to time it and to name it."""

    media: str
    payload_type: int
    clock_rate: int


def _sections(texts):
    """The session's lines, and those of each stream."""
    parts = [re.split(r"^(?=m=)", text.replace("\r", ""), flags=re.M) for text in texts]
    return parts[0][0].splitlines(), [section.splitlines() for _, *streams in parts for section in streams]


def _stream(lines):
    media, payload_type = re.match(r"m=(\w+) \d+ \S+ (\d+)", lines[0]).groups()
    rtpmap = re.search(r"^a=rtpmap:\d+ [^/]+/(\d+)", "\n".join(lines), re.M)
    clock_rate = rtpmap[1] if rtpmap else STATIC_RTPMAPS[int(payload_type)].split("/")[1]
    return Stream(media, int(payload_type), int(clock_rate))


def streams_of(texts):
    return [_stream(lines) for lines in _sections(texts)[1]]


def _with_rtpmap(lines, stream):
    if any(line.startswith("a=rtpmap") for line in lines):
        return lines
    return [*lines, f"a=rtpmap:{stream.payload_type} {STATIC_RTPMAPS[stream.payload_type]}"]


def _without_parameter_sets(lines):
    return [re.sub(r"; ?sprop-[a-z-]+=[^;]*", "", line) for line in lines]


def served(texts, count, connection="IN IP4 0.0.0.0", prefix="", rtpmaps=False, parameter_sets=True, metadata=False):
    """The description of the first `count` streams of the texts, as a client gets it.

    `connection` is the value of each stream's line c; `prefix` comes before the names of streams;
    `rtpmaps` names the static payload types too; without `parameter_sets` they are in-band only;
    `metadata` adds a stream of metadata."""
    head, sections = _sections(texts)
    lines = [line for line in head if not line.startswith("a=tool")] + ["a=control:*"]
    for index, section in enumerate(sections[:count]):
        section = [re.sub(r"^(m=\w+) \d+", r"\1 0", line) for line in section if line.strip()]
        section = [f"c={connection}" if line.startswith("c=") else line for line in section]
        if rtpmaps:
            section = _with_rtpmap(section, _stream(sections[index]))
        if not parameter_sets:
            section = _without_parameter_sets(section)
        lines += [*section, f"a=control:{prefix}stream={index}"]
    if metadata:
        lines += METADATA
    return "\r\n".join(lines) + "\r\n"
