"""Measures the rows: rows that share their processes or their input are measured together.

Every function returns the ratios of the rounds for each of its rows. The sides of a ratio take turns.
"""

import contextlib
import time

import memory
from programs import Agent, Program, run_rounds
from results import ratios

CLIENTS = 8


class Bench:
    """programs: the folder of the programs; stores: a Stores; sizes: a Sizes."""

    def __init__(self, programs, stores, sizes):
        self.programs = programs
        self.stores = stores
        self.sizes = sizes

    def turns(self, program, cases, rounds=None, warm_ups=1):
        """Runs cases, a dictionary from a name to an argument of the program; returns the numbers of each name."""
        columns = run_rounds([self.programs / program], warm_ups, rounds or self.sizes.rounds, cases.values())
        return dict(zip(cases, columns, strict=True))

    def echo(self, agent):
        return Program([self.programs / "bench_echo", agent.reference])


@contextlib.contextmanager
def agent_and_echo(bench):
    """The references of the managers of an agent and of a bare servant, and of an iterator of the servant."""
    store = bench.stores.store(bench.programs, bench.sizes.nodes, links=bench.sizes.nodes)
    with Agent(bench.programs, store) as agent, bench.echo(agent) as echo:
        yield agent.reference, echo.read_line(), echo.read_line()


def views(bench):
    sizes = bench.sizes
    with agent_and_echo(bench) as (agent, servant, _):
        times = bench.turns("bench_calls", {"echo": f"view={servant}", "view": f"view={agent}",
                                            "walk": f"walk:{sizes.batch}={agent}"}, sizes.short_rounds)
    return {"view_over_echo_100k": ratios(times["view"], times["echo"]),
            "iterate_over_single_100k": ratios(times["walk"], times["view"])}


def clock_links(bench):
    with agent_and_echo(bench) as (agent, servant, _):
        times = bench.turns("bench_calls", {"echo": f"links={servant}", "links": f"links={agent}"},
                            bench.sizes.short_rounds)
    return {"clock_links_over_echo_100k": ratios(times["links"], times["echo"])}


def small_calls(bench):
    sizes = bench.sizes
    with agent_and_echo(bench) as (agent, _, iterator):
        times = bench.turns("bench_calls", {"ping": f"empty:{sizes.calls}={iterator}",
                                            "call": f"capabilities:{sizes.calls}={agent}"}, sizes.call_rounds)
    return {"small_call_over_ping": ratios(times["call"], times["ping"])}


def http(bench):
    store = bench.stores.store(bench.programs, bench.sizes.nodes)
    with Agent(bench.programs, store) as agent, \
            Program([bench.programs / "bench_http", agent.reference]) as server:
        times = bench.turns("bench_calls", {"view": f"view={agent.reference}", "json": f"json={server.read_line()}"})
    return {"http_json_over_corba_100k": ratios(times["json"], times["view"])}


def large_calls(bench):
    """The same as views with the large network."""
    sizes = bench.sizes
    with Agent(bench.programs, bench.stores.store(bench.programs, sizes.large)) as agent, bench.echo(agent) as echo:
        servant = echo.read_line()
        times = bench.turns("bench_calls", {
            "echo": f"view={servant}", "view": f"view={agent.reference}",
            "walk": f"walk:{sizes.batch}={agent.reference}"}, sizes.large_rounds)
    return {"view_over_echo_1m": ratios(times["view"], times["echo"]),
            "iterate_over_single_1m": ratios(times["walk"], times["view"])}


def large_memory(bench):
    """Memory of an agent for its first view: a new agent for every round."""
    store = bench.stores.store(bench.programs, bench.sizes.large)
    peaks, after = [], []
    for _ in range(bench.sizes.large_rounds):
        with Agent(bench.programs, store) as agent:
            pid = agent.process.pid
            time.sleep(1)  # the agent returns the freed memory of its start
            before = memory.resident(pid)
            memory.reset_peak(pid)
            (size,), = bench.turns("bench_calls", {"bytes": f"bytes={agent.reference}"}, 1, warm_ups=0).values()
            time.sleep(1)
            peaks.append((memory.peak(pid) - before) / size)
            after.append(memory.resident(pid) / before)
    return {"peak_over_list_1m": peaks, "memory_after_over_before_1m": after}


