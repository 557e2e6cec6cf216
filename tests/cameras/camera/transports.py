"""Transports for the packets of one stream."""

import re
import struct

from .ports import udp_port_pair


class InterleavedTransport:
    """Sends on two interleaved channels of the RTSP connection."""

    def __init__(self, header, writer, channel):
        match = re.search(r"interleaved=(\d+)(-\d+)?", header)
        self._channel = channel if channel is not None else int(match[1]) if match else 0
        self._writer = writer

    def header(self):
        return f"RTP/AVP/TCP;unicast;interleaved={self._channel}-{self._channel + 1}"

    def send(self, is_rtcp, packet):
        self._writer.write(struct.pack("!cBH", b"$", self._channel + is_rtcp, len(packet)) + packet)

    def close(self):
        pass


class UdpTransport:
    """Sends from a pair of ports that the system chooses to the client's pair."""

    def __init__(self, header, writer, blocked):
        rtp, rtcp = re.search(r"client_port=(\d+)-(\d+)", header).groups()
        self._client_ports = int(rtp), int(rtcp)
        self._address = writer.get_extra_info("peername")[0]
        self._blocked = blocked
        self._sockets = udp_port_pair(self._address)

    def header(self):
        ports = "-".join(str(sender.getsockname()[1]) for sender in self._sockets)
        client_ports = "-".join(str(port) for port in self._client_ports)
        return f"RTP/AVP;unicast;client_port={client_ports};server_port={ports}"

    def send(self, is_rtcp, packet):
        if self._blocked:
            return
        try:
            self._sockets[is_rtcp].sendto(packet, (self._address, self._client_ports[is_rtcp]))
        except OSError:
            pass  # A client that has disconnected refuses packets. The RTSP connection reports this.

    def close(self):
        for sender in self._sockets:
            sender.close()


def make_transport(header, writer, offered, channel, udp_blocked):
    """Returns the first transport in the client's list that the camera supports, or None."""
    for choice in header.split(","):
        if "multicast" in choice:
            continue
        if choice.startswith("RTP/AVP/TCP"):
            if "tcp" in offered:
                return InterleavedTransport(choice, writer, channel)
        elif choice.startswith("RTP/AVP") and "udp" in offered:
            return UdpTransport(choice, writer, udp_blocked)
    return None
