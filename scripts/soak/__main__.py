"""soak BIN HOURS: runs the agent in the folder BIN under a mix of clients and judges its use of the system.

Needs scripts/abuse on the path of modules, for its agent and its messages.
"""

import pathlib
import signal
import sys
import threading
import time

from agent import Agent, Failure, small_network
from clients import CLIENTS, Counts
from flatness import Sample, growth, judged, settled

NODES = 2000
INTERVAL_SECONDS = 10
WARM_UP_SECONDS = 300
ITERATOR_SECONDS = 5  # abandoned iterators end after this time
LEAST_SAMPLES = 30


def descriptors(agent):
    return len(list(pathlib.Path(f"/proc/{agent.process.pid}/fd").iterdir()))


def sample(agent, begin):
    agent.require_alive()
    return Sample(time.monotonic() - begin, agent.resident_mib(), descriptors(agent), agent.threads())


def start_clients(agent, ended, counts):
    """One thread for each client; a failure of a client ends the run."""
    def run(name, client):
        try:
            while not ended.is_set():
                client(agent, ended)
                counts.add(name)
        except Exception as failure:  # reported below
            if not ended.is_set():
                counts.fail(f"{name}: {type(failure).__name__}: {failure}")
                ended.set()
    threads = [threading.Thread(target=run, args=client) for client in CLIENTS]
    for thread in threads:
        thread.start()
    return threads


def observe(agent, seconds, ended, counts):
    """Prints and returns samples until the end of the run."""
    begin = time.monotonic()
    interval = min(INTERVAL_SECONDS, seconds / LEAST_SAMPLES)
    samples = []
    while not ended.wait(max(0.0, begin + len(samples) * interval - time.monotonic())):
        samples.append(sample(agent, begin))
        print(f"{samples[-1]}  {counts}", flush=True)
        if samples[-1].seconds >= seconds:
            break
    return samples


def soak(programs, seconds):
    """Returns the samples after the warm-up. Raises Failure."""
    ended = threading.Event()
    signal.signal(signal.SIGINT, lambda *_: ended.set())
    signal.signal(signal.SIGTERM, lambda *_: ended.set())
    counts = Counts(name for name, _ in CLIENTS)
    options = ["--iterator-timeout", ITERATOR_SECONDS]
    with Agent(programs, options=options, network=small_network(NODES)) as agent:
        threads = start_clients(agent, ended, counts)
        try:
            samples = observe(agent, seconds, ended, counts)
        finally:
            ended.set()
            for thread in threads:
                thread.join()
        if counts.failure:
            raise Failure(counts.failure)
        agent.require_serving()
        agent.stop()
    return settled(samples, min(WARM_UP_SECONDS, seconds / 10))


def main():
    try:
        seconds = float(sys.argv[2]) * 3600
        if not seconds > 0:
            raise ValueError
    except ValueError:
        print(f"soak: {sys.argv[2]} is not a number of hours", file=sys.stderr)
        return 2
    try:
        samples = soak(pathlib.Path(sys.argv[1]).resolve(), seconds)
        problems = growth(samples)
    except Failure as failure:
        problems = [str(failure)]
    for problem in problems:
        print(f"soak: {problem}")
    if not problems:
        print(f"soak: {', '.join(judged(samples))} are flat from{samples[0]} to{samples[-1]}")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
