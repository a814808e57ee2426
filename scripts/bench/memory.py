"""The memory of a process, in bytes."""

import pathlib


def value_of(status, field):
    """A field of the text of /proc/PID/status."""
    for line in status.splitlines():
        if line.startswith(field + ":"):
            return int(line.split()[1]) * 1024
    raise KeyError(field)


def resident(pid):
    return value_of(pathlib.Path(f"/proc/{pid}/status").read_text(encoding="ascii"), "VmRSS")


def peak(pid):
    return value_of(pathlib.Path(f"/proc/{pid}/status").read_text(encoding="ascii"), "VmHWM")


def reset_peak(pid):
    pathlib.Path(f"/proc/{pid}/clear_refs").write_text("5", encoding="ascii")
