"""An agent under attack: started on the loopback, measured from outside, always ended."""

import json
import os
import pathlib
import resource
import shutil
import signal
import subprocess
import tempfile
import threading
import time

READY_SECONDS = 60
STOP_SECONDS = 10


class Failure(Exception):
    """Raised when the agent fails under an attack. The text is the reason."""


def require(condition, text):
    if not condition:
        raise Failure(text)


class Lines(threading.Thread):
    """Reads a stream to its end on a thread, so that its writer never blocks."""

    def __init__(self, stream):
        super().__init__(daemon=True)
        self.stream = stream
        self.data = bytearray()
        self.start()

    def run(self):
        while piece := self.stream.read1(65536):
            self.data += piece


class Agent:
    """topo-agentd in a temporary folder. A context manager: the process never outlives it."""

    def __init__(self, programs, options=(), network=None, environment=None, limits=None,
                 wait=True):
        self.programs = programs
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="topo-abuse-"))
        self.ior_file = self.folder / "manager.ior"
        file = self.folder / "network.json"
        file.write_text(json.dumps(network or small_network(10)))
        command = [programs / "topo-agentd", "--endpoint", "127.0.0.1:0", "--ior-file",
                   self.ior_file, "--store", self.folder / "store.db", "--network", file, *options]
        self.process = subprocess.Popen(
            [str(word) for word in command], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
            env={**os.environ, **(environment or {})},
            preexec_fn=lambda: [resource.setrlimit(which, (value, value))
                                for which, value in (limits or {}).items()])
        self.log = Lines(self.process.stderr)
        self.out = Lines(self.process.stdout)
        self.stopped_in = None
        if wait:
            try:
                self.wait_until_ready()
            except BaseException:
                self.end()
                raise

    def wait_until_ready(self):
        deadline = time.monotonic() + READY_SECONDS
        while b"\n" not in self.out.data:
            require(self.process.poll() is None,
                    f"the agent ended at its start: {self.log_text()[-300:]}")
            require(time.monotonic() < deadline, "the agent was not ready in time")
            time.sleep(0.01)
        endpoint = self.out.data.decode().split("endpoint ")[1].split(",")[0]
        host, port = endpoint.rsplit(":", 1)
        self.address = (host, int(port))

    def __enter__(self):
        return self

    def __exit__(self, *unused):
        self.end()

    def end(self):
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()
        shutil.rmtree(self.folder, ignore_errors=True)

    def stop(self, seconds=STOP_SECONDS):
        """Sends SIGTERM; the agent must end with status 0 within this number of seconds."""
        begin = time.monotonic()
        self.process.send_signal(signal.SIGTERM)
        try:
            status = self.process.wait(seconds)
        except subprocess.TimeoutExpired:
            raise Failure(f"the agent did not stop in {seconds} s") from None
        self.stopped_in = time.monotonic() - begin
        require(status == 0, f"the agent ended with status {status}")
        return self.stopped_in

    def require_alive(self):
        status = self.process.poll()
        require(status is None, f"the agent ended with status {status}: {self.log_text()[-300:]}")

    def log_text(self):
        return self.log.data.decode(errors="backslashreplace")

    def log_octets(self):
        return len(self.log.data)

    def topoctl(self, *words, seconds=20):
        """Runs topoctl against the agent; returns exit status and output."""
        result = subprocess.run(
            [self.programs / "topoctl", "--ior-file", self.ior_file, "--timeout", str(seconds),
             *map(str, words)],
            capture_output=True, timeout=seconds + 20, check=False)
        return result.returncode, result.stdout.decode() + result.stderr.decode()

    def require_serving(self, seconds=20):
        """Requires that a well-behaved client gets its view; returns the duration."""
        self.require_alive()
        begin = time.monotonic()
        status, output = self.topoctl("--how-many", 5, "capabilities", seconds=seconds)
        require(status == 0, f"a client is not served: {output.strip()[-300:]}")
        return time.monotonic() - begin

    def status_field(self, name):
        for line in pathlib.Path(f"/proc/{self.process.pid}/status").read_text().splitlines():
            if line.startswith(name + ":"):
                return int(line.split()[1])
        raise Failure(f"/proc has no {name} of the agent")

    def resident_mib(self):
        return self.status_field("VmRSS") / 1024

    def peak_mib(self):
        return self.status_field("VmHWM") / 1024

    def threads(self):
        return self.status_field("Threads")

    def processor_seconds(self):
        fields = pathlib.Path(f"/proc/{self.process.pid}/stat").read_text().rsplit(")", 1)[1].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")

    def listening_ports(self):
        """The TCP ports on which the agent listens."""
        mine = set()
        for descriptor in pathlib.Path(f"/proc/{self.process.pid}/fd").iterdir():
            try:
                mine.add(os.readlink(descriptor))
            except OSError:
                pass
        ports = set()
        for table in ("tcp", "tcp6"):
            for line in pathlib.Path(f"/proc/net/{table}").read_text().splitlines()[1:]:
                words = line.split()
                if words[3] == "0A" and f"socket:[{words[9]}]" in mine:
                    ports.add(int(words[1].rsplit(":", 1)[1], 16))
        return ports


def small_network(nodes):
    """One subnetwork with elements below it."""
    topo_nodes = [{"id": "top", "parent": "QNMAP_PHY_SUBMAP", "name": "Top"}]
    topo_nodes += [{"id": f"NE={number}", "parent": "top", "name": f"Element {number}", "type": 1}
                   for number in range(1, nodes + 1)]
    return {"format": "topo-network/1", "ems": "Abused", "topoNodes": topo_nodes}
