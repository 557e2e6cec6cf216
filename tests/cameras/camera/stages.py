"""The stages that process a session's packets: one for each misbehaviour of a stream."""

import asyncio
import random

from .misbehaviour import OF_CONNECTION
from .packets import Packet, goodbye

SEED = 1
PICTURES_PER_SECOND = 25
PACKETS_BEFORE_WRAP = 40


class Stage:
    """Passes packets to the next stage. Subclasses modify, delay or drop them."""

    def __init__(self, misbehaviour, camera, session):
        self.misbehaviour = misbehaviour
        self.camera = camera
        self.session = session
        self.forward = None

    def concerns(self, packet):
        return (self.misbehaviour.concerns(packet.stream) and packet.age >= self.misbehaviour.time
                and self.misbehaviour.claim(self.session))

    def accept(self, packet):
        if self.concerns(packet):
            self.change(packet)
        else:
            self.forward(packet)

    def change(self, packet):
        raise NotImplementedError


class Pause(Stage):
    def __init__(self, *arguments):
        super().__init__(*arguments)
        self._held = []
        self._released = False

    def change(self, packet):
        if self._released:
            self.forward(packet)
            return
        if not self._held:
            asyncio.get_running_loop().call_later(self.misbehaviour.value, self._release)
        self._held.append(packet)

    def _release(self):
        self._released = True
        for packet in self._held:
            self.forward(packet)


class Drop(Stage):
    def change(self, packet):
        if packet.age >= self.misbehaviour.time + self.misbehaviour.value:
            self.forward(packet)


class Stop(Stage):
    def change(self, packet):
        pass


class Bye(Stage):
    def __init__(self, *arguments):
        super().__init__(*arguments)
        self._ended = set()

    def change(self, packet):
        if packet.stream not in self._ended and not packet.is_rtcp:
            self._ended.add(packet.stream)
            self.session.send(packet.stream, True, goodbye(packet.ssrc))


class Late(Stage):
    def accept(self, packet):
        if not self.misbehaviour.concerns(packet.stream) or packet.age >= self.misbehaviour.time:
            self.forward(packet)


class Jump(Stage):
    def change(self, packet):
        ticks = round(self.misbehaviour.value * self.camera.streams[packet.stream].clock_rate)
        self.forward(packet.rewritten(timestamp=packet.timestamp + ticks))


class Drift(Stage):
    """Makes a stream's clock VALUE per cent fast."""

    def __init__(self, *arguments):
        super().__init__(*arguments)
        self._first = {}

    def change(self, packet):
        first = self._first.setdefault(packet.stream, packet.timestamp)
        elapsed = (packet.timestamp - first + 0x80000000) % 0x100000000 - 0x80000000
        self.forward(packet.rewritten(
            timestamp=packet.timestamp + round(elapsed * self.misbehaviour.value / 100)))


class WallClock(Stage):
    """Shifts the wall clock times in sender reports by VALUE seconds."""

    def change(self, packet):
        self.forward(packet.with_wall_clock_moved(round(self.misbehaviour.value)))


class Wrap(Stage):
    """Renumbers each stream so that its timestamps wrap around at the given time, and its
    sequence numbers some packets after the first one."""

    def __init__(self, *arguments):
        super().__init__(*arguments)
        self._offsets = {}

    def accept(self, packet):
        if packet.stream not in self._offsets and not packet.is_rtcp:
            clock_rate = self.camera.streams[packet.stream].clock_rate
            ahead = round((self.misbehaviour.time - packet.age) * clock_rate)
            self._offsets[packet.stream] = -packet.sequence - PACKETS_BEFORE_WRAP, -packet.timestamp - ahead
        if packet.stream in self._offsets:
            sequence, timestamp = self._offsets[packet.stream]
            self.forward(packet.rewritten(sequence=None if packet.is_rtcp else packet.sequence + sequence,
                                          timestamp=packet.timestamp + timestamp))


class NewSsrc(Stage):
    """Continues with a new SSRC, which depends on the time of the change."""

    def change(self, packet):
        self.restart(packet, packet.ssrc ^ 0x5A5A5A5A ^ int(self.misbehaviour.time))

    def restart(self, packet, ssrc):
        self.forward(packet.rewritten(sequence=packet.sequence + 40000, ssrc=ssrc,
                                      timestamp=packet.timestamp + 1234567890))


class FirstSsrc(NewSsrc):
    def __init__(self, *arguments):
        super().__init__(*arguments)
        self._first = {}  # by stream

    def accept(self, packet):
        self._first.setdefault(packet.stream, packet.ssrc)
        super().accept(packet)

    def change(self, packet):
        self.restart(packet, self._first[packet.stream])


