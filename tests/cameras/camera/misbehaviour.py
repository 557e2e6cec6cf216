"""Parses the misbehaviour of the camera and its times."""

import re
from dataclasses import dataclass, field

KINDS = {
    "pause": "hold all packets back for VALUE seconds, then send them at once",
    "drop": "send nothing for VALUE seconds; those packets are lost",
    "jump": "shift the RTP clock by VALUE seconds",
    "drift": "make the RTP clock VALUE per cent fast",
    "wall-clock": "shift the wall clock of sender reports by VALUE seconds",
    "wrap": "make sequence numbers and timestamps wrap around, the timestamps at TIME",
    "ssrc": "continue with a new SSRC, sequence number and timestamp",
    "first-ssrc": "continue with the SSRC of the first packet, and a new sequence number and timestamp",
    "switch": "continue with the content of --switch-to",
    "stop": "send no more packets",
    "bye": "send an RTCP BYE and no more packets",
    "late": "send no packets before TIME",
    "loss": "lose VALUE per cent of the packets",
    "reorder": "swap VALUE per cent of the packets with the next one",
    "duplicate": "send VALUE per cent of the packets twice",
    "no-marker": "do not mark the last packet of a frame",
    "extension": "extend the header of RTP packets",
    "padding": "pad RTP packets",
    "close": "close the connection",
    "reset": "reset the connection",
    "silent": "send neither packets nor responses, but keep the connection",
    "garbage": "send VALUE random bytes on the connection, none of them \"$\"",
    "false-packet": "send garbage that resembles the start of a packet",
    "gone": "close all connections and refuse new ones for VALUE seconds",
}
NEED_VALUE = {"pause", "drop", "jump", "drift", "wall-clock", "loss", "reorder", "duplicate", "garbage", "gone"}
CONTINUOUS = {"drift", "wall-clock", "wrap", "late", "loss", "reorder", "duplicate", "no-marker",
              "extension", "padding"}
OF_CONNECTION = {"close", "reset", "silent", "garbage", "false-packet", "gone"}

_FORM = re.compile(r"(?P<kind>[a-z-]+)(:(?P<value>-?[\d.]+))?(@(?P<time>[\d.]+))?(/(?P<stream>\d+))?")


@dataclass
class Misbehaviour:
    """A misbehaviour, with a time relative to PLAY. It occurs once in the camera's lifetime, in
    the first session that lasts long enough. The continuous kinds occur in every session."""

    kind: str
    value: float
    time: float
    stream: int = None
    _owner: object = field(default=None, repr=False)

    def concerns(self, stream):
        return self.stream in (None, stream)

    def claim(self, session):
        """Returns True if this session performs the misbehaviour."""
        if self.kind in CONTINUOUS:
            return True
        if self._owner is None:
            self._owner = session
        return self._owner is session


def parse_misbehaviour(text):
    """Parses KIND[:VALUE][@TIME][/STREAM]. Without STREAM, it applies to all streams."""
    match = _FORM.fullmatch(text)
    if not match or match["kind"] not in KINDS:
        raise ValueError(f"not a misbehaviour: {text}")
    if (match["value"] is None) == (match["kind"] in NEED_VALUE):
        raise ValueError(f"{match['kind']} {'needs a' if match['value'] is None else 'has no'} value")
    stream = None if match["stream"] is None else int(match["stream"])
    return Misbehaviour(match["kind"], float(match["value"] or 0), float(match["time"] or 0), stream)
