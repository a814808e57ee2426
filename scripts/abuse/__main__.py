"""abuse BIN [NAME...]: runs attacks against the agent in the folder BIN and prints one line for each.

Ends with status 1 when the agent did not withstand an attack. NAME selects attacks by a part of
their names.
"""

import concurrent.futures
import pathlib
import sys
import time

from agent import Failure
from attacks import ATTACKS, IN_THE_BACKGROUND


def play(name, attack, programs):
    """Runs one attack and prints its line; returns whether the agent withstood the attack."""
    begin = time.monotonic()
    try:
        verdict, text = "withstood", attack(programs)
    except Failure as failure:
        verdict, text = "FAILED", str(failure)
    except Exception as error:  # an attack that fails by itself counts as a failure of the agent
        verdict, text = "FAILED", f"{type(error).__name__}: {error}"
    line = " ".join(text.split())
    print(f"{verdict:9}  {name:22}  {time.monotonic() - begin:5.1f} s  {line}", flush=True)
    return verdict == "withstood"


def main():
    programs = pathlib.Path(sys.argv[1]).resolve()
    chosen = sys.argv[2:]

    def wanted(attacks):
        return [(name, attack) for name, attack in attacks
                if not chosen or any(part in name for part in chosen)]
    with concurrent.futures.ThreadPoolExecutor(1) as pool:
        slow = [pool.submit(play, name, attack, programs)
                for name, attack in wanted(IN_THE_BACKGROUND)]
        results = [play(name, attack, programs) for name, attack in wanted(ATTACKS)]
        results += [future.result() for future in slow]
    withstood = sum(results)
    print(f"abuse: {withstood} of {len(results)} attacks withstood")
    return 0 if results and withstood == len(results) else 1


if __name__ == "__main__":
    sys.exit(main())
