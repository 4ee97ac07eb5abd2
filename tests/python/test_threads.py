"""What the package owes to other threads, to signals and to the end of the process; in processes of their own."""

import os
import subprocess
import sys
import textwrap

import pytest

from conftest import SAMPLES

BEGIN = """
    import io, itertools, os, signal, sys, threading, time
    import oxrrec
    path = "parts.bin"
    options = dict(copybook="parts.cob", ccsid=819)
    content = open(path, "rb").read()
    class Slow:
        "An input, and an output, that has no end."
        def read(self, size):
            time.sleep(0.0001)
            return content * (size // len(content) // 50)
        write = lambda self, given: time.sleep(0.0001)
    def in_thread(work, **how):
        threading.Thread(target=work, **how).start()
    os.mkfifo(sys.argv[1])
"""


def run(script, tmp_path):
    """What a script prints, which ends by itself and in peace."""
    text = textwrap.dedent(BEGIN) + textwrap.dedent(script)
    ended = subprocess.run([sys.executable, "-c", text, tmp_path / "pipe"], cwd=SAMPLES, capture_output=True, timeout=20)
    assert (ended.returncode, ended.stderr.decode()) == (0, "")
    return ended.stdout.decode()


@pytest.mark.parametrize("work", [
    "sum(1 for _ in oxrrec.read(Slow(), **options))",
    "sum(1 for _ in oxrrec.columns(Slow(), **options))",
    "[sum(1 for _ in oxrrec.read(path, **options)) for _ in itertools.count()]",
    "oxrrec.write(Slow(), itertools.cycle(oxrrec.read(path, **options)), **options)",
    "oxrrec.write(sys.argv[1], (time.sleep(0.0001) or record for record in itertools.cycle(oxrrec.read(path, **options))),"
    " **options)"])
def test_a_process_ends_whatever_its_threads_do(tmp_path, work):
    run(f"""
        in_thread(lambda: open(sys.argv[1], "rb").read(), daemon=True)
        for _ in range(3):
            in_thread(lambda: {work}, daemon=True)
        time.sleep(0.2)
    """, tmp_path)


def test_a_pipe_of_the_same_process(tmp_path):
    """Whoever is at its other end needs the interpreter to get there."""
    assert run("""
        copies = []
        in_thread(lambda: open(sys.argv[1], "wb").write(content))
        records = list(oxrrec.read(sys.argv[1], **options))
        in_thread(lambda: copies.append(open(sys.argv[1], "rb").read()))
        print(oxrrec.write(sys.argv[1], records, **options))
        in_thread(lambda: open(sys.argv[1], "wb").write(content * 3))
        print([len(chunk["STOCK"]) for chunk in oxrrec.columns(sys.argv[1], **options)])
        print(copies == [content])
    """, tmp_path) == "5\n[15]\nTrue\n"
