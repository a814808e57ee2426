"""The sizes of a run. The thresholds apply to the default sizes; the tests run with small ones."""

import dataclasses


@dataclasses.dataclass(frozen=True)
class Sizes:
    nodes: int = 100_000
    rounds: int = 15
    seconds: float = 1.0  # of a measured rate

    @property
    def large(self):
        return 10 * self.nodes

    @property
    def short_rounds(self):
        """Of measurements that take a fraction of a second."""
        return 2 * self.rounds

    @property
    def large_rounds(self):
        return min(self.rounds, 5)

    @property
    def batch(self):
        """Records of a batch, nodes of the network of several clients, and depth of the deep chains."""
        return max(self.nodes // 100, 1)

    @property
    def calls(self):
        """Small calls of one turn."""
        return max(self.nodes // 100, 1)

    @property
    def call_rounds(self):
        return 4 * self.rounds

    @property
    def burst(self):
        """Notifications of one turn."""
        return max(self.nodes // 20, 1)
