"""The resources of a process, sampled while it runs."""

import statistics
from dataclasses import dataclass
from pathlib import Path


NAMES = ("memory", "threads", "descriptors")


@dataclass(frozen=True)
class Sample:
    memory: int  # KiB
    threads: int
    descriptors: int


def sample(pid):
    fields = dict(line.split(":", 1) for line in Path(f"/proc/{pid}/status").read_text().splitlines())
    return Sample(int(fields["VmRSS"].split()[0]), int(fields["Threads"]),
                  sum(1 for _ in Path(f"/proc/{pid}/fd").iterdir()))


class Usage:
    """Compares the medians of the second quarter of the run with those of the last one. They vary: a
    camera that is away uses no resources, and one whose SSRC has changed uses more threads."""

    TOLERANCE = 1.1

    def __init__(self, name, process):
        self.name = name
        self._process = process
        self._samples = []

    def add(self):
        self._samples.append(sample(self._process.pid))

    def quarters(self):
        """Returns the usage in the second and in the last quarter."""
        size = len(self._samples) // 4
        return [self._summary(self._samples[begin:begin + size]) for begin in (size, 3 * size)]

    @staticmethod
    def _summary(samples):
        return Sample(*(round(statistics.median(getattr(one, name) for one in samples)) for name in NAMES))

    def reasons(self):
        """Returns what has grown."""
        before, after = self.quarters()
        for name in NAMES:
            first, last = getattr(before, name), getattr(after, name)
            if last > first * self.TOLERANCE:
                yield f"{self.name}: {name} grew from {first} to {last}"
