"""Networks and stores of a run, made once each."""

import networks
from programs import Agent


class Stores:
    """Owns nothing: the files are in a folder of the caller."""

    def __init__(self, folder):
        self.folder = folder

    def network(self, nodes, links):
        file = self.folder / f"{nodes}-{links}.json"
        if not file.exists():
            networks.write(file, nodes, links)
        return file

    def store(self, programs, nodes, links=0):
        """A store with this network, made by an agent."""
        file = self.folder / f"{nodes}-{links}.db"
        if not file.exists():
            with Agent(programs, file, ["--network", self.network(nodes, links)]):
                pass
        return file
