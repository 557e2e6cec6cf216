"""A camera that consists of a sender and an RTSP server on 127.0.0.1."""

import asyncio
import re
import time
from dataclasses import dataclass, field

from . import description as descriptions
from .packets import Packet
from .passwords import PasswordCheck
from .ports import reserved_port
from .sender import Sender
from .session import Session

@dataclass
class Options:
    """The server options of the camera."""

    transports: set = field(default_factory=lambda: {"tcp", "udp"})
    udp_blocked: bool = False
    statuses: dict = field(default_factory=dict)  # status codes of responses other than 200, by method and stream
    deaf: bool = False  # accepts connections but sends no response
    credentials: tuple = None  # user, password, scheme
    certificate: object = None  # an ssl.SSLContext for rtsps
    host: str = "127.0.0.1"
    path: str = "/camera"
    stream_addresses: str = "based"  # one of ADDRESSES
    redirect: bool = False
    session_timeout: int = 60  # s
    get_parameter: bool = True
    sender_reports: bool = True
    channel: int = None  # first channel on the connection; None: the client chooses
    metadata: bool = False
    backchannel: str = ""  # direction of an audio stream that cannot be set up; empty: none
    direction: str = ""  # of the other streams in the description; empty: not specified
    protocol: str = ""  # of the streams in the description; empty: RTP/AVP
    rtp_info: bool = True
    rtpmaps: bool = False
    parameter_sets: bool = True
    early: bool = False  # sends packets before the response to PLAY
    asks: bool = False  # sends requests to the client
    lifetime: int = 60


def _without_scheme(uri):
    """Clients may request rtsp: addresses over TLS, too."""
    return re.sub(r"^rtsps?:", "", uri)


class RtspCamera:
    def __init__(self, contents, cache, options, misbehaviours, switch_to=None):
        self.options = options
        self.misbehaviours = misbehaviours
        self.substitute = len(contents)  # index of the stream that replaces another one after `switch`
        self.password_check = PasswordCheck(*options.credentials) if options.credentials else None
        self.streams = []
        self.description = ""
        self._count = len(contents)
        self._sender = Sender([*contents, *([switch_to] if switch_to else [])], cache, options.lifetime,
                              self._receive)
        self._last = {}
        self._reports = {}
        self._sessions = set()
        self._server = None
        self._reservation = reserved_port(options.host)
        self._port = self._reservation.getsockname()[1]

    async def prepare(self):
        """Starts the sender. Afterwards, the camera's address is known."""
        texts = await self._sender.start()
        self.streams = descriptions.streams_of(texts)
        options = self.options
        prefix = f"{self.uri()}/" if options.stream_addresses == "absolute" else ""
        self.description = descriptions.served(
            texts, self._count, "IN IP6 ::" if ":" in options.host else "IN IP4 0.0.0.0", prefix, options.rtpmaps,
            options.parameter_sets, options.metadata, options.backchannel,
            options.direction, options.protocol)

    def stop(self):
        self._drop_all()
        self._sender.stop()

    def uri(self):
        scheme = "rtsps" if self.options.certificate else "rtsp"
        host = f"[{self.options.host}]" if ":" in self.options.host else self.options.host
        return f"{scheme}://{host}:{self._port}{self.options.path}"

    def moved_uri(self):
        """Returns the address to which clients are redirected."""
        return self.uri() + "-moved"

    def serves(self, uri):
        return _without_scheme(uri).rstrip("/") in map(_without_scheme, (self.uri(), self.moved_uri()))

    def stream_named(self, uri):
        base, name = _without_scheme(self.stream_base()), _without_scheme(uri)
        if name == f"{base}metadata":
            return self._count  # never sends anything
        match = re.fullmatch(re.escape(base) + r"stream=(\d+)", name)
        if match and int(match[1]) < self._count:
            return int(match[1])
        return None

    def stream_base(self):
        """Returns the common prefix of the stream addresses."""
        if self.options.stream_addresses == "resolved":
            return self.uri().rpartition("/")[0] + "/"
        return self.uri() + "/"

    def rtp_info(self, streams):
        """Returns the next sequence number and the current timestamp of each stream that has
        sent something."""
        known = all(stream in self._last and stream in self._reports for stream in streams)
        if not self.options.rtp_info or not known:
            return ""
        return ",".join(self._rtp_info(stream) for stream in streams)

    def _rtp_info(self, stream):
        report, arrival = self._reports[stream]
        elapsed = int((time.monotonic() - arrival) * self.streams[stream].clock_rate)
        timestamp = (report.timestamp + elapsed) & 0xFFFFFFFF
        sequence = (self._last[stream].sequence + 1) & 0xFFFF
        return f"url={self.stream_base()}stream={stream};seq={sequence};rtptime={timestamp}"

    def misbehave_now(self, misbehaviour):
        for session in list(self._sessions):
            session.misbehave_now(misbehaviour)

    def leave(self, seconds):
        """Closes all connections and refuses new ones for a while."""
        self._drop_all()
        asyncio.get_running_loop().call_later(seconds, self._come_back)

    def _come_back(self):
        asyncio.ensure_future(self.listen())

    async def listen(self):
        self._server = await asyncio.start_server(self._serve, self.options.host, self._port,
                                                  ssl=self.options.certificate)

    async def _serve(self, reader, writer):
        session = Session(self, reader, writer)
        self._sessions.add(session)
        try:
            await session.serve()
        finally:
            self._sessions.discard(session)

    def _drop_all(self):
        if self._server:
            self._server.close()
        for session in list(self._sessions):
            session.close()

    def _receive(self, stream, is_rtcp, data):
        packet = Packet(stream, is_rtcp, data, 0)
        if not is_rtcp:
            self._last[stream] = packet
        elif not self.options.sender_reports:
            return
        elif packet.is_sender_report:
            self._reports[stream] = packet, time.monotonic()
        for session in list(self._sessions):
            session.receive(stream, is_rtcp, data)
