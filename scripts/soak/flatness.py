"""Samples of what the agent uses of the system, and the check that the use does not grow."""

import dataclasses
import statistics

# The growth that is tolerated as noise: a part of the first value, but at least the number for the value.
TOLERATED_PART = 0.05
TOLERATED = {"memory_mib": 8, "descriptors": 20, "threads": 15}

# In a shorter run the memory still rises, because caches fill and abandoned iterators wait for their timeout.
LEAST_SECONDS_OF_MEMORY = 300


@dataclasses.dataclass(frozen=True)
class Sample:
    seconds: float  # since the start of the run
    memory_mib: float
    descriptors: int
    threads: int

    def __str__(self):
        return (f"{self.seconds:8.1f} s  {self.memory_mib:7.1f} MiB  {self.descriptors:4d} descriptors  "
                f"{self.threads:4d} threads")


def settled(samples, warm_up_seconds):
    """The samples after the warm-up."""
    return [sample for sample in samples if sample.seconds >= warm_up_seconds]


def judged(samples):
    """The values whose growth these samples can show, with the least tolerated growth. Memory needs a long run."""
    is_long = samples[-1].seconds - samples[0].seconds >= LEAST_SECONDS_OF_MEMORY
    return {name: least for name, least in TOLERATED.items() if is_long or name != "memory_mib"}


def growth(samples):
    """Returns a line for each value whose median in the last third of the samples is over that in the first third.

    A leak makes every third larger than the one before; a burst of clients hardly moves a median.
    """
    third = len(samples) // 3
    if third == 0:
        return [f"the run was too short: {len(samples)} samples"]
    problems = []
    for name, least in judged(samples).items():
        first, last = (statistics.median(getattr(sample, name) for sample in part)
                       for part in (samples[:third], samples[-third:]))
        if last - first > max(least, first * TOLERATED_PART):
            problems.append(f"{name} grows from {first:.1f} to {last:.1f}")
    return problems
