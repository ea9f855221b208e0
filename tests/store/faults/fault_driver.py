"""What the tests of faults share: `store_fault_driver`, the stores that its operations start from,
and the round through the operations."""
import collections
import concurrent.futures
import itertools
import os
import pathlib
import re
import subprocess
import sys
import tempfile

DRIVER = sys.argv[1]
SKIPPED = 77

# In a folder of its own, which a new store makes, with those that it is in.
ROOT = "data"
DATA = ROOT + "/share/korvex"
STORE = "Primary.store"
# Of automatic backups, how many the driver keeps.
KEPT_BACKUPS = 2
# What the driver says when a promise between it and the store is broken.
BROKEN = ("WRONG", "LOST", "LEFT")
# What each verifying adds to a store.
PROOF = "[proof that it can be written]"

# What makes the store that an operation starts from, unless it is "prepare" alone.
STARTS = {
    "create-store": (),
    "import": ("prepare", "write-imported"),
    "import-large": ("prepare", "write-large"),
    "import-in-window": ("prepare", "write-imported"),
    # After one that there is a way back from.
    "import-again": ("prepare", "write-imported", "import", "add"),
    "undo-import": ("prepare", "write-imported", "import", "add"),
    "undo-in-window": ("prepare", "write-imported", "import", "add"),
    "automatic-backup": ("prepare", *["automatic-backup"] * KEPT_BACKUPS),
    "upgrade": ("prepare-v10",),
    "upgrade-attachments": ("prepare-v13",),
    "carry-over": ("prepare-legacy",),
    "start": ("prepare-unsound",),
    "cloud": ("prepare-unsound",),
    "repair": ("prepare-damaged",),
    "repair-older": ("prepare-damaged-v13",),
    "carry-over-damaged": ("prepare-damaged-legacy",),
    "repair-first-page": ("prepare-without-first-page",),
    "repair-emptied": ("prepare-emptied",),
    "upgrade-without-links": ("prepare-v10",),
    "repair-without-links": ("prepare-damaged",),
    "add-after-cut": ("prepare", "cut-journal"),
    "upgrade-after-cut": ("prepare-cut-v13",),
}
# What replaces the store: for the first time, after which alone something can be taken back; all.
FIRST_IMPORTS = ("import", "import-large", "import-in-window")
RESTORES = (*FIRST_IMPORTS, "import-again", "undo-import", "undo-in-window")
# The driver's word, where it is another.
WORDS = {"import-again": "import", "import-large": "import", "upgrade-attachments": "upgrade",
         "carry-over": "start", "carry-over-damaged": "repair", "repair-first-page": "repair",
         "repair-older": "repair", "repair-emptied": "repair", "upgrade-without-links": "upgrade",
         "repair-without-links": "repair", "add-after-cut": "add", "upgrade-after-cut": "upgrade"}
# They save what can be read of a damaged store.
REPAIRS = ("repair", "repair-first-page", "repair-older", "repair-emptied", "repair-without-links")
# On a file system that knows no second names for a file.
WITHOUT_LINKS = ("upgrade-without-links", "repair-without-links")
# Of a store that lacks its newest changes, since its journal was cut outside.
AFTER_CUT = ("add-after-cut", "upgrade-after-cut")
# Of which the metadata may have yet to be mended.
UNSOUND = ("start", "cloud", "carry-over-damaged", *REPAIRS)


def drive(folder, *words, tracer=()):
    """The lines that the driver says about the store in `folder`."""
    command = [*tracer, DRIVER, *words, str(folder / DATA / STORE)]
    result = subprocess.run(command, capture_output=True, text=True, timeout=60, check=False)
    return result.stdout.splitlines()


def perform(folder, operation, tracer=()):
    return drive(folder, "perform", WORDS.get(operation, operation), tracer=tracer)


def succeeds(folder, operation):
    return perform(folder, operation)[-1:] == ["acknowledged"]


def verify_word(operation):
    """How a store is looked at that a repair may have yet to make dense."""
    return "verify-unsound" if operation in UNSOUND else "verify"


def strace(output, *expressions):
    return ["strace", "-f", "-q", "-y", "-o", str(output),
            *itertools.chain.from_iterable(("-e", each) for each in expressions)]


def injected(operation):
    """What meets all of an operation."""
    return ("inject=link:error=EPERM",) if operation in WITHOUT_LINKS else ()


def traced(trace):
    """The calls in the order of their ends: whether it is one of the first thread, its number among
    those of its name in its thread, as a fault is planned, its name, and its line."""
    seen = collections.Counter()
    begun = {}
    first = None
    for line in trace.read_text(encoding="utf-8", errors="replace").splitlines():
        found = re.match(r"(\d+) +(?:<\.\.\. (\w+) resumed>)?(.*)", line)
        if not found:
            continue
        thread, resumed, text = found[1], found[2], found[3]
        first = first or thread
        if resumed:
            is_first, number, name, start = begun.pop(thread)
            yield is_first, number, name, start + text
        elif name := re.match(r"(\w+)\(", text):
            seen[thread, name[1]] += 1
            call = thread == first, seen[thread, name[1]], name[1]
            if text.endswith("<unfinished ...>"):
                begun[thread] = *call, text.removesuffix("<unfinished ...>").rstrip()
            else:
                yield *call, text
    # Killed in the middle.
    yield from begun.values()


def state_of(lines):
    state = next((line for line in lines if line.startswith("state ")), "no state")
    return state.replace(PROOF, "")


def start_of(operation, scratch):
    """A folder with the store that the operation starts from; none where there is no store yet."""
    words = STARTS.get(operation, ("prepare",))
    if not words:
        return None
    folder = scratch / "-".join(words)
    if not folder.exists():
        (folder / DATA).mkdir(parents=True)
        for word in words:
            if not succeeds(folder, word):
                sys.exit(f"The store to start from could not be made: {word}.")
    return folder


def strace_works():
    try:
        probe = subprocess.run(["strace", "-qq", "-o", "/dev/null", "-e", "inject=getcwd:error=EIO",
                                "true"], capture_output=True, timeout=30, check=False)
        return probe.returncode == 0
    except FileNotFoundError:
        return False


def run(operations, examine):
    """`examine` makes of an operation, its start and a folder to work in what has `cases`, and
    `problems` of each; it ends the program where it has not seen the operation at work."""
    if not strace_works():
        print("SKIP: strace cannot trace here")
        sys.exit(SKIPPED)
    memory = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    failed = 0
    with tempfile.TemporaryDirectory(dir=memory) as name, \
            concurrent.futures.ThreadPoolExecutor(2) as pool:
        scratch = pathlib.Path(name)
        for operation in operations:
            examined = examine(operation, start_of(operation, scratch), scratch)
            judge = lambda case, examined=examined: list(examined.problems(case))
            for case, problems in zip(examined.cases, pool.map(judge, examined.cases)):
                failed += bool(problems)
                for problem in problems:
                    print(f"{operation}, {examined.name_of(case)}: {problem}")
            print(f"{operation}: {len(examined.cases)} cases", flush=True)
    sys.exit(1 if failed else 0)
