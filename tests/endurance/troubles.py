"""The faults of cameras, and how much of a recording may be missing because of them."""

from dataclasses import dataclass

LONGEST_SILENCE = 10  # s, after which a recorder reconnects to a camera that sends nothing


@dataclass(frozen=True)
class Kind:
    """A kind of fault.

    command  the command for the camera; {} is the number of seconds
    seconds  the range of that number
    away     how long the camera sends nothing that can be recorded: a factor of the number, and a
             constant in s
    udp      whether it applies to a camera that sends over UDP
    """

    command: str
    seconds: tuple = (0, 0)
    away: tuple = (0, 0)
    udp: bool = True


KINDS = {
    "pause": Kind("pause:{}", (0.5, 3)),
    "lost packets": Kind("drop:{}", (0.5, 3)),
    "clock ahead": Kind("jump:{}", (10, 3600)),
    "clock back": Kind("jump:-{}", (1, 10)),
    "new SSRC": Kind("ssrc"),
    "connection closed": Kind("close", udp=False),
    "connection reset": Kind("reset", udp=False),
    "garbage": Kind("garbage:300", udp=False),
    "away": Kind("gone:{}", (1, 6), (1, 0), udp=False),
    "silent": Kind("silent", away=(0, LONGEST_SILENCE)),
}


@dataclass(frozen=True)
class Trouble:
    camera: int
    kind: str
    seconds: float
    time: float  # UTC, s

    def command(self):
        return KINDS[self.kind].command.format(f"{self.seconds:g}")

    def away(self):
        factor, constant = KINDS[self.kind].away
        return factor * self.seconds + constant


def draw(random, camera, is_over_udp, time):
    """Returns a random fault of a camera."""
    name = random.choice([name for name, kind in KINDS.items() if kind.udp or not is_over_udp])
    return Trouble(camera, name, round(random.uniform(*KINDS[name].seconds), 1), time)
