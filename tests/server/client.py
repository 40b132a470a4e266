"""A client that takes every byte of an answer for what HTTP says it is, for the tests in this folder."""

import contextlib
import gzip
import re
import socket
import time
from typing import NamedTuple

import h11


class Answer(NamedTuple):
    """Status, unpacked body, the header's lines in lower case, and the rule of HTTP that it breaks."""
    status: int
    body: bytes
    header: dict
    fault: str = ""


def send(port, target, method="GET", head=(), body=b""):
    """A connection whose answer waits in the server and not in the system, as far as there is a choice."""
    client = h11.Connection(h11.CLIENT, max_incomplete_event_size=1 << 20)
    headers = [("Host", "x"), ("Connection", "close"), *head]
    events = [h11.Request(method=method, target=target, headers=headers)]
    events += [h11.Data(data=body)] if body else []
    connection = socket.socket()
    connection.settimeout(60)
    connection.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
    connection.connect(("127.0.0.1", port))
    with contextlib.suppress(OSError):  # a refusal does not read the body
        connection.sendall(b"".join(client.send(event) for event in (*events, h11.EndOfMessage())))
    return client, connection


def fetch(port, target, pause=0.0, **more):
    """The answer, None when there is none; a slow reader pauses between the pieces."""
    pieces = []
    client, connection = send(port, target, **more)
    # A reset tells that the body of a refused request was on its way.
    with connection, contextlib.suppress(ConnectionResetError):
        while piece := connection.recv(32768):
            pieces.append(piece)
            time.sleep(pause)
    received = b"".join(pieces)
    try:
        return read(client, received) if received else None
    except h11.RemoteProtocolError as error:
        return read_leniently(received, str(error))


def read(client, received):
    """The answer, each byte of which has to have its place in HTTP's grammar."""
    client.receive_data(received)
    client.receive_data(b"")
    response, body = client.next_event(), b""
    while isinstance(event := client.next_event(), h11.Data):
        body += event.data
    names = [name for name, _ in response.headers]
    if not isinstance(event, h11.EndOfMessage) or client.trailing_data[0] or len(set(names)) < len(names):
        raise h11.RemoteProtocolError("bytes behind the answer, or a line twice")
    header = {name.decode(): value.decode("latin-1") for name, value in response.headers}
    is_packed = header.get("content-encoding") == "gzip"
    return Answer(response.status_code, gzip.decompress(body) if is_packed else body, header)


def read_leniently(received, fault):
    header, body = divided(received)
    length = re.search(rb"^Content-Length: *(\d+)", header, re.M | re.I)
    if re.search(rb"^Transfer-Encoding: *chunked", header, re.M | re.I):
        chunks, body = body, b""
        while chunk := re.match(rb"([0-9A-Fa-f]+)\r\n", chunks):
            end = chunk.end() + int(chunk[1], 16)
            body, chunks = body + chunks[chunk.end():end], chunks[end + 2:]
    return Answer(int(header.split(None, 2)[1]), body[:int(length[1])] if length else body, {}, fault)


def divided(text):
    """Header and body where a lenient reader parts them: at the first blank line, whatever ends its lines."""
    return re.match(rb"(.*?)(?:\r?\n\r?\n|\Z)(.*)", text, re.S).groups()
