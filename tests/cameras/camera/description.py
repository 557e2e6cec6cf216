"""Converts the session descriptions that ffmpeg writes to the one that the camera serves."""

import re
from dataclasses import dataclass

# The forms of the stream addresses, and the addresses that the camera accepts. If a client requests
# another address, the response is 404, or with appended addresses, the connection is closed.
ADDRESSES = {
    "based": "relative to a base address that the camera specifies",
    "appended": "relative, without a base address; valid only if appended to the camera's address",
    "resolved": "relative, without a base address; valid only if resolved as references",
    "absolute": "absolute, without a base address",
}
METADATA = ["m=application 0 RTP/AVP 107", "a=rtpmap:107 vnd.onvif.metadata/90000", "a=control:metadata"]
BACKCHANNEL = ["m=audio 0 RTP/AVP 0", "a=rtpmap:0 PCMU/8000", "a=control:backchannel"]

STATIC_RTPMAPS = {0: "PCMU/8000", 8: "PCMA/8000", 9: "G722/8000", 14: "MPA/90000",
                  26: "JPEG/90000", 32: "MPV/90000"}


@dataclass(frozen=True)
class Stream:
    """The properties of a stream that determine its times and its name."""

    media: str
    payload_type: int
    clock_rate: int


def _sections(texts):
    """Returns the lines of the session, and those of each stream."""
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


def served(texts, count, connection="IN IP4 0.0.0.0", prefix="", rtpmaps=False, parameter_sets=True, metadata=False,
           backchannel="", direction="", protocol=""):
    """Returns the description of the first `count` streams of the texts.

    `connection` is the value of each stream's c line. `prefix` is prepended to the names of
    streams. `rtpmaps` adds rtpmap lines for static payload types. Without `parameter_sets`, they
    are sent in-band only. `metadata` adds a metadata stream, `backchannel` an audio stream
    with this direction. `direction` is that of the other streams. `protocol` replaces each stream's protocol."""
    head, sections = _sections(texts)
    lines = [line for line in head if not line.startswith("a=tool")] + ["a=control:*"]
    for index, section in enumerate(sections[:count]):
        section = [re.sub(r"^(m=\w+) \d+", r"\1 0", line) for line in section if line.strip()]
        section = [f"c={connection}" if line.startswith("c=") else line for line in section]
        if protocol:
            section = [re.sub(r"^(m=\w+ \d+) \S+", rf"\1 {protocol}", line) for line in section]
        if rtpmaps:
            section = _with_rtpmap(section, _stream(sections[index]))
        if not parameter_sets:
            section = _without_parameter_sets(section)
        lines += [*section, f"a=control:{prefix}stream={index}", *([f"a={direction}"] if direction else [])]
    if metadata:
        lines += METADATA
    if backchannel:
        lines += [*BACKCHANNEL, f"a={backchannel}"]
    return "\r\n".join(lines) + "\r\n"
