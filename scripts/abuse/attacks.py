"""The attacks. Each attack starts its own agents, and raises Failure or returns a text with its cost."""

import concurrent.futures
import contextlib
import itertools
import json
import resource
import signal
import socket
import struct
import subprocess
import tempfile
import threading
import time

import giop
from agent import Agent, Failure, require, small_network

MANAGER, CONSOLE, SESSION = b"TopoManagement", b"TopoAgentConsole", b"TopoAgentSession"
CONSUMER = "IDL:omg.org/CosNotifyComm/StructuredPushConsumer:1.0"
TOPO_VIEW = "getTopoSubnetworkViewInfo"
MIB = 1 << 20

RELOAD_SECONDS = 5

# The timeout of an incomplete message, and the tolerance of the check on a busy machine.
MESSAGE_SECONDS = 60
SCAN_SECONDS = 15


def how_many(count):
    return lambda encoder: encoder.ulong(count)


def subscribe_arguments(host, port, key=b"nobody"):
    def write(encoder):
        giop.reference(encoder, CONSUMER, host, port, key)
        encoder.string("")
    return write


def closed_port():
    """Returns a loopback port without a listening process."""
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def is_closed(connection):
    """Whether the peer has closed the connection. Does not block."""
    connection.setblocking(False)
    try:
        while True:
            if not connection.recv(65536):
                return True
    except BlockingIOError:
        return False
    except OSError:
        return True


def ask_in_a_loop(address, until):
    """One connection that calls _non_existent of the manager in a loop."""
    with contextlib.suppress(OSError):
        with giop.connect(address, 5) as connection:
            while not until.is_set():
                connection.sendall(giop.request(MANAGER, "_non_existent"))
                giop.read_message(connection)


def stops_under_traffic(programs):
    """Six connections send requests without a pause while SIGTERM arrives."""
    stops, worst = 15, 0.0
    for _ in range(stops):
        ended = threading.Event()
        with Agent(programs, environment={"MALLOC_PERTURB_": "165"}) as agent:
            with concurrent.futures.ThreadPoolExecutor(6) as pool:
                for _ in range(6):
                    pool.submit(ask_in_a_loop, agent.address, ended)
                time.sleep(0.1)
                try:
                    worst = max(worst, agent.stop())
                finally:
                    ended.set()
    return f"{stops} stops, the longest {worst:.2f} s"


def stalled_clients(agent):
    """Connections with incomplete requests, and connections that do not read a large reply."""
    whole = giop.request(MANAGER, TOPO_VIEW, how_many(0xFFFFFFFF))
    stalled = []
    for _ in range(5):
        half = giop.connect(agent.address)
        half.sendall(whole[:-2])
        deaf = socket.socket()
        deaf.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
        deaf.settimeout(20)
        deaf.connect(agent.address)
        deaf.sendall(whole)
        deaf.recv(1, socket.MSG_PEEK)  # waits for the first octet of the reply
        stalled += [half, deaf]
    return stalled


def stalled_clients_and_reload(programs):
    """A reload, other clients, and a stop beside clients that stall."""
    with Agent(programs, network=small_network(30000)) as agent, contextlib.ExitStack() as open_ones:
        for connection in stalled_clients(agent):
            open_ones.enter_context(connection)
        begin = time.monotonic()
        status, output = agent.topoctl("module", "reload", seconds=70)
        reload_seconds = time.monotonic() - begin
        require(status == 0, f"the reload failed: {output.strip()}")
        require(reload_seconds < RELOAD_SECONDS, f"the reload took {reload_seconds:.1f} s")
        served = agent.require_serving()
        for connection in stalled_clients(agent):
            open_ones.enter_context(connection)
        stop_seconds = agent.stop()
    return f"reload {reload_seconds:.2f} s, next client {served:.2f} s, stop {stop_seconds:.2f} s"


def incomplete_messages(programs):
    """One octet, half a header, and a body that is ten octets short."""
    whole = giop.request(MANAGER, TOPO_VIEW, how_many(5))
    with Agent(programs) as agent, contextlib.ExitStack() as open_ones:
        connections = []
        for piece in (whole[:1], whole[:6], whole[:-10]):
            connection = open_ones.enter_context(giop.connect(agent.address))
            connection.sendall(piece)
            connections.append(connection)
        begin = time.monotonic()
        while not all(map(is_closed, connections)):
            require(time.monotonic() - begin < MESSAGE_SECONDS + SCAN_SECONDS,
                    f"an incomplete message keeps its connection over {MESSAGE_SECONDS} s")
            time.sleep(0.25)
        spent = time.monotonic() - begin
        agent.require_serving()
        agent.stop()
    return f"the last connection ended after {spent:.0f} s"


