"""Running other programs, and waiting for what no event announces."""

import subprocess
import time

# Seconds: long enough for a loaded machine; no test waits for it unless it is to fail.
PATIENCE = 120


def output(*command, stdin=subprocess.DEVNULL):
    done = subprocess.run(command, stdin=stdin, capture_output=True, timeout=PATIENCE)
    if done.returncode != 0:
        raise AssertionError(f"{command}: {done.stderr.decode(errors='replace')}")
    return done.stdout.decode().strip()


def waitUntil(condition, description):
    """Polls `condition` and returns what it is in the end; for what no event announces, such as a
    file that appears."""
    deadline = time.monotonic() + PATIENCE
    while not (found := condition()):
        if time.monotonic() > deadline:
            raise AssertionError(f"waited in vain for {description}")
        time.sleep(0.005)
    return found
