"""The clients of a soak. Each client is a function that does one round with the agent.

A well-behaved client raises an exception when the agent does not serve it, which ends the run.
"""

import contextlib
import random
import signal
import subprocess
import threading

import giop
from agent import require

MANAGER, CONSOLE = b"TopoManagement", b"TopoAgentConsole"
TOPO_VIEW = "getTopoSubnetworkViewInfo"
ALL = 0xFFFFFFFF
SUBNETWORK = 1
ABANDONED_ITERATORS = 5
DEATH_PAUSE_SECONDS = 0.1  # limits the number of abandoned iterators
CHANGES_OF_A_ROUND = 50


class Counts:
    """The rounds of each client, and the first failure. Thread-safety: any thread."""

    def __init__(self, names):
        self.lock = threading.Lock()
        self.rounds = {name: 0 for name in names}
        self.failure = None

    def add(self, name):
        with self.lock:
            self.rounds[name] += 1

    def fail(self, text):
        with self.lock:
            self.failure = self.failure or text

    def __str__(self):
        with self.lock:
            return ", ".join(f"{name} {count}" for name, count in self.rounds.items())


def how_many(count):
    return lambda encoder: encoder.ulong(count)


def ask(connection, key, operation, arguments):
    connection.sendall(giop.request(key, operation, arguments))
    status, body = giop.reply_status(connection)
    require(status == giop.NO_EXCEPTION, f"{operation} ended with {giop.exception_name(body)}")


def new_node(node, name):
    def write(encoder):
        encoder.string(node)
        encoder.string("top")
        encoder.ulong(SUBNETWORK)  # kind of the parent
        encoder.string(name)
        encoder.ulong(SUBNETWORK)
        encoder.ulong(0)
        encoder.ulong(0)
        encoder.ulong(0)  # attributes
    return write


def texts(*values):
    def write(encoder):
        for value in values:
            encoder.string(value)
    return write


def view(agent, _ended):
    """Reads whole views over one connection."""
    with giop.connect(agent.address) as connection:
        for _ in range(10):
            ask(connection, MANAGER, TOPO_VIEW, how_many(ALL))


def iterate(agent, _ended):
    """Reads a view in parts."""
    status, output = agent.topoctl("--how-many", 100, "topo")
    require(status == 0, output.strip()[-300:])


def change(agent, _ended):
    """Creates, renames and deletes nodes. The network has the same size afterwards."""
    nodes = [f"soak {number}" for number in range(CHANGES_OF_A_ROUND)]
    with giop.connect(agent.address) as connection:
        for node in nodes:
            ask(connection, CONSOLE, "createNode", new_node(node, "created"))
        for node in nodes:
            ask(connection, CONSOLE, "renameNode", texts(node, f"renamed {random.random()}"))
        for node in nodes:
            ask(connection, CONSOLE, "deleteNode", texts(node))


@contextlib.contextmanager
def watching(agent):
    """A topoctl watch that is killed at the end."""
    with subprocess.Popen([agent.programs / "topoctl", "--ior-file", agent.ior_file, "watch"],
                          stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as process:
        try:
            yield process
        finally:
            process.kill()


def watch(agent, ended):
    """Subscribes, receives notifications for a moment, and is killed."""
    with watching(agent) as process:
        ended.wait(random.uniform(0.2, 2))
        require(process.poll() is None, f"topoctl watch ended with status {process.returncode}")


def stop_reading(agent, ended):
    """Subscribes and is stopped, so that the agent drops the subscriber when its queue is full."""
    with watching(agent) as process:
        ended.wait(1)
        process.send_signal(signal.SIGSTOP)
        ended.wait(5)


def die(agent, ended):
    """Ends connections in the middle of a request, before the reply, and with open iterators."""
    ended.wait(DEATH_PAUSE_SECONDS)
    whole = giop.request(MANAGER, TOPO_VIEW, how_many(ALL))
    for length in (1, 20, len(whole) - 1, len(whole)):
        with giop.connect(agent.address) as connection:
            connection.sendall(whole[:length])
    with giop.connect(agent.address) as connection:
        for _ in range(ABANDONED_ITERATORS):
            connection.sendall(giop.request(MANAGER, TOPO_VIEW, how_many(1)))
            giop.read_message(connection)  # may be a refusal: other clients abandon iterators too


def read_slowly(agent, ended):
    """Requests large replies and reads a few octets of them."""
    with giop.connect(agent.address) as connection:
        connection.sendall(giop.request(MANAGER, TOPO_VIEW, how_many(ALL)) * 3)
        with contextlib.suppress(OSError):
            for _ in range(20):
                connection.recv(1000)
                if ended.wait(0.1):
                    break


CLIENTS = [
    ("views", view),
    ("iterators", iterate),
    ("changes", change),
    ("subscribers", watch),
    ("stopped subscribers", stop_reading),
    ("dying clients", die),
    ("slow clients", read_slowly),
]