def idle_connections(programs):
    """5,000 connections that send nothing."""
    with Agent(programs) as agent, contextlib.ExitStack() as open_ones:
        soft, hard = resource.getrlimit(resource.RLIMIT_NOFILE)
        wanted = min(5000, hard - 100)
        resource.setrlimit(resource.RLIMIT_NOFILE, (max(soft, wanted + 100), hard))
        before = agent.resident_mib()
        connections = []
        for number in range(wanted):
            source = f"127.0.1.{number % 250 + 1}"
            with contextlib.suppress(OSError):
                connections.append(open_ones.enter_context(giop.connect(agent.address, 5, source)))
        threads = agent.threads()
        require(threads < 1500, f"{wanted} idle connections make {threads} threads")
        cost = f"{wanted} connections: {threads} threads, +{agent.resident_mib() - before:.0f} MiB"
        agent.require_alive()
        for connection in connections:
            connection.close()
        wait_until_served(agent)
        agent.stop()
    return cost


def wait_until_served(agent, seconds=20):
    """After a flood of connections has ended, the agent accepts connections within this number of seconds."""
    deadline = time.monotonic() + seconds
    while True:
        try:
            return agent.require_serving(5)
        except Failure:
            if time.monotonic() > deadline:
                raise
            time.sleep(0.2)


def few_descriptors(programs):
    """300 connections with a limit of 128 descriptors."""
    limits = {resource.RLIMIT_NOFILE: 128}
    with Agent(programs, limits=limits) as agent, contextlib.ExitStack() as open_ones:
        connections = []
        for _ in range(300):
            with contextlib.suppress(OSError):
                connections.append(open_ones.enter_context(giop.connect(agent.address, 5)))
        connections[0].sendall(giop.request(MANAGER, "_non_existent"))
        require(giop.reply_status(connections[0])[0] == giop.NO_EXCEPTION,
                "an admitted client is not served")
        before = agent.processor_seconds()
        time.sleep(2)
        busy = agent.processor_seconds() - before
        require(busy < 0.5, f"refusing connections takes {busy / 2:.0%} of a core")
        require(agent.log_octets() > 0, "the log does not say that connections are refused")
        require(agent.log_octets() < 4096, f"the log has {agent.log_octets()} octets about it")
        for connection in connections:
            connection.close()
        wait_until_served(agent)
        agent.stop()
    return f"{busy / 2:.0%} of a core, {agent.log_octets()} octets of log"


def stop_during_start(programs):
    """SIGTERM while a naming service does not answer; SIGHUP; a full pipe as standard error."""
    with socket.create_server(("127.0.0.1", 0)) as silent:
        naming = f"corbaloc::127.0.0.1:{silent.getsockname()[1]}/NameService"
        with Agent(programs, options=["--naming", naming], wait=False) as agent:
            silent.settimeout(20)
            with silent.accept()[0]:
                stopped = agent.stop(5)
    with Agent(programs) as agent:
        agent.process.send_signal(signal.SIGHUP)
        agent.require_serving()
        agent.stop()
    return f"stopped {stopped:.2f} s after SIGTERM"


def full_standard_error(programs):
    """Thousands of log lines to a standard error without a reader, then SIGTERM."""
    with Agent(programs, options=["--log-level", "3"]) as agent:
        # A second agent, whose standard error is a pipe without a reader.
        command = [str(programs / "topo-agentd"), "--endpoint", "127.0.0.1:0", "--log-level", "3",
                   "--store", str(agent.folder / "deaf.db"), "--network",
                   str(agent.folder / "network.json"), "--ior-file", str(agent.folder / "deaf.ior")]
        with subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE) as deaf:
            try:
                line = deaf.stdout.readline().decode()
                host, port = line.split("endpoint ")[1].split(",")[0].rsplit(":", 1)
                with giop.connect((host, int(port))) as connection:
                    for _ in range(2000):
                        connection.sendall(giop.request(MANAGER, TOPO_VIEW, how_many(1)))
                        giop.read_message(connection)
                begin = time.monotonic()
                deaf.terminate()
                require(deaf.wait(10) == 0, f"the agent ended with status {deaf.returncode}")
                return f"stopped {time.monotonic() - begin:.2f} s after SIGTERM"
            except subprocess.TimeoutExpired:
                raise Failure("the agent does not stop while nobody reads its log") from None
            finally:
                deaf.kill()


