"""A minimal RTSP client."""

import re
import socket
import struct

TIMEOUT = 20  # s, for every wait


class Viewer:
    """A minimal RTSP client that plays all streams, over TCP or UDP."""

    def __init__(self, uri, transport):
        self.uri = uri
        self.transport = transport
        host, port = re.fullmatch(r"rtsp://([^:/]+):(\d+)/.*", uri).groups()
        self.connection = socket.create_connection((host, int(port)), timeout=TIMEOUT)
        self.stream = self.connection.makefile("rb")
        self.sockets = []
        self.sequence = 0
        self.session = None

    def request(self, method, uri, **headers):
        self.sequence += 1
        headers["CSeq"] = self.sequence
        if self.session:
            headers["Session"] = self.session
        lines = [f"{method} {uri} RTSP/1.0"] + [f"{k}: {v}" for k, v in headers.items()]
        self.connection.sendall(("\r\n".join(lines) + "\r\n\r\n").encode())
        return self.answer()

    def answer(self):
        while (first := self.stream.read(1)) == b"$":
            self.skip_packet()
        status = (first + self.stream.readline()).decode().strip()
        headers = {}
        while line := self.stream.readline().decode().strip():
            name, value = line.split(":", 1)
            headers[name.lower()] = value.strip()
        body = self.stream.read(int(headers.get("content-length", 0))).decode()
        if " 200 " not in status:
            raise RuntimeError(f"the relay answers: {status or 'nothing'}")
        return headers, body

    def skip_packet(self):
        channel, length = struct.unpack(">BH", self.stream.read(3))
        self.stream.read(length)
        return channel

    def play(self):
        headers, description = self.request("DESCRIBE", self.uri, Accept="application/sdp")
        base = headers.get("content-base", self.uri).rstrip("/")
        for index, control in enumerate(re.findall(r"^a=control:(stream=\d+)", description, re.M)):
            answer, _ = self.request("SETUP", f"{base}/{control}", Transport=self.offer(index))
            self.session = answer["session"].split(";")[0]
        self.request("PLAY", self.uri, Range="npt=0.000-")

    def offer(self, index):
        if self.transport == "tcp":
            return f"RTP/AVP/TCP;unicast;interleaved={2 * index}-{2 * index + 1}"
        pair = [socket.socket(socket.AF_INET, socket.SOCK_DGRAM) for _ in range(2)]
        for udp in pair:
            udp.bind(("127.0.0.1", 0))
            udp.settimeout(TIMEOUT)
        self.sockets += pair
        ports = [udp.getsockname()[1] for udp in pair]
        return f"RTP/AVP;unicast;client_port={ports[0]}-{ports[1]}"

    def receive(self):
        """Waits for one packet of the first stream."""
        if self.transport == "udp":
            self.sockets[0].recv(65536)
            return
        while True:
            if self.stream.read(1) != b"$":
                raise RuntimeError("the relay has closed the connection")
            if self.skip_packet() == 0:
                return

    def leave(self, politely):
        if politely:
            self.request("TEARDOWN", self.uri)
        self.stream.close()
        self.connection.close()
        for udp in self.sockets:
            udp.close()
