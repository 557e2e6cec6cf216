"""Ports on the loopback addresses, chosen by the system."""

import socket


def _family(host):
    return socket.AF_INET6 if ":" in host else socket.AF_INET


def reserved_port(host):
    """Returns a socket that reserves a port for this process. The port refuses connections until
    another socket with SO_REUSEADDR listens on it."""
    reservation = socket.socket(_family(host))
    reservation.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
    reservation.bind((host, 0))
    return reservation


def udp_port_pair(host):
    """Returns two sockets, on an even port and the next one."""
    while True:
        pair = tuple(socket.socket(_family(host), socket.SOCK_DGRAM) for _ in range(2))
        try:
            pair[0].bind((host, 0))
            port = pair[0].getsockname()[1]
            if port % 2 == 0:
                pair[1].bind((host, port + 1))
                return pair
        except OSError:
            pass
        for one in pair:
            one.close()