def huge_sequence():
    """The beginning of a request that declares 64 MiB and a sequence of 60,000,000 elements."""
    def arguments(encoder):
        encoder.ulong(60000000)
        encoder.data += bytes(8192)
    return giop.request(MANAGER, "setAdditionalInfo", arguments, declared=64 * MIB)


def huge_sequence_length(programs):
    """A message that declares 64 MiB and a sequence of 60,000,000 elements, 8 KiB of it sent."""
    message = huge_sequence()
    with Agent(programs) as agent, contextlib.ExitStack() as open_ones:
        before = agent.resident_mib()
        for _ in range(4):
            connection = open_ones.enter_context(giop.connect(agent.address))
            with contextlib.suppress(OSError):
                connection.sendall(message)
        agent.require_serving()
        grown = agent.peak_mib() - before
        require(grown < 64, f"32 KiB of requests take {grown:.0f} MiB")
        stop_seconds = agent.stop()
    return f"4 requests: +{grown:.0f} MiB, stop {stop_seconds:.2f} s"


def many_service_contexts(programs):
    """A request of the size of an import, full of service contexts."""
    count = 4 * MIB

    def contexts(encoder):
        encoder.data += bytes(8 * count)
    message = giop.request(CONSOLE, "importNetwork", contexts, contexts=count)
    with Agent(programs) as agent:
        before = agent.resident_mib()
        with giop.connect(agent.address) as connection, contextlib.suppress(OSError):
            connection.sendall(message)
            giop.read_message(connection)
        agent.require_serving()
        grown = agent.peak_mib() - before
        require(grown < 128, f"{len(message) // MIB} MiB of contexts take {grown:.0f} MiB")
        agent.stop()
    return f"a request of {len(message) // MIB} MiB: +{grown:.0f} MiB"


def iterators(programs):
    """1,000 iterators on a large view, over as many connections as necessary."""
    with Agent(programs, network=small_network(100000)) as agent:
        before = agent.resident_mib()
        view = giop.request(MANAGER, TOPO_VIEW, how_many(1))
        granted = 0
        with giop.connect(agent.address, 60) as connection:
            begin = time.monotonic()
            for _ in range(60):
                connection.sendall(view)
                granted += giop.reply_status(connection)[0] == giop.NO_EXCEPTION
        grown = agent.peak_mib() - before
        require(grown < 1600, f"{granted} iterators of 100,000 nodes hold {grown:.0f} MiB")
        agent.require_serving()
        agent.stop()
    return f"{granted} of 60 granted, +{grown:.0f} MiB, {time.monotonic() - begin:.1f} s"


def pipelined_views(programs):
    """100 concurrent requests for a view; the clients do not read the replies."""
    with Agent(programs, network=small_network(20000)) as agent, contextlib.ExitStack() as open_ones:
        before = agent.resident_mib()
        view = giop.request(MANAGER, TOPO_VIEW, how_many(0xFFFFFFFF))
        for _ in range(10):
            connection = open_ones.enter_context(giop.connect(agent.address))
            connection.sendall(view * 10)
        time.sleep(2)
        grown = agent.peak_mib() - before
        require(grown < 512, f"100 views at once take {grown:.0f} MiB")
        agent.require_serving(10)
        agent.stop()
    return f"+{grown:.0f} MiB"


def additional_information(programs):
    """100 requests of a few octets with replies of 15 MB; the clients do not read the replies."""
    def pairs(*texts):
        def write(encoder):
            encoder.ulong(2)
            for text in ("EMS", "Abused", "TopoSubnetwork", "top"):
                encoder.string(text)
            encoder.ulong(len(texts))
            for number, text in texts:
                encoder.string(str(number))
                encoder.string(text)
        return giop.request(MANAGER, "setAdditionalInfo", write)
    with Agent(programs) as agent, contextlib.ExitStack() as open_ones:
        with giop.connect(agent.address) as connection:
            for number in range(15):
                connection.sendall(pairs((number, "x" * 1000000)))
                require(giop.reply_status(connection)[0] == giop.NO_EXCEPTION, "cannot be stored")
        before = agent.resident_mib()
        for _ in range(25):
            connection = open_ones.enter_context(giop.connect(agent.address))
            connection.sendall(pairs() * 4)
        time.sleep(5)
        grown = agent.peak_mib() - before
        require(grown < 800, f"replies that nobody reads take {grown:.0f} MiB")
        agent.require_serving()
        agent.stop()
    return f"+{grown:.0f} MiB"


