"""Measures the rows: rows that share their processes or their input are measured together.

Every function returns the median for each of its rows. The sides of a ratio take turns, and a ratio is formed for
each round.
"""

import statistics
import time

import memory
from programs import Agent, Program, run_rounds
from results import median_ratio

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


def calls(bench):
    """Calls of a client process to an agent and to a bare servant."""
    sizes = bench.sizes
    store = bench.stores.store(bench.programs, sizes.nodes, links=sizes.nodes)
    with Agent(bench.programs, store) as agent, bench.echo(agent) as echo, \
            Program([bench.programs / "bench_http", agent.reference]) as http:
        servant, iterator, port = echo.read_line(), echo.read_line(), http.read_line()
        times = bench.turns("bench_calls", {
            "echo": f"view={servant}", "view": f"view={agent.reference}",
            "walk": f"walk:{sizes.batch}={agent.reference}",
            "echo links": f"links={servant}", "links": f"links={agent.reference}",
            "ping": f"empty:{sizes.calls}={iterator}", "call": f"capabilities:{sizes.calls}={agent.reference}",
            "json": f"json={port}"})
    return {"view_over_echo_100k": median_ratio(times["view"], times["echo"]),
            "iterate_over_single_100k": median_ratio(times["walk"], times["view"]),
            "clock_links_over_echo_100k": median_ratio(times["links"], times["echo links"]),
            "small_call_over_ping": median_ratio(times["call"], times["ping"]),
            "http_json_over_corba_100k": median_ratio(times["json"], times["view"])}


def large_calls(bench):
    """The same with the large network."""
    sizes = bench.sizes
    with Agent(bench.programs, bench.stores.store(bench.programs, sizes.large)) as agent, bench.echo(agent) as echo:
        servant = echo.read_line()
        times = bench.turns("bench_calls", {
            "echo": f"view={servant}", "view": f"view={agent.reference}",
            "walk": f"walk:{sizes.batch}={agent.reference}"}, sizes.large_rounds)
    return {"view_over_echo_1m": median_ratio(times["view"], times["echo"]),
            "iterate_over_single_1m": median_ratio(times["walk"], times["view"])}


def large_memory(bench):
    """Memory of an agent for its first view: a new agent for every round."""
    store = bench.stores.store(bench.programs, bench.sizes.large)
    peaks, after = [], []
    for _ in range(bench.sizes.large_rounds):
        with Agent(bench.programs, store) as agent:
            pid = agent.process.pid
            before = memory.resident(pid)
            memory.reset_peak(pid)
            (size,), = bench.turns("bench_calls", {"bytes": f"bytes={agent.reference}"}, 1, warm_ups=0).values()
            time.sleep(1)
            peaks.append((memory.peak(pid) - before) / size)
            after.append(memory.resident(pid) / before)
    return {"peak_over_list_1m": statistics.median(peaks),
            "memory_after_over_before_1m": statistics.median(after)}


def clients(bench):
    """Views per second of one client process, and of several at the same time."""
    sizes = bench.sizes

    def rate(chosen):
        for client in chosen:
            client.write_line(sizes.seconds)
        return sum(float(client.read_line()) for client in chosen)

    with Agent(bench.programs, bench.stores.store(bench.programs, sizes.batch)) as agent:
        running = [Program([bench.programs / "bench_rate", agent.reference]) for _ in range(CLIENTS)]
        try:
            rates = [(rate(running), rate(running[:1])) for _ in range(sizes.rounds + 1)]
        finally:
            for client in running:
                client.__exit__()
    return {"clients8_over_1": median_ratio(*zip(*rates[1:]))}


def events(bench):
    """Seconds for each event of a burst."""
    times = bench.turns("bench_events", {case: f"{case}:{bench.sizes.burst}" for case in ("raw", "one", "ten")})
    return {"events_over_raw": median_ratio(times["raw"], times["one"]),
            "events_10_over_1": median_ratio([10 * each for each in times["one"]], times["ten"])}


def module(bench):
    """The module in the process of the bench program."""
    n = bench.sizes.nodes
    depth = bench.sizes.batch
    cases = {"full": f"view-forest:{n}", "below": f"below-forest:{n}",
             "deep": f"below-deep:{2 * n}/{depth}", "less deep": f"below-deep:{n // 5}/{depth}",
             "walk": f"below:{n // 5}", "plain": f"below-plain:{n // 5}",
             "exclusion": f"exclude:{2 * n}", "less exclusion": f"exclude:{n // 5}",
             "labels": f"labels:{n}", "no labels": f"no-labels:{n}"}
    times = bench.turns("bench_views", cases)
    large = bench.turns("bench_views", {"view": f"view:{n}", "large": f"view:{bench.sizes.large}"},
                        bench.sizes.large_rounds)
    return {"view_scaling": median_ratio(large["large"], large["view"]),
            "below_over_view_100k": median_ratio(times["below"], times["full"]),
            "below_scaling_deep": median_ratio(times["deep"], times["less deep"]),
            "below_plain_over_ours_20k": median_ratio(times["plain"], times["walk"]),
            "exclusion_scaling": median_ratio(times["exclusion"], times["less exclusion"]),
            "labels_over_plain_100k": median_ratio(times["labels"], times["no labels"])}


def files(bench):
    """Start of the agent and loading of a network, beside SQLite alone."""
    store = bench.stores.store(bench.programs, bench.sizes.nodes)
    network = bench.stores.network(bench.sizes.nodes, links=0)
    times = bench.turns("bench_stores", {"start": f"start={store}", "read": f"read={store}",
                                         "import": f"import={network}", "insert": f"insert={store}"})
    return {"start_over_read_100k": median_ratio(times["start"], times["read"]),
            "import_over_insert_100k": median_ratio(times["import"], times["insert"])}


# Which function measures which rows.
GROUPS = (
    (calls, {"view_over_echo_100k", "iterate_over_single_100k", "clock_links_over_echo_100k", "small_call_over_ping",
             "http_json_over_corba_100k"}),
    (module, {"view_scaling", "below_over_view_100k", "below_scaling_deep", "below_plain_over_ours_20k",
              "exclusion_scaling", "labels_over_plain_100k"}),
    (files, {"start_over_read_100k", "import_over_insert_100k"}),
    (clients, {"clients8_over_1"}),
    (events, {"events_over_raw", "events_10_over_1"}),
    (large_memory, {"peak_over_list_1m", "memory_after_over_before_1m"}),
    (large_calls, {"view_over_echo_1m", "iterate_over_single_1m"}),
)
