"""What the package owes to its process: to other threads, to signals, to its end, and in memory. Each in its own."""

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
        thread = threading.Thread(target=work, **how)
        thread.start()
        return thread
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


@pytest.mark.parametrize("work", [
    "collections.deque(records, 0)",
    "next(chunks)",
    "oxrrec.write(io.BytesIO(), itertools.chain.from_iterable(itertools.repeat(few, 20000)), **options)"])
def test_others_run(tmp_path, work):
    """They are let in: nothing here runs in Python, and the interpreter by itself would switch too late."""
    assert int(run(f"""
        import collections
        whole, few = content * 20000, list(oxrrec.read(path, **options))
        records = oxrrec.read(io.BytesIO(whole), **options)
        chunks = oxrrec.columns(io.BytesIO(whole), rows=100000, decimals="float", **options)
        turns, done = [], threading.Event()
        def count():
            while not done.wait(0.0001):
                turns.append(0)
        sys.setswitchinterval(100)
        other = in_thread(count)
        before = len(turns)
        {work}
        print(len(turns) - before)
        done.set()
        other.join()
    """, tmp_path)) > 40  # numpy lets them in a few times


def test_a_pipe_of_the_same_process(tmp_path):
    """Whoever is at its other end needs the interpreter to get there."""
    assert run("""
        copies = []
        in_thread(lambda: open(sys.argv[1], "wb").write(content))
        records = list(oxrrec.read(sys.argv[1], **options))
        reader = in_thread(lambda: copies.append(open(sys.argv[1], "rb").read()))
        print(oxrrec.write(sys.argv[1], records, **options))
        reader.join()
        in_thread(lambda: open(sys.argv[1], "wb").write(content * 3))
        print([len(chunk["STOCK"]) for chunk in oxrrec.columns(sys.argv[1], **options)])
        print(copies == [content])
    """, tmp_path) == "5\n[15]\nTrue\n"


def test_a_signal_loses_no_rows(tmp_path):
    """The exception of its handler leaves a chunk half read, to be gone on with."""
    assert run("""
        def handle(number, frame):
            if frame.f_code.co_name == "__next__":
                raise TimeoutError
            signal.setitimer(signal.ITIMER_REAL, 0.001)
        signal.signal(signal.SIGALRM, handle)
        chunks = oxrrec.columns(io.BytesIO(content * 60000), rows=300000, **options)
        signal.setitimer(signal.ITIMER_REAL, 0.02)
        try:
            next(chunks)
        except TimeoutError:
            print([len(chunk["STOCK"]) for chunk in chunks])
    """, tmp_path) == "[300000]\n"


@pytest.mark.parametrize("call", ["read", "columns"])
def test_a_signal_ends_who_waits(tmp_path, call):
    """For who opens the other end of a pipe, and then for what comes from there."""
    assert run(f"""
        def handle(number, frame):
            raise TimeoutError
        signal.signal(signal.SIGALRM, handle)
        for other in (None, lambda: os.open(sys.argv[1], os.O_RDWR)):
            end = other and other()
            signal.setitimer(signal.ITIMER_REAL, 0.1)
            try:
                next(oxrrec.{call}(sys.argv[1], **options))
            except TimeoutError:
                print("ended")
    """, tmp_path) == "ended\nended\n"


@pytest.mark.parametrize("work, most", [
    ("next(oxrrec.columns(path, rows=5_000_000, **options))", 20),
    ("wide(10)", 40), ("wide(500, rows=100)", 80),
    ("oxrrec.write(Slow(), itertools.islice(itertools.cycle(oxrrec.read(path, **options)), 100000), **options)", 10)])
def test_memory(tmp_path, work, most):
    """It goes by what a file holds, or by what is read at a time; in MiB."""
    assert int(run(f"""
        import numpy, resource
        def most():
            return resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
        copybook = sys.argv[1] + ".cob"
        with open(copybook, "w") as file:
            print(" 01 R.", "05 A OCCURS 1000.", "10 B PIC X(4).", "10 C PIC 9(4).", "10 D PIC S9(3)V99.",
                  sep="\\n           ", file=file)
        def wide(count, **more):
            records = io.BytesIO(b"abcd000100120" * 1000 * count)
            for chunk in oxrrec.columns(records, copybook=copybook, ccsid=819, **more):
                pass
        before = most()
        {work}
        print((most() - before) >> 10)
    """, tmp_path)) < most
