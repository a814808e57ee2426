"""Network files like those of bench/Networks.cpp: one node in ten is a subnetwork, followed by its nine elements."""

import json

FAN_OUT = 10


def nodes(count):
    for i in range(count):
        group = i // FAN_OUT
        if i % FAN_OUT:
            yield {"id": f"NE={i}", "parent": f"subnetwork-{group}", "name": f"Name of NE={i}", "type": 1,
                   "params": [8682, 50111]}
        else:
            parent = f"subnetwork-{(group - 1) // FAN_OUT}" if group else ""
            yield {"id": f"subnetwork-{group}", "parent": parent, "name": f"Name of subnetwork-{group}", "type": 2,
                   "params": [8682, 50111]}


def element_numbers(count):
    return [i for i in range(count) if i % FAN_OUT]


def elements(count):
    for i in element_numbers(count):
        yield {"number": i, "name": f"Name of NE={i}", "shown": True}


def clock_links(count, links):
    """Links between neighbouring elements, from the first again after the last."""
    numbers = element_numbers(count)
    for i in range(links):
        a, z = numbers[i % len(numbers)], numbers[(i + 1) % len(numbers)]
        yield {"id": f"clock-{i}", "name": f"SDH/clock-{i}", "a": f"NE={a}", "z": f"NE={z}"}


def write(file, count, links):
    """Writes a network of `count` nodes and this number of clock links."""
    encode = json.JSONEncoder(separators=(",", ":")).encode
    with open(file, "w", encoding="ascii") as out:
        out.write('{"format":"topo-network/1","ems":"Bench"')
        for name, records in (("topoNodes", nodes(count)), ("networkElements", elements(count)),
                              ("clockLinks", clock_links(count, links))):
            out.write(f',"{name}":[')
            for i, record in enumerate(records):
                out.write(("," if i else "") + encode(record))
            out.write("]")
        out.write("}\n")
