"""The rows of the table in docs/benchmarks.md: every row is a ratio with a threshold."""

import dataclasses

# What a row's name ends with on TAO.
SUFFIX_ON_TAO = "_tao"


@dataclasses.dataclass(frozen=True)
class Row:
    name: str
    measures: str
    limit: float
    at_least: bool = False  # the limit is the least value; otherwise the greatest

    def is_reached_by(self, value):
        return value >= self.limit if self.at_least else value <= self.limit

    def reach(self):
        return f"{'at least' if self.at_least else 'at most'} {self.limit:g}"


ROWS = (
    Row("view_over_echo_100k", "topo subnetwork view in one batch over IIOP, over a bare servant on the same ORB and "
        "allocator that returns a copy of the same list", 1.1),
    Row("view_over_echo_1m", "the same with 1,000,000 nodes", 1.1),
    Row("view_scaling", "the view of 1,000,000 nodes over 100,000, in process", 11),
    Row("iterate_over_single_100k", "the view in batches of 1,000 over one batch", 1.1),
    Row("iterate_over_single_1m", "the same with 1,000,000 nodes", 1.1),
    Row("peak_over_list_1m", "peak memory of the agent during a view, less its memory before, over the bytes of the "
        "list", 2.0),
    Row("memory_after_over_before_1m", "resident memory one second after the last client has gone, over before the "
        "first view", 1.2),
    Row("below_over_view_100k", "view below a root of 90% of the nodes over the full view, in process", 1.0),
    Row("below_scaling_deep", "view below the root of chains 1,000 deep: 200,000 nodes over 20,000, in process", 11),
    Row("below_plain_over_ours_20k", "nodes below a root of 20,000 nodes: the plain loop of the property tests over "
        "the module's walk", 50, at_least=True),
    Row("exclusion_scaling", "elements that are not shown: 200,000 over 20,000, in process", 11),
    Row("clock_links_over_echo_100k", "the clock links in one batch, over the bare servant with the same list", 1.2),
    Row("labels_over_plain_100k", "view with the test switch on and a label file of 300,000 lines, over the same "
        "with an empty file name, in process", 2.0),
    Row("clients8_over_1", "views per second of 1,000 nodes with 8 client processes over 1", 1.7, at_least=True),
    Row("small_call_over_ping", "getCapabilities over an empty call of the bare servant", 1.2),
    Row("events_over_raw", "events per second through the notifier to one consumer, over a bare push loop of the same "
        "event", 0.8, at_least=True),
    Row("events_10_over_1", "events delivered per second to 10 consumers over 1", 1.9, at_least=True),
    Row("http_json_over_corba_100k", "the same nodes as JSON over HTTP, fetched and parsed, over the view", 2,
        at_least=True),
    Row("start_over_read_100k", "start of the agent on a store until its first answer, over reading every row of the "
        "store with SQLite alone", 2),
    Row("import_over_insert_100k", "loading a network file into a new store, over inserting the same rows with "
        "SQLite alone", 1.5),
)


def named(names):
    """The rows with these names, in the order of ROWS; all rows without names. Raises KeyError for another name."""
    known = {row.name for row in ROWS}
    for name in names:
        if name not in known:
            raise KeyError(name)
    return [row for row in ROWS if not names or row.name in names]


def listing():
    width = max(len(row.name) for row in ROWS)
    return "\n".join(f"{row.name:{width}}  {row.reach():14}  {row.measures}" for row in ROWS)
