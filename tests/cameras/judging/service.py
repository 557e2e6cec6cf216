"""Runs several cases at the same time, with one record_cameras for all of them."""

import contextlib

from .processes import Outcome, RecorderProcess
from .run import prepared_folder, reasons_of, recorder_words, start_camera

PROGRAM = "record_cameras"
NOT_STARTED = {"unknown scheme", "existing file", "unknown extension"}  # an invalid configuration
RECORD_CAMERA_ONLY = {"quiet", "audio stops for longer than a silence"}  # --quiet, and the progress
OTHER_FOLDER = {"TLS, trusted by a relative path"}  # the cameras have one working folder


def can_share_process(case):
    """Returns whether record_cameras can run a case together with others."""
    if case.name in NOT_STARTED | RECORD_CAMERA_ONLY | OTHER_FOLDER:
        return False
    return not (case.signal or case.second or case.environment or case.largest_file is not None)


def run_cases_together(cases, programs, folder):
    """Returns, for each case, the reasons why it failed."""
    folder.mkdir(parents=True, exist_ok=True)
    folders = {f"camera{index}": prepared_folder(folder / f"camera{index}") for index in range(len(cases))}
    with contextlib.ExitStack() as processes:
        groups = []
        for case, (name, place) in zip(cases, folders.items()):
            _, address = start_camera(case, programs, processes)
            groups.append(_group(name, recorder_words(case, programs, place, address)))
        configuration = folder / "cameras.conf"
        configuration.write_text("[defaults]\nretry=0\n\n" + "\n".join(groups))
        recorder = RecorderProcess([str(programs.service), str(configuration)], folder, None)
        outcome = recorder.wait(max(case.longest() for case in cases))
    if outcome.status not in (0, 1):
        return [[f"{PROGRAM} ended with {outcome.status}: {outcome.err[-300:]}"]] * len(cases)
    return [reasons_of(case, _outcome_of(name, outcome), place)
            for case, (name, place) in zip(cases, folders.items())]


def _group(name, words):
    """Returns the group of a configuration file for a camera."""
    lines, words = [f"[{name}]"], list(words)
    while words:
        key, has_value, value = words.pop(0).removeprefix("--").partition("=")
        if not has_value and words and not words[0].startswith("--"):
            value = words.pop(0)
        lines.append(f"{key}={value or 'true'}")
    return "\n".join(lines) + "\n"


def _outcome_of(name, outcome):
    """Returns what record_camera would have printed for a camera, and its exit status."""
    out = _lines_of(name, outcome.out)
    err = [f"record_camera: {line}" for line in _lines_of(name, outcome.err)]
    return Outcome(1 if err else 0, "".join(out), "".join(err), outcome.timed_out)


def _lines_of(name, text):
    return [line.removeprefix(f"{name}: ") + "\n" for line in text.splitlines() if line.startswith(f"{name}: ")]