class Switch(Stage):
    """Replaces a stream with its substitute from the substitute's next key frame, but continues
    the numbering of the original."""

    def __init__(self, *arguments):
        super().__init__(*arguments)
        self._stream = self.misbehaviour.stream or 0
        self._last = None  # packet of the original
        self._waiting = []  # packets of the substitute, until the original's frame is complete
        self._offsets = None  # of the substitute's sequence numbers and timestamps, after the switch

    def accept(self, packet):
        if packet.stream == self.camera.substitute:
            self._accept_substitute(packet)
        elif packet.stream != self._stream:
            self.forward(packet)
        elif self._offsets is None:
            self._accept_original(packet)

    def _accept_original(self, packet):
        self.forward(packet)
        if not packet.is_rtcp:
            self._last = packet
            self._switch_if_possible()

    def _accept_substitute(self, packet):
        if self._offsets is not None:
            self.forward(self._renumbered(packet))
        elif self._waiting or self._begins(packet):
            self._waiting.append(packet)
            self._switch_if_possible()

    def _begins(self, packet):
        return (packet.age >= self.misbehaviour.time and not packet.is_rtcp and packet.begins_h264_key_frame()
                and self.misbehaviour.claim(self.session))

    def _switch_if_possible(self):
        if not self._waiting or self._last is None or not self._last.ends_frame:
            return
        step = self.camera.streams[self._stream].clock_rate // PICTURES_PER_SECOND
        self._offsets = (self._last.sequence + 1 - self._waiting[0].sequence,
                         self._last.timestamp + step - self._waiting[0].timestamp)
        for packet in self._waiting:
            self.forward(self._renumbered(packet))

    def _renumbered(self, packet):
        sequence = None if packet.is_rtcp else packet.sequence + self._offsets[0]
        return packet.rewritten(sequence=sequence, ssrc=self._last.ssrc, stream=self._stream,
                                timestamp=packet.timestamp + self._offsets[1],
                                payload_type=self._last.data[1] & 0x7F)


class RandomStage(Stage):
    """Applies to a share of the RTP packets, the same ones on each run."""

    def __init__(self, *arguments):
        super().__init__(*arguments)
        self._random = random.Random(SEED)

    def change(self, packet):
        if not packet.is_rtcp and self._random.random() * 100 < self.misbehaviour.value:
            self.change_chosen(packet)
        else:
            self.forward(packet)

    def change_chosen(self, packet):
        raise NotImplementedError


class Loss(RandomStage):
    def change_chosen(self, packet):
        pass


class Duplicate(RandomStage):
    def change_chosen(self, packet):
        self.forward(packet)
        self.forward(packet)


class Reorder(RandomStage):
    def __init__(self, *arguments):
        super().__init__(*arguments)
        self._late = {}

    def change(self, packet):
        super().change(packet)
        if not packet.is_rtcp and packet.stream in self._late and self._late[packet.stream] is not packet:
            self.forward(self._late.pop(packet.stream))

    def change_chosen(self, packet):
        if packet.stream in self._late:
            self.forward(packet)
        else:
            self._late[packet.stream] = packet


class Rewrite(Stage):
    """Changes the form of each packet, not its content."""

    _REWRITES = {"no-marker": Packet.without_marker, "extension": Packet.with_extension,
                 "padding": Packet.with_padding}

    def change(self, packet):
        self.forward(self._REWRITES[self.misbehaviour.kind](packet))


_STAGES = {
    "pause": Pause, "drop": Drop, "stop": Stop, "bye": Bye, "late": Late, "jump": Jump, "drift": Drift,
    "wall-clock": WallClock, "wrap": Wrap, "ssrc": NewSsrc, "first-ssrc": FirstSsrc, "switch": Switch,
    "loss": Loss, "duplicate": Duplicate, "reorder": Reorder, "no-marker": Rewrite,
    "extension": Rewrite, "padding": Rewrite,
}


def stage_of(misbehaviour, camera, session, forward):
    """Returns the function of a stage that passes packets on to `forward`."""
    stage = _STAGES[misbehaviour.kind](misbehaviour, camera, session)
    stage.forward = forward
    return stage.accept


def chain(camera, session, deliver):
    """Returns the function that processes a session's packets. `deliver` is called for packets
    that pass all stages."""
    accept = deliver
    for misbehaviour in reversed(camera.misbehaviours):
        if misbehaviour.kind not in OF_CONNECTION:
            accept = stage_of(misbehaviour, camera, session, accept)
    return accept
