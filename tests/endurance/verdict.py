"""Compares the gaps in the recordings with the faults of the cameras."""

from dataclasses import dataclass

from recordings import duration
from troubles import KINDS

TOLERANCE = 1  # s, of each gap
FILE_TOLERANCE = 0.25  # s, of the duration of each file
NOTICING = 1.5  # s, between the last frame and the fault, in either order


@dataclass(frozen=True)
class Judged:
    """A fault with the gap that it caused."""

    trouble: object
    gap: object  # None: nothing is missing

    def missing(self):
        return self.gap.seconds() if self.gap else 0

    def excess(self):
        """Returns how much longer the gap is than the camera was away, in s."""
        return self.missing() - self.trouble.away()


def judge_troubles(troubles, gaps):
    """Returns the judged faults, and the gaps that no fault explains."""
    left, judged = list(gaps), []
    for trouble in troubles:
        gap = next((gap for gap in left if gap.camera == trouble.camera
                    and abs(gap.begin - trouble.time) <= NOTICING), None)
        if gap:
            left.remove(gap)
        judged.append(Judged(trouble, gap))
    return judged, left


def reasons_of_gaps(judged, unexplained):
    for one in judged:
        if abs(one.excess()) > TOLERANCE:
            yield (f"camera{one.trouble.camera}: {one.missing():.1f} s are missing after \"{one.trouble.kind}\", "
                   f"the camera was away for {one.trouble.away():.1f} s")
    for gap in unexplained:
        yield f"camera{gap.camera}: {gap.seconds():.1f} s are missing without a fault: {gap.cause}"


def reasons_of_files(paths, gaps, elapsed):
    """Checks the files of a camera: each must play, and together with the gaps they must cover the
    elapsed time. `elapsed` is None if the oldest files were removed."""
    recorded = 0
    for path in paths:
        try:
            recorded += duration(path)
        except RuntimeError as failure:
            yield str(failure)
    if elapsed is None:
        return
    missing = elapsed - recorded - sum(gap.seconds() for gap in gaps)
    if abs(missing) > TOLERANCE + FILE_TOLERANCE * len(paths):
        yield f"{paths[0].name} and later: {missing:+.1f} s are missing between {len(paths)} files"


def table(judged):
    """Returns a row for each kind of fault, with its number and its gaps."""
    rows = []
    for kind in KINDS:
        ones = [one for one in judged if one.trouble.kind == kind]
        if not ones:
            continue
        gaps = [one for one in ones if one.gap]
        away = sum(one.trouble.away() for one in ones)
        missing = sum(one.missing() for one in ones)
        largest = max((abs(one.excess()) for one in ones), default=0)
        rows.append([kind, str(len(ones)), str(len(gaps)), f"{away:.1f}", f"{missing:.1f}", f"{largest:.2f}"])
    return rows
