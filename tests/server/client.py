"""A client that takes every byte of an answer for what HTTP says it is, for the tests in this folder."""

import re
import socket
import time
from typing import NamedTuple

import h11


class Answer(NamedTuple):
    """What came: status, body, the header's lines in lower case, and the rule of HTTP that it breaks, if any."""
    status: int
    body: bytes
    header: dict
    fault: str


def connect(port):
    """A connection whose answer waits in the server and not in the system, as far as there is a choice."""
    client = socket.socket()
    client.settimeout(60)
    client.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
    client.connect(("127.0.0.1", port))
    return client


def request(target, method="GET", head=(), body=b""):
    """The client's side of a connection, and the bytes that it sends."""
    client = h11.Connection(h11.CLIENT, max_incomplete_event_size=1 << 20)
    events = [h11.Request(method=method, target=target, headers=[("Host", "x"), ("Connection", "close"), *head])]
    events += [h11.Data(data=body)] if body else []
    return client, b"".join(client.send(event) for event in (*events, h11.EndOfMessage()))


def fetch(port, target, pause=0.0, **more):
    """The answer, None when there is none; a slow reader pauses between the pieces."""
    client, sent = request(target, **more)
    pieces = []
    with connect(port) as connection:
        try:
            connection.sendall(sent)
        except OSError:
            pass  # a refusal does not read the body
        try:
            while piece := connection.recv(32768):
                pieces.append(piece)
                time.sleep(pause)
        except ConnectionResetError:
            pass  # the body of a refused request was on its way
    received = b"".join(pieces)
    try:
        return read(client, received) if received else None
    except h11.RemoteProtocolError as error:
        return read_leniently(received, str(error))


def read(client, received):
    """The answer, each byte of which has to have its place in HTTP's grammar."""
    client.receive_data(received)
    client.receive_data(b"")
    response, pieces = None, []
    while not isinstance(event := client.next_event(), h11.EndOfMessage):
        if isinstance(event, h11.Response):
            response = event
        elif isinstance(event, h11.Data):
            pieces.append(bytes(event.data))
        else:
            raise h11.RemoteProtocolError(f"unexpected {event}")
    if client.trailing_data[0]:
        raise h11.RemoteProtocolError("bytes behind the answer")
    names = [name for name, _ in response.headers]
    if len(set(names)) < len(names):
        raise h11.RemoteProtocolError("a line that stands there twice")
    header = {name.decode(): value.decode("latin-1") for name, value in response.headers}
    return Answer(response.status_code, b"".join(pieces), header, "")


def read_leniently(received, fault):
    header, body = divided(received)
    length = re.search(rb"^Content-Length: *(\d+)", header, re.M | re.I)
    if re.search(rb"^Transfer-Encoding: *chunked", header, re.M | re.I):
        body = unchunked(body)
    return Answer(int(header.split(None, 2)[1]), body[:int(length[1])] if length else body, {}, fault)


def unchunked(body):
    """The bytes of a chunked body, as far as it goes."""
    pieces = []
    while match := re.match(rb"([0-9A-Fa-f]+)\r\n", body):
        size = int(match[1], 16)
        pieces.append(body[match.end():match.end() + size])
        body = body[match.end() + size + 2:]
    return b"".join(pieces)


def divided(text):
    """Header and body where a lenient reader parts them: at the first blank line, whatever ends its lines."""
    return re.match(rb"(.*?)(?:\r?\n\r?\n|\Z)(.*)", text, re.S).groups()
