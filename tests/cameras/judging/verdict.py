"""Compares the output and the files of a recorder with the expectations of a case."""

import re
from collections import Counter

from .case import EXISTING_CONTENTS
from .media_files import decoding_errors, read_media_file

AUDIO_STEP = 0.25  # s; audio packets may be this long
CUT_SHORT = r"[^|]*File ended prematurely"  # what ffprobe reports for a file whose recorder was killed
# Critical warnings that the framework's RTSP source prints if it is stopped at certain moments.
CRITICALS_OF_THE_SOURCE = r"CRITICAL.*(gst_event_set_seqnum|g_pollable_input_stream_)"
LATEST_START = 0.3  # s; the times in a file begin at 0
TOTAL_TOLERANCE = 0.2  # s


def judge(case, outcome, folder):
    """Returns the reasons why a case failed; empty if it passed."""
    return [*_output_reasons(case, outcome), *_file_reasons(case, folder)]


def _output_reasons(case, outcome):
    if outcome.timed_out:
        yield f"did not end within {case.longest():.0f} s"
    elif not case.signal.startswith("KILL"):
        if outcome.status != case.status:
            last_line = outcome.err.rstrip().rpartition("\n")[2]
            yield f"exit status {outcome.status}, not {case.status}, {last_line!r}"
        yield from _stderr_reasons(outcome)
    text = outcome.out + outcome.err
    for pattern in case.lines:
        wanted = not pattern.startswith("not ")
        if bool(re.search(pattern.removeprefix("not "), text, re.M)) != wanted:
            yield f"{'no line matches' if wanted else 'a line matches'} {pattern.removeprefix('not ')!r}"
    if case.password and case.password in text:
        yield "the password shows in the output"


def _stderr_reasons(outcome):
    """stderr must be empty after a success, and one line after a failure."""
    lines = [line for line in outcome.err.splitlines() if line and not re.search(CRITICALS_OF_THE_SOURCE, line)]
    if outcome.status == 0 and lines:
        yield f"stderr: {lines[0]!r}"
    if outcome.status == 1 and (len(lines) != 1 or not lines[0].startswith("record_camera: error ")):
        yield f"{len(lines)} lines on stderr: {lines[:2]!r}"


def _file_reasons(case, folder):
    found = sorted(path.name for path in folder.iterdir())
    patterns = case.file_names()
    if len(found) != len(patterns) or not all(map(re.fullmatch, patterns, sorted(found, key=_number))):
        yield f"files {found}, not {len(patterns)}"
    totals = Counter()  # s, of the video and of the audio: one may change files before the other
    for index, name in enumerate(sorted(found, key=_number)[:len(patterns)]):
        if case.existing and "--overwrite" not in case.options:
            if (folder / name).read_bytes() != EXISTING_CONTENTS:
                yield f"{name}: has been changed"
            continue
        media = read_media_file(folder / name)
        if isinstance(media, str):
            yield f"{name}: {media}"
            continue
        for stream in media.streams:
            totals[stream.is_video] += stream.seconds()
        for reason in _media_reasons(case, case.expected_streams(index), media, name):
            yield f"{name}: {reason}"
        errors = decoding_errors(folder / name) if case.whole else ""
        if errors and not (case.is_killed() and re.fullmatch(CUT_SHORT, errors)):
            yield f"{name}: ffmpeg: {errors}"
    total = max(totals.values(), default=0)
    if case.total is not None and abs(total - case.total) > TOTAL_TOLERANCE:
        yield f"{total:.2f} s in all files, not {case.total} s"


def _number(name):
    """The first file of a recording has no number and sorts first."""
    match = re.search(r"-(\d{4})\.\w+$", name)
    return int(match[1]) if match else 0, name


def _media_reasons(case, expected, media, name):
    codecs, wanted = sorted(stream.codec for stream in media.streams), sorted(stream.codec for stream in expected)
    if codecs != wanted:
        yield f"holds {' '.join(codecs) or 'nothing'}, not {' '.join(wanted)}"
        return
    pairs = _pairs(expected, media.streams)
    for expectation, stream in pairs:
        for reason in _stream_reasons(case, expectation, stream, name):
            yield f"{stream.codec}: {reason}"
    beginning = min((stream.known_times()[0] for stream in media.streams if stream.known_times()), default=0)
    for expectation, stream in pairs:
        start = stream.known_times()[0] - beginning if stream.known_times() else 0
        if abs(start - expectation.start) > case.apart:
            yield f"{stream.codec}: starts at {start:.2f} s, not {expectation.start:g} s"
    if not -0.1 <= beginning <= LATEST_START:
        yield f"begins at {beginning:.2f} s"
    yield from _duration_reasons(case, media)


def _pairs(expected, streams):
    """Pairs each expectation with the stream of its codec. Streams of the same codec are paired
    in file order."""
    left = list(streams)
    pairs = []
    for expectation in expected:
        stream = next(stream for stream in left if stream.codec == expectation.codec)
        left.remove(stream)
        pairs.append((expectation, stream))
    return pairs


def _duration_reasons(case, media):
    if case.is_killed():
        return
    ends = [stream.known_times()[0] + stream.seconds() for stream in media.streams if stream.known_times()]
    if media.duration is None:
        yield "states no duration"
    elif ends and abs(media.duration - max(ends)) > 0.3:
        yield f"states a duration of {media.duration:.2f} s, ends at {max(ends):.2f} s"


def _stream_reasons(case, expectation, stream, name):
    if not stream.times:
        yield "no packets"
        return
    yield from _time_reasons(stream, name, case.is_killed())
    seconds = stream.seconds()
    if case.is_killed():
        if seconds < expectation.seconds:
            yield f"{seconds:.2f} s, less than {expectation.seconds:g} s"
    elif abs(seconds - expectation.seconds) > case.tolerance:
        yield f"{seconds:.2f} s, not {expectation.seconds:g} s"
    largest_step = max(case.largest_step, 0 if stream.is_video else AUDIO_STEP)
    if max(stream.steps(), default=0) > largest_step:
        yield f"a step of {max(stream.steps()):.2f} s"
    if not stream.is_video:
        return
    if not stream.first_is_key:
        yield "does not begin at a key frame"
    frames = seconds * case.rate
    if case.whole and abs(len(stream.times) - frames) > 2 + frames * 0.02:
        yield f"{len(stream.times)} frames in {seconds:.2f} s"


def _time_reasons(stream, name, killed):
    # In a fragment, mp4mux omits the durations of audio frames after the last two in a row.
    may_repeat = killed and not stream.is_video and name.endswith((".mp4", ".mov"))
    untimed = stream.times.count(None)
    if untimed:
        yield f"{untimed} packets without a time"
    if len(set(stream.times)) != len(stream.times) and not may_repeat:
        yield f"{len(stream.times) - len(set(stream.times))} packets with the time of another"
    if name.endswith((".mp4", ".mov")):
        times = stream.decode_times
        if None in times or any(
                later < earlier or (later == earlier and not may_repeat) for earlier, later in zip(times, times[1:])):
            yield "decode times do not increase"