def queued_notifications(programs):
    """An event channel that does not answer while names of nearly 1 MiB change."""
    channel = f"corbaloc:iiop:1.2@127.0.0.1:{closed_port()}/Channel"
    with Agent(programs, options=["--event-channel", channel]) as agent:
        before = agent.resident_mib()
        with giop.connect(agent.address) as console:
            for number in range(200):
                def rename(encoder, name=str(number % 10) * 900000):
                    encoder.string("top")
                    encoder.string(name)
                console.sendall(giop.request(CONSOLE, "renameNode", rename))
                giop.read_message(console)
        grown = agent.peak_mib() - before
        require(grown < 96, f"200 notifications that wait hold {grown:.0f} MiB")
        agent.require_serving()
        agent.stop()
    return f"+{grown:.0f} MiB"


def long_references(programs):
    """Consumers whose references name hosts of 700 KB."""
    with Agent(programs) as agent, giop.connect(agent.address) as connection:
        before = agent.resident_mib()
        granted = 0
        for _ in range(50):
            connection.sendall(giop.request(SESSION, "subscribe",
                                            subscribe_arguments("h" * 700000, 1)))
            granted += giop.reply_status(connection)[0] == giop.NO_EXCEPTION
        require(granted == 0, f"{granted} references of 700 KB are kept")
        grown = agent.peak_mib() - before
        status, output = agent.topoctl("status")
        require(status == 0, f"getStatus fails: {output.strip()[-200:]}")
        agent.stop()
    return f"none of 50 kept, +{grown:.0f} MiB, {agent.log_octets()} octets of log"


def views_without_memory(programs):
    """40 views of 20,000 nodes with an address space of 400 MB."""
    limits = {resource.RLIMIT_AS: 400000 * 1024}
    view = giop.request(MANAGER, TOPO_VIEW, how_many(0xFFFFFFFF))

    def ask(agent):
        try:
            with giop.connect(agent.address, 60) as connection:
                connection.sendall(view)
                status, body = giop.reply_status(connection)
                return giop.exception_name(body) if status else "view"
        except OSError:
            return "no reply"
    with Agent(programs, network=small_network(20000), limits=limits) as agent:
        with concurrent.futures.ThreadPoolExecutor(40) as pool:
            answers = list(pool.map(ask, [agent] * 40))
        agent.require_alive()
        agent.require_serving()
        agent.stop()
    counts = {answer: answers.count(answer) for answer in sorted(set(answers))}
    return ", ".join(f"{count} {answer}" for answer, count in counts.items())


def log_of_a_short_memory(programs):
    """The huge sequence with an address space of 900 MB: measures the growth of the log."""
    message = huge_sequence()
    with Agent(programs, limits={resource.RLIMIT_AS: 900000 * 1024}) as agent:
        with giop.connect(agent.address) as connection:
            with contextlib.suppress(OSError):
                connection.sendall(message)
            time.sleep(3)
            octets = agent.log_octets()
        require(octets < 65536, f"one request makes {octets} octets of log")
        agent.require_serving()
        agent.stop()
    return f"{octets} octets of log"


def colliding_numbers(programs):
    """Element numbers that share a bucket of a table with 42,043 buckets."""
    def network(step):
        elements = [{"number": step * (index + 1)} for index in range(40000)]
        return {"format": "topo-network/1", "ems": "Abused", "networkElements": elements}
    spent = []
    for step in (1, 42043):
        begin = time.monotonic()
        with Agent(programs, network=network(step)) as agent:
            spent.append(time.monotonic() - begin)
            agent.stop()
    require(spent[1] < 3 * spent[0] + 1,
            f"40,000 colliding numbers take {spent[1]:.1f} s instead of {spent[0]:.1f} s")
    return f"{spent[1]:.2f} s, and {spent[0]:.2f} s for numbers that do not collide"


def graphml_keys(programs):
    """20,000 GraphML keys for the label of nodes, and 20,000 nodes with the last key."""
    keys = "".join(f'<key id="k{n}" for="node" attr.name="label"/>' for n in range(20000))
    nodes = "".join(f'<node id="n{n}"><data key="k19999">x</data></node>' for n in range(20000))
    with Agent(programs, network=small_network(0)) as agent:
        file = agent.folder / "keys.graphml"
        file.write_text(f'<graphml xmlns="http://graphml.graphdrawing.org/xmlns">{keys}'
                        f'<graph edgedefault="undirected">{nodes}</graph></graphml>')
        begin = time.monotonic()
        status, output = agent.topoctl("import", file, seconds=60)
        require(status == 0, f"the import failed: {output.strip()[-200:]}")
        spent = time.monotonic() - begin
        require(spent < 5, f"the import of 20,000 keys took {spent:.1f} s")
        agent.require_serving()
        agent.stop()
    return f"{spent:.2f} s"


