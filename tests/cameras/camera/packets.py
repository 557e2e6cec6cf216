"""RTP packets and RTCP sender reports, with the fields that the camera reads and modifies."""

import struct
from dataclasses import dataclass, replace

_SENDER_REPORT = 200
_H264_SEQUENCE_SET = 7
_H264_AGGREGATE = 24


@dataclass(frozen=True)
class Packet:
    """A packet to be sent to a client, with its time in seconds since PLAY."""

    stream: int
    is_rtcp: bool
    data: bytes
    age: float

    @property
    def sequence(self):
        return struct.unpack_from("!H", self.data, 2)[0]

    @property
    def timestamp(self):
        return struct.unpack_from("!I", self.data, self._timestamp_offset)[0]

    @property
    def ssrc(self):
        return struct.unpack_from("!I", self.data, self._ssrc_offset)[0]

    @property
    def ends_frame(self):
        return bool(self.data[1] & 0x80)

    @property
    def _timestamp_offset(self):
        return 16 if self.is_rtcp else 4

    @property
    def _ssrc_offset(self):
        return 4 if self.is_rtcp else 8

    @property
    def is_sender_report(self):
        return self.is_rtcp and self.data[1] == _SENDER_REPORT and len(self.data) >= 28

    def rewritten(self, sequence=None, ssrc=None, timestamp=None, stream=None, payload_type=None):
        """Returns the packet with modified values. RTCP has no sequence number and no payload
        type."""
        data = bytearray(self.data)
        if sequence is not None and not self.is_rtcp:
            struct.pack_into("!H", data, 2, sequence & 0xFFFF)
        if payload_type is not None and not self.is_rtcp:
            data[1] = data[1] & 0x80 | payload_type
        if timestamp is not None and (self.is_sender_report or not self.is_rtcp):
            struct.pack_into("!I", data, self._timestamp_offset, timestamp & 0xFFFFFFFF)
        if ssrc is not None:
            struct.pack_into("!I", data, self._ssrc_offset, ssrc & 0xFFFFFFFF)
        return replace(self, data=bytes(data), stream=self.stream if stream is None else stream)

    def without_marker(self):
        """Returns the packet without the marker bit, which ends a frame."""
        return self if self.is_rtcp else replace(self, data=bytes([self.data[0], self.data[1] & 0x7F]) + self.data[2:])

    def with_extension(self):
        """Returns the packet with a header extension, as video recorders add it."""
        if self.is_rtcp:
            return self
        extension = struct.pack("!HH", 0xABAC, 3) + bytes(12)
        return replace(self, data=bytes([self.data[0] | 0x10]) + self.data[1:12] + extension + self.data[12:])

    def with_padding(self):
        """Returns the packet padded to a multiple of eight bytes, as for encryption."""
        if self.is_rtcp:
            return self
        count = 8 - len(self.data) % 8
        return replace(self, data=bytes([self.data[0] | 0x20]) + self.data[1:] + bytes(count - 1) + bytes([count]))

    def with_wall_clock_moved(self, seconds):
        """Returns the sender report with a modified time."""
        if not self.is_sender_report:
            return self
        data = bytearray(self.data)
        time = struct.unpack_from("!I", data, 8)[0]
        struct.pack_into("!I", data, 8, (time + seconds) & 0xFFFFFFFF)
        return replace(self, data=bytes(data))

    def begins_h264_key_frame(self):
        """Returns True if the packet contains a sequence parameter set, which the encoder sends
        before each key frame."""
        unit, payload = self.data[12] & 0x1F, self.data[12:]
        if unit == _H264_SEQUENCE_SET:
            return True
        return unit == _H264_AGGREGATE and payload[3] & 0x1F == _H264_SEQUENCE_SET


def goodbye(ssrc):
    """Returns an RTCP BYE packet."""
    return struct.pack("!BBHI", 0x81, 203, 1, ssrc)
