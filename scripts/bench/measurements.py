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


def calls(bench):
    """Calls of a client process to an agent and to a bare servant."""
    sizes = bench.sizes
    store = bench.stores.store(bench.programs, sizes.nodes, links=sizes.nodes)
    with Agent(bench.programs, store) as agent, bench.echo(agent) as echo, \
            Program([bench.programs / "bench_http", agent.reference]) as http:
        servant, iterator, port = echo.read_line(), echo.read_line(), http.read_line()
        views = bench.turns("bench_calls", {"echo": f"view={servant}", "view": f"view={agent.reference}",
                                            "walk": f"walk:{sizes.batch}={agent.reference}"}, sizes.short_rounds)
        links = bench.turns("bench_calls", {"echo": f"links={servant}", "links": f"links={agent.reference}"},
                            sizes.short_rounds)
        small = bench.turns("bench_calls", {"ping": f"empty:{sizes.calls}={iterator}",
                                            "call": f"capabilities:{sizes.calls}={agent.reference}"},
                            sizes.call_rounds)
        json = bench.turns("bench_calls", {"view": f"view={agent.reference}", "json": f"json={port}"})
    return {"view_over_echo_100k": ratios(views["view"], views["echo"]),
            "iterate_over_single_100k": ratios(views["walk"], views["view"]),
            "clock_links_over_echo_100k": ratios(links["links"], links["echo"]),
            "small_call_over_ping": ratios(small["call"], small["ping"]),
            "http_json_over_corba_100k": ratios(json["json"], json["view"])}


def large_calls(bench):
    """The same with the large network."""
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
    return {"view_scaling": ratios(large["large"], large["view"]),
            "below_over_view_100k": ratios(times["below"], times["full"]),
            "below_scaling_deep": ratios(times["deep"], times["less deep"]),
            "below_plain_over_ours_20k": ratios(times["plain"], times["walk"]),
            "exclusion_scaling": ratios(times["exclusion"], times["less exclusion"]),
            "labels_over_plain_100k": ratios(times["labels"], times["no labels"])}


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