def stop_during_import(programs):
    """SIGTERM while a large network is imported."""
    with Agent(programs) as agent:
        file = agent.folder / "large.json"
        network = small_network(0)
        network["topoNodes"] = [{"id": f"s{n}", "name": f"Node {n}"} for n in range(1000000)]
        file.write_text(json.dumps(network))
        importer = subprocess.Popen(
            [programs / "topoctl", "--ior-file", agent.ior_file, "--timeout", "100", "import", file],
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        try:
            begin = time.monotonic()
            before = agent.processor_seconds()
            while agent.processor_seconds() - before < 0.3 and time.monotonic() - begin < 20:
                time.sleep(0.01)
            stop_seconds = agent.stop()
        finally:
            importer.kill()
            importer.wait()
    return f"stop {stop_seconds:.2f} s"


def dead_subscribers(programs):
    """One client uses up its subscriptions with dead references; another client subscribes."""
    with Agent(programs) as agent:
        port = closed_port()
        granted = 0
        with giop.connect(agent.address, source="127.0.0.9") as connection:
            for number in range(1200):
                connection.sendall(giop.request(SESSION, "subscribe", subscribe_arguments(
                    "127.0.0.1", port, str(number).encode())))
                granted += giop.reply_status(connection)[0] == giop.NO_EXCEPTION
        with socket.create_server(("127.0.0.1", 0)) as consumer:
            status, _ = giop.call(agent.address, SESSION, "subscribe", subscribe_arguments(
                "127.0.0.1", consumer.getsockname()[1]))
        require(status == giop.NO_EXCEPTION, "another client cannot subscribe any more")
        agent.require_serving()
        agent.stop()
    return f"{granted} of 1200 dead references taken, another client subscribed"


def subscription_key(body):
    """Returns the object key in the first profile of the reply to a subscription."""
    position = body.index(b"IDL:TopoAgent/Subscription_I")
    begin = body.index(b"127.0.0.1\0", position) + len("127.0.0.1") + 1
    begin += begin % 2  # the port
    begin = (begin - position) + position + 2
    begin += -(begin - body.index(b"\x01\x01\x02", position) + 1) % 4
    length = struct.unpack("<I", body[begin:begin + 4])[0]
    return body[begin + 4:begin + 4 + length]


def guessed_keys(programs):
    """A client guesses object keys next to its own, to end the subscription of another client."""
    with Agent(programs) as agent, socket.create_server(("127.0.0.1", 0)) as consumer:
        arguments = subscribe_arguments("127.0.0.1", consumer.getsockname()[1])
        _, other = giop.call(agent.address, SESSION, "subscribe", arguments)
        _, mine = giop.call(agent.address, SESSION, "subscribe", arguments)
        keys = subscription_key(other), subscription_key(mine)
        differing = sum(a != b for a, b in zip(*keys))
        require(len(keys[0]) >= 16 and differing >= 8,
                f"keys of two subscriptions differ in {differing} octets only")
        agent.stop()
    return f"two keys of {len(keys[0])} octets differ in {differing}"


def log_injection(programs):
    """A consumer whose host name contains escape sequences, line ends and invalid UTF-8."""
    host = "x\x1b[2J\x1b]0;owned\x07\ny\u202e\u0085z".encode() + b"\xff\xc3("
    with Agent(programs, options=["--log-level", "3"]) as agent:
        giop.call(agent.address, SESSION, "subscribe", subscribe_arguments(host, 1))
        deadline = time.monotonic() + 10
        while "owned" not in agent.log_text() and time.monotonic() < deadline:
            agent.topoctl("node", "rename", "top", "New")
            time.sleep(0.1)
        status, output = agent.topoctl("status")
        agent.stop()
        shown = bytes(agent.log.data)
        for octets in (b"\x1b", b"\x07", "\u202e".encode(), "\u0085".encode()):
            require(octets not in shown, f"the log carries {octets!r} as the client sent it")
            require(octets not in output.encode(), f"topoctl status prints {octets!r}")
        shown.decode()
        require(rb"\xff" in shown, "the log does not show an octet that is no UTF-8")
    return f"status {status}, {len(shown)} octets of log, all of them printable"


def requests_without_a_role(programs):
    """A client without a role sends every kind of request to every kind of key, whole and damaged."""
    keys = [MANAGER, CONSOLE, SESSION, CONSOLE + b"\0", b"", b"\0", b"\xff", b"\xfe\0", b"INIT"]
    operations = ["_is_a", "_non_existent", "_interface", "_component", "getCapabilities", "getStatus",
                  "deleteNode", "reloadModule", "subscribe", "next_n", "", "x" * 100000]
    stranger = "127.0.0.2"
    refused = 0
    with contextlib.ExitStack() as stack:
        rules = stack.enter_context(tempfile.NamedTemporaryFile("w", suffix=".rules"))
        rules.write("address 127.0.0.1 read operate\n")
        rules.flush()
        agent = stack.enter_context(Agent(programs, options=["--access", rules.name]))
        for key, operation in itertools.product(keys, operations):
            whole = giop.request(key, operation)
            with giop.connect(agent.address, source=stranger) as connection:
                connection.sendall(whole)
                status, body = giop.reply_status(connection)
                name = giop.exception_name(body)
                require(name == "NO_PERMISSION", f"{operation[:20]} of {key} answers {status} {name}")
                refused += 1
            body = whole[giop.HEADER_OCTETS:giop.HEADER_OCTETS + len(whole) % 60]
            with giop.connect(agent.address, source=stranger) as connection:
                connection.sendall(giop.header(len(body)) + body)
        served = agent.require_serving()
        require(len(agent.log_text().splitlines()) < 200, "the log has a line for every request")
        agent.stop()
    return f"{refused} requests refused, another client is served in {served:.2f} s"


def second_endpoint(programs):
    """Settings of the ORB in the environment that ask for another endpoint."""
    port = closed_port()
    environment = {"ORBendPoint": f"giop:tcp:127.0.0.1:{port}",
                   "ORBendPointPublish": "giop:tcp:192.0.2.1:1"}
    with Agent(programs, environment=environment) as agent:
        ports = agent.listening_ports()
        require(ports == {agent.address[1]}, f"the agent listens on {sorted(ports)}")
        agent.require_serving()
        agent.stop()
    return "one listening port"


def send_until(address, end, first, repeated):
    """Sends `first`, then `repeated` without a pause until `end`."""
    with contextlib.suppress(OSError), giop.connect(address, 5) as connection:
        connection.sendall(first)
        while time.monotonic() < end:
            connection.sendall(repeated)


def short_fragments(programs):
    """100 connections send empty fragments."""
    fragment = giop.header(4, giop.FRAGMENT, more=True) + struct.pack("<I", 1)
    message = giop.request(MANAGER, "_non_existent")[:40]
    begin = giop.header(len(message) - giop.HEADER_OCTETS, more=True)
    begin += message[giop.HEADER_OCTETS:]
    with Agent(programs) as agent:
        end = time.monotonic() + 4
        with concurrent.futures.ThreadPoolExecutor(100) as pool:
            for _ in range(100):
                pool.submit(send_until, agent.address, end, begin, fragment * 4000)
            time.sleep(1)
            served = agent.require_serving()
        require(served < 5, f"a client waits for {served:.1f} s")
        wait_until_served(agent)
        agent.stop()
    return f"a client waits for {served:.2f} s"


# Name and function of each attack. The slow attack runs in parallel with the others.
IN_THE_BACKGROUND = [("incomplete messages", incomplete_messages)]
ATTACKS = [
    ("stop under traffic", stops_under_traffic),
    ("clients that stall", stalled_clients_and_reload),
    ("idle connections", idle_connections),
    ("few descriptors", few_descriptors),
    ("stop during start", stop_during_start),
    ("full standard error", full_standard_error),
    ("huge sequence length", huge_sequence_length),
    ("service contexts", many_service_contexts),
    ("iterators", iterators),
    ("pipelined views", pipelined_views),
    ("additional information", additional_information),
    ("queued notifications", queued_notifications),
    ("short fragments", short_fragments),
    ("long references", long_references),
    ("views without memory", views_without_memory),
    ("log of a short memory", log_of_a_short_memory),
    ("colliding numbers", colliding_numbers),
    ("GraphML keys", graphml_keys),
    ("stop during import", stop_during_import),
    ("dead subscribers", dead_subscribers),
    ("guessed keys", guessed_keys),
    ("log injection", log_injection),
    ("requests without a role", requests_without_a_role),
    ("second endpoint", second_endpoint),
]
