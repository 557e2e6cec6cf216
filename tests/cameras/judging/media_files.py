"""Reads recorded files with ffprobe and ffmpeg."""

import json
import re
import statistics
import subprocess
from dataclasses import dataclass

TIMEOUT = 60  # s


@dataclass(frozen=True)
class Stream:
    codec: str
    is_video: bool
    times: list  # s, of each packet in file order; None if a packet has no time
    decode_times: list
    first_is_key: bool

    def known_times(self):
        return sorted(time for time in self.times if time is not None)

    def steps(self):
        times = self.known_times()
        return [later - earlier for earlier, later in zip(times, times[1:])]

    def seconds(self):
        """Returns the time from the first packet to the end of the last one."""
        times = self.known_times()
        return times[-1] - times[0] + statistics.median(self.steps()) if len(times) > 1 else 0


@dataclass(frozen=True)
class MediaFile:
    streams: list
    duration: float  # s; None if the file does not contain it


def _time(text):
    return float(text) if text not in (None, "N/A") else None


def _stream(entry, packets, uses_decode_times):
    decode_times = [_time(packet.get("dts_time")) for packet in packets]
    times = decode_times if uses_decode_times else [_time(packet.get("pts_time")) for packet in packets]
    first_is_key = bool(packets) and packets[0]["flags"].startswith("K")
    return Stream(entry.get("codec_name", "unknown"), entry["codec_type"] == "video", times, decode_times,
                  first_is_key)


def read_media_file(path):
    """Returns the result of ffprobe, or the error text if it fails."""
    command = ["ffprobe", "-v", "error", "-of", "json", "-show_entries",
               "format=duration:stream=index,codec_type,codec_name:packet=stream_index,pts_time,dts_time,flags",
               str(path)]
    result = subprocess.run(command, capture_output=True, text=True, timeout=TIMEOUT)
    if result.returncode != 0:
        return f"ffprobe: {_one_line(result.stderr)}"
    contents = json.loads(result.stdout)
    uses_decode_times = path.suffix == ".avi"  # AVI has no presentation times
    streams = [_stream(entry, [packet for packet in contents["packets"]
                               if packet.get("stream_index") == entry["index"]], uses_decode_times)
               for entry in contents["streams"]]
    return MediaFile(streams, _time(contents["format"].get("duration")))


def decoding_errors(path):
    """Returns the errors that ffmpeg prints while it decodes the file; empty if there are none."""
    # In units of whole frames, two pictures that are slightly less than a frame apart could get the same time.
    time_base = ["-enc_time_base:v", "1:90000"]
    command = ["ffmpeg", "-nostdin", "-v", "error", "-threads", "1", "-i", str(path), "-map", "0", *time_base,
               "-f", "null", "-"]
    result = subprocess.run(command, capture_output=True, text=True, errors="replace", timeout=TIMEOUT)
    return _one_line(result.stderr)


def _one_line(text):
    """Returns the beginning of the text, without memory addresses."""
    return re.sub(r"\[([^]@]+) @ 0x[0-9a-f]+\]", r"\1:", " | ".join(text.split("\n"))).strip(" |")[:200]
