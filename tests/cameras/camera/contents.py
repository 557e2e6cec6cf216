"""The streams that the camera can send. Each is encoded once and kept in a cache folder."""

import hashlib
import os
import subprocess
import tempfile
from dataclasses import dataclass
from pathlib import Path

LENGTH = 30  # s of media in a file, which the sender loops


@dataclass(frozen=True)
class Content:
    """A stream: the source that ffmpeg encodes, and the options for encoding and packetizing."""

    source: str
    encoder: str
    packetizer: str = ""

    def is_slow(self):
        """Returns True if the time between two frames is several seconds."""
        return self.source.endswith("rate=1/6")


def _pictures(size="320x240", rate="25"):
    return f"testsrc2=size={size}:rate={rate}"


def _tone(rate):
    return f"sine=frequency=440:sample_rate={rate}"


def _x264(options, gop=25):
    return (f"-c:v libx264 -preset ultrafast -b:v 300k -pix_fmt yuv420p -g {gop} -keyint_min {gop}"
            f" -sc_threshold 0 -threads 1 {options}")


def _x265(b_frames):
    return ("-c:v libx265 -preset ultrafast -b:v 300k -threads 1 -x265-params keyint=25:min-keyint=25:scenecut=0:"
            f"bframes={b_frames}:pools=none:log-level=none")


_IN_BAND = "-bsf:v dump_extra"  # parameter sets before each key frame
_BASELINE = _x264("-profile:v baseline")
_AAC = "-c:a aac -b:a 64k"

CONTENTS = {
    "h264": Content(_pictures(), f"{_BASELINE} {_IN_BAND}"),
    "h264-short-gop": Content(_pictures(), f"{_x264('-profile:v baseline', gop=5)} {_IN_BAND}"),
    "h264-b-frames": Content(_pictures(), f"{_x264('-profile:v high -bf 3 -b_strategy 0')} {_IN_BAND}"),
    "h264-slices": Content(_pictures(), f"{_x264('-profile:v main -bf 0 -slices 4')} {_IN_BAND}"),
    "h264-b-slices": Content(_pictures(), f"{_x264('-profile:v main -bf 2 -b_strategy 0 -slices 4')} {_IN_BAND}"),
    "h264-sets-in-sdp": Content(_pictures(), _BASELINE),
    "h264-large": Content(_pictures("640x480"), f"{_BASELINE} {_IN_BAND}"),
    "h264-small": Content(_pictures("160x120"), f"{_BASELINE} {_IN_BAND}"),
    "h264-slow": Content(_pictures(rate="1/6"), f"{_x264('-profile:v baseline', gop=1)} {_IN_BAND}"),
    "h265": Content(_pictures(), f"{_x265(0)} {_IN_BAND}"),
    "h265-b-frames": Content(_pictures(), f"{_x265(3)} {_IN_BAND}"),
    # RTP packets contain both matrices. Some versions of ffmpeg write only one if they are equal.
    "mjpeg": Content(_pictures(), "-c:v mjpeg -huffman default -force_duplicated_matrix 1 "
                                  "-pix_fmt yuvj420p -b:v 1500k"),
    "mpeg4": Content(_pictures(), f"-c:v mpeg4 -b:v 400k -g 25 -bf 0 {_IN_BAND}"),
    "vp8": Content(_pictures(), "-c:v libvpx -deadline realtime -cpu-used 8 -b:v 300k -g 25"),
    "aac": Content(_tone(44100), _AAC),
    "aac-single": Content(_tone(44100), _AAC, "-muxdelay 0.03"),
    "aac-latm": Content(_tone(44100), _AAC, "-rtpflags latm"),
    "mulaw": Content(_tone(8000), "-c:a pcm_mulaw"),
    "alaw": Content(_tone(8000), "-c:a pcm_alaw"),
    "opus": Content(_tone(48000), "-c:a libopus -b:a 64k"),
    "h264-long-gop": Content(_pictures(), f"{_x264('-profile:v baseline', gop=125)} {_IN_BAND}"),
    "h264-60-fps": Content(_pictures("640x360", "60"), f"{_x264('-profile:v high -bf 2', gop=60)} {_IN_BAND}"),
    "mpeg2": Content(_pictures(), "-c:v mpeg2video -b:v 800k -g 25 -bf 0"),
    "vp9": Content(_pictures(), "-c:v libvpx-vp9 -deadline realtime -cpu-used 8 -b:v 300k -g 25",
                   "-strict experimental"),
    "l16": Content(_tone(16000), "-c:a pcm_s16be"),
    "g722": Content(_tone(16000), "-c:a g722"),
    "mp3": Content(_tone(44100), "-c:a libmp3lame -b:a 128k"),
    "speex": Content(_tone(16000), "-c:a libspeex"),
    "mp2": Content(_tone(44100), "-c:a mp2 -b:a 128k"),
    "ac3": Content(_tone(48000), "-c:a ac3 -b:a 128k"),
    "h263": Content(_pictures("352x288"), "-c:v h263p -b:v 400k -g 25"),
}


def default_cache():
    return Path(tempfile.gettempdir()) / f"camera-contents-{os.getuid()}"


def _encode(content, file):
    command = ["ffmpeg", "-nostdin", "-hide_banner", "-loglevel", "error", "-f", "lavfi",
               "-i", content.source, "-t", str(LENGTH), *content.encoder.split(), "-y", "-f", "nut", str(file)]
    subprocess.run(command, check=True, timeout=300)


def prepare(name, cache):
    """Returns the file with the content. Encodes it unless it is in the cache. Safe to call from
    several processes."""
    content = CONTENTS[name]
    digest = hashlib.sha256(f"{content.source} {content.encoder} {LENGTH}".encode()).hexdigest()[:12]
    file = Path(cache) / f"{digest}.nut"
    if not file.exists():
        file.parent.mkdir(parents=True, exist_ok=True)
        with tempfile.TemporaryDirectory(dir=file.parent) as scratch:
            _encode(content, Path(scratch) / file.name)
            os.replace(Path(scratch) / file.name, file)
    return file