def clients(bench):
    """Views per second of one client process, and of several at the same time."""
    sizes = bench.sizes

    def rate(chosen):
        for client in chosen:
            client.write_line(sizes.seconds)
        return sum(float(client.read_line()) for client in chosen)

    with contextlib.ExitStack() as stack:
        agent = stack.enter_context(Agent(bench.programs, bench.stores.store(bench.programs, sizes.batch)))
        running = [stack.enter_context(Program([bench.programs / "bench_rate", agent.reference]))
                   for _ in range(CLIENTS)]
        rates = [(rate(running), rate(running[:1])) for _ in range(sizes.rounds + 1)]
    return {"clients8_over_1": ratios(*zip(*rates[1:]))}


def events(bench):
    """Seconds for each event of a burst."""
    times = bench.turns("bench_events", {case: f"{case}:{bench.sizes.burst}" for case in ("raw", "one", "ten")})
    return {"events_over_raw": ratios(times["raw"], times["one"]),
            "events_10_over_1": ratios([10 * each for each in times["one"]], times["ten"])}


def in_process(row, numerator, denominator, is_large=False):
    """A function that measures a row by two cases of bench_views. A case is formed from the sizes."""
    def measure(bench):
        sizes = bench.sizes
        times = bench.turns("bench_views", {"one": numerator(sizes), "other": denominator(sizes)},
                            sizes.large_rounds if is_large else None)
        return {row: ratios(times["one"], times["other"])}
    measure.__name__ = row
    return measure, {row}


def files(bench):
    """Start of the agent and loading of a network, beside SQLite alone."""
    store = bench.stores.store(bench.programs, bench.sizes.nodes)
    network = bench.stores.network(bench.sizes.nodes, links=0)
    times = bench.turns("bench_stores", {"start": f"start={store}", "read": f"read={store}",
                                         "import": f"import={network}", "insert": f"insert={store}"})
    return {"start_over_read_100k": ratios(times["start"], times["read"]),
            "import_over_insert_100k": ratios(times["import"], times["insert"])}


# Which function measures which rows.
GROUPS = (
    (views, {"view_over_echo_100k", "iterate_over_single_100k"}),
    (clock_links, {"clock_links_over_echo_100k"}),
    (small_calls, {"small_call_over_ping"}),
    (http, {"http_json_over_corba_100k"}),
    (clients, {"clients8_over_1"}),
    (events, {"events_over_raw", "events_10_over_1"}),
    (files, {"start_over_read_100k", "import_over_insert_100k"}),
    in_process("view_scaling", lambda n: f"view:{n.large}", lambda n: f"view:{n.nodes}", is_large=True),
    in_process("below_over_view_100k", lambda n: f"below-forest:{n.nodes}", lambda n: f"view-forest:{n.nodes}"),
    in_process("below_scaling_deep", lambda n: f"below-deep:{2 * n.nodes}/{n.batch}",
               lambda n: f"below-deep:{n.nodes // 5}/{n.batch}"),
    in_process("below_plain_over_ours_20k", lambda n: f"below-plain:{n.nodes // 5}", lambda n: f"below:{n.nodes // 5}"),
    in_process("exclusion_scaling", lambda n: f"exclude:{2 * n.nodes}", lambda n: f"exclude:{n.nodes // 5}"),
    in_process("labels_over_plain_100k", lambda n: f"labels:{n.nodes}", lambda n: f"no-labels:{n.nodes}"),
    (large_memory, {"peak_over_list_1m", "memory_after_over_before_1m"}),
    (large_calls, {"view_over_echo_1m", "iterate_over_single_1m"}),
)
