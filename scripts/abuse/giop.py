"""Encoder and parser of the GIOP 1.2 messages that the attacks send, malformed messages included.

Everything is little-endian. Positions in a message count from its first octet, so that an encoder
starts where the header ends. The layout is that of chapter 9 of the OMG CORBA 3.3 standard, part 2.
"""

import socket
import struct

REQUEST, REPLY, FRAGMENT = 0, 1, 7
NO_EXCEPTION, USER_EXCEPTION, SYSTEM_EXCEPTION = 0, 1, 2
HEADER_OCTETS = 12
LITTLE_ENDIAN = 1
MORE_FRAGMENTS = 2

# A client that sends no code set is one of ISO 8859-1; this service context asks for UTF-8.
CODE_SETS = 1
UTF_8, UTF_16 = 0x05010001, 0x00010109


class Encoder:
    """CDR. `start` is the position of the first octet in its message or encapsulation."""

    def __init__(self, start=0):
        self.start = start
        self.data = bytearray()

    def align(self, size):
        self.data += bytes(-(self.start + len(self.data)) % size)

    def octet(self, value):
        self.data.append(value)

    def ushort(self, value):
        self.align(2)
        self.data += struct.pack("<H", value)

    def ulong(self, value):
        self.align(4)
        self.data += struct.pack("<I", value)

    def octets(self, value):
        self.ulong(len(value))
        self.data += value

    def string(self, value):
        """A string in UTF-8, or octets without conversion."""
        self.octets((value if isinstance(value, bytes) else value.encode()) + b"\0")


def code_set_context():
    body = Encoder()
    body.octet(LITTLE_ENDIAN)
    body.ulong(UTF_8)
    body.ulong(UTF_16)
    return bytes(body.data)


def header(size, kind=REQUEST, more=False):
    flags = LITTLE_ENDIAN | (MORE_FRAGMENTS if more else 0)
    return b"GIOP\x01\x02" + bytes((flags, kind)) + struct.pack("<I", size)


def request(key, operation, arguments=None, number=1, declared=None, contexts=1):
    """A request with a reply. `arguments` writes to an encoder; `declared` overrides the size.

    `contexts` overrides the number of service contexts; one is written.
    """
    body = Encoder(HEADER_OCTETS)
    body.ulong(number)
    body.octet(3)  # reply expected
    body.data += bytes(3)
    body.ushort(0)  # the target is an object key
    body.octets(key)
    body.string(operation)
    body.ulong(contexts)
    body.ulong(CODE_SETS)
    body.octets(code_set_context())
    if arguments:
        body.align(8)
        arguments(body)
    return header(len(body.data) if declared is None else declared) + bytes(body.data)


def reference(encoder, type_id, host, port, key):
    """An object reference with one IIOP 1.2 profile."""
    profile = Encoder()
    profile.octet(LITTLE_ENDIAN)
    profile.octet(1)
    profile.octet(2)
    profile.string(host)
    profile.ushort(port)
    profile.octets(key)
    profile.ulong(0)  # components
    encoder.string(type_id)
    encoder.ulong(1)
    encoder.ulong(0)  # TAG_INTERNET_IOP
    encoder.octets(bytes(profile.data))


def read_octets(connection, count):
    data = bytearray()
    while len(data) < count:
        piece = connection.recv(min(count - len(data), 1 << 20))
        if not piece:
            raise ConnectionError("the connection ended within a message")
        data += piece
    return bytes(data)


def read_message(connection):
    """Returns the type and the body of the next message, with joined fragments."""
    body = b""
    kind = None
    while True:
        head = read_octets(connection, HEADER_OCTETS)
        order = "<" if head[6] & 1 else ">"
        piece = read_octets(connection, struct.unpack(order + "I", head[8:12])[0])
        if kind is None:
            kind = head[7]
            body = piece
        else:
            body += piece[4:]  # a fragment begins with its request id
        if not head[6] & 2:
            return kind, body, order


def reply_status(connection):
    """Returns the status of the next reply (NO_EXCEPTION, USER_EXCEPTION or SYSTEM_EXCEPTION) and its body."""
    kind, body, order = read_message(connection)
    if kind != REPLY:
        raise ConnectionError(f"message kind {kind} in place of a reply")
    return struct.unpack(order + "I", body[4:8])[0], body


def exception_name(body):
    """Returns the last part of the repository id of the exception in a reply."""
    begin = body.find(b"IDL:")
    if begin < 0:
        return "none"
    return body[begin:body.index(b":", begin + 4)].split(b"/")[-1].decode()


def connect(address, timeout=30.0, source="127.0.0.1"):
    return socket.create_connection(address, timeout=timeout, source_address=(source, 0))


def call(address, key, operation, arguments=None, timeout=30.0):
    """Sends one request over a new connection."""
    with connect(address, timeout) as connection:
        connection.sendall(request(key, operation, arguments))
        return reply_status(connection)
