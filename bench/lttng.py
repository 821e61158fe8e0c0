"""A session of LTTng in which bench_lttng records, into memory alone."""

import contextlib
import os
import shutil
import subprocess
import tempfile
import time

STARTING = 10  # seconds that the daemon may take


def commands(home):
    """A flight recorder as our ring is: the oldest records are overwritten, nothing goes to disk."""
    yield ["create", "bench", "--snapshot", f"--output={home}/snapshot"]
    channel = ["--overwrite", "--subbuf-size=1M", "--num-subbuf=4"]
    yield ["enable-channel", "--userspace", *channel, "--session=bench", "ring"]
    yield ["enable-event", "--userspace", "--session=bench", "--channel=ring", "bench:record"]
    yield ["start", "bench"]


def lttng(environment, command):
    """What is wrong; empty when nothing is."""
    words = ["lttng", "--no-sessiond", *command]
    done = subprocess.run(words, env=environment, capture_output=True, text=True)
    return "" if done.returncode == 0 else (done.stderr or done.stdout).strip()


@contextlib.contextmanager
def session():
    """The environment for a program that records in it; None, with a line that says why, when there
    can be no session."""
    if shutil.which("lttng") is None or shutil.which("lttng-sessiond") is None:
        print("LTTng's session daemon is not installed: left out")
        yield None
        return
    with tempfile.TemporaryDirectory() as home:
        environment = {**os.environ, "LTTNG_HOME": home}
        daemon = subprocess.Popen(
            ["lttng-sessiond", "--no-kernel"],
            env=environment,
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
        )
        try:
            until = time.monotonic() + STARTING
            wrong = ""
            for command in commands(home):
                wrong = lttng(environment, command)
                while wrong and daemon.poll() is None and time.monotonic() < until:
                    time.sleep(0.1)
                    wrong = lttng(environment, command)
                if wrong:
                    break
            if wrong:
                print(f"LTTng's session cannot be started: left out. It says: {wrong}")
            yield None if wrong else {"LTTNG_HOME": home}
            lttng(environment, ["destroy", "bench"])
        finally:
            daemon.terminate()
            daemon.wait()
