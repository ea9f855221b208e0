"""A store under faults: `store_fault_driver` does one thing to it under strace, which
- kills it at each system call that writes, in turn;
- lets each of these calls, and each open, fail for want of space, of a working disk, of a writable
  file system: once, after which the driver's second try must succeed, and from there on for good.
Afterwards the store holds what it held before or what the operation makes of it, the latter when
that was acknowledged; it is sound and dense, needs no hands, and nothing else is left beside it.
"""
import collections
import concurrent.futures
import itertools
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

DRIVER = sys.argv[1]
SKIPPED = 77

WRITING = ("write,pwrite64,pwritev,fsync,fdatasync,rename,renameat,renameat2,link,linkat,unlink,"
           "unlinkat,ftruncate,fallocate,mkdir,mkdirat")
OPENING = "open,openat"
ERRORS = ("ENOSPC", "EIO", "EROFS")
OPERATIONS = ("create-store", "create", "complete", "reorder", "split", "type", "delete", "attach",
              "move-attachment", "move-board",
              "complete-all", "restore-deleted", "save",
              "checkpoint", "export", "import", "undo-import", "automatic-backup", "upgrade", "salvage")
# Of automatic backups, how many the driver keeps; the folder is held open while one is made.
KEPT_BACKUPS = 2
HELD = "/proc/self/fd/"
# What makes the store that an operation starts from, unless it is "prepare" alone.
STARTS = {"create-store": (), "undo-import": ("prepare", "import"), "upgrade": ("prepare-old",),
          "automatic-backup": ("prepare", *["automatic-backup"] * KEPT_BACKUPS),
          "salvage": ("prepare-damaged",)}
# Each leaves this backup, whole, once it is done; undoing an import also whatever becomes of it.
BACKUP_OF = {"export": "mine.korvexbackup", "import": "BeforeRestore.korvexbackup",
              "undo-import": "BeforeRestore.korvexbackup"}
# In a folder of its own, which a new store makes.
DATA = "data"
STORE = "Primary.store"
BELONGING = {STORE, STORE + "-wal", STORE + "-shm", STORE + ".lock", "other.korvexbackup",
             "mine.korvexbackup", "Recovery", "Recovery/BeforeRestore.korvexbackup",
             "Recovery/BeforeUndo.korvexbackup", "settings.json", "settings.json.lock", "chosen"}
# What stays on purpose: for good, or until the start after the next.
KEPT = {"salvage": STORE + ".damaged-", "upgrade": STORE + ".BeforeV17-"}
# What the driver says when a promise between it and the store is broken.
BROKEN = ("WRONG", "LOST", "LEFT")

# What each verifying adds.
PROOF = "[proof that it can be written]"

Fault = collections.namedtuple("Fault", "call when effect")


def drive(folder, *words, tracer=()):
    """The lines that the driver says about the store in `folder`."""
    command = [*tracer, DRIVER, *words, str(folder / DATA / STORE)]
    result = subprocess.run(command, capture_output=True, text=True, timeout=60, check=False)
    return result.stdout.splitlines()


def strace(output, *expressions):
    return ["strace", "-f", "-q", "-y", "-o", str(output),
            *itertools.chain.from_iterable(("-e", each) for each in expressions)]


def state_of(lines):
    return next((line for line in lines if line.startswith("state ")), "no state")


def start_of(operation, scratch):
    """A folder with the store that the operation starts from; none where there is no store yet."""
    words = STARTS.get(operation, ("prepare",))
    if not words:
        return None
    folder = scratch / "-".join(words)
    if not folder.exists():
        (folder / DATA).mkdir(parents=True)
        for word in words:
            if drive(folder, "perform", word)[-1:] != ["acknowledged"]:
                sys.exit(f"The store to start from could not be made: {word}.")
    return folder


class Case:
    """One operation, the store that it starts from, and what it makes of it."""

    def __init__(self, operation, prepared, scratch):
        """`prepared` is None for a store that is not there yet."""
        self.operation = operation
        self.start = prepared
        # A damaged store has no state: the one that matters comes of the operation.
        self.verify = "verify-salvaged" if operation == "salvage" else "verify"
        self.scratch = scratch
        self.numbers = itertools.count()
        folder = self.fresh_folder()
        before = None
        if operation != "salvage":
            before = state_of(drive(self.fresh_folder(), self.verify))
        trace = folder / "trace"
        drive(folder, "perform", operation,
              tracer=strace(trace, f"trace={WRITING},{OPENING}"))
        self.after = state_of(drive(folder, self.verify))
        self.allowed = {before, self.after}
        if self.start is None:
            # The file is there whole before it gets its first board.
            self.allowed.add("state ")
        self.calls = list(self.calls_on(folder, trace))

    def fresh_folder(self):
        folder = self.scratch / f"{self.operation}-{next(self.numbers)}"
        folder.mkdir()
        if self.start:
            shutil.copytree(self.start / DATA, folder / DATA)
        return folder

    @staticmethod
    def calls_on(folder, trace):
        """Each call that concerns the folder: its name, and its number among those of that name."""
        seen = collections.Counter()
        for line in trace.read_text(encoding="utf-8", errors="replace").splitlines():
            found = re.match(r"(?:\d+ +)?(\w+)\((.*)", line)
            if found:
                seen[found[1]] += 1
                if str(folder / DATA) in found[2] or HELD in found[2]:
                    yield found[1], seen[found[1]]

    def faults(self):
        writing = WRITING.split(",")
        for call, number in self.calls:
            if call in writing:
                yield Fault(call, str(number), "signal=KILL")
            for error in ERRORS:
                for when in (str(number), f"{number}+"):
                    yield Fault(call, when, f"error={error}")

    def problems(self, fault):
        """What is wrong after this fault: nothing, if the store is as good as it should be."""
        folder = self.fresh_folder()
        try:
            trace = folder / "trace"
            said = drive(folder, "perform", self.operation,
                         tracer=strace(trace, f"trace={fault.call}",
                                       f"inject={fault.call}:{fault.effect}:when={fault.when}"))
            if not re.search("INJECTED|killed by SIGKILL", trace.read_text(errors="replace")):
                yield "the fault did not happen: the driver took another way"
            acknowledged = "acknowledged" in said
            is_once = fault.effect.startswith("error") and not fault.when.endswith("+")
            if is_once and not acknowledged:
                yield f"the second try did not succeed: {said}"
            if any(line.startswith(BROKEN) for line in said):
                yield str(said)
            if self.operation == "salvage" and not acknowledged:
                acknowledged = drive(folder, "perform", "salvage")[-1:] == ["acknowledged"]
            found = drive(folder, self.verify)
            if any(line.startswith(BROKEN) for line in found):
                yield str(found)
            state = state_of(found)
            if state not in ({self.after} if acknowledged else self.allowed):
                yield f"acknowledged: {acknowledged}, but {found}"
            if state != "state none" and "writable" not in found:
                yield f"not writable: {found}"
            if state in ("state none", "state "):
                # Verifying never creates; the next start does.
                if drive(folder, "perform", self.operation)[-1:] != ["acknowledged"]:
                    yield "the next start does not create the store"
            if self.operation in BACKUP_OF:
                yield from self.problems_with_backups(folder, acknowledged, found)
            if self.operation == "automatic-backup":
                yield from self.problems_of_next_backup(folder)
            data = folder / DATA
            left = {str(path.relative_to(data)) for path in data.rglob("*")
                    if data / "chosen" not in path.parents} - BELONGING
            kept = {name for name in left if name.startswith(KEPT.get(self.operation, STORE + "?"))}
            if left - kept or len(kept) > 1:
                yield f"left behind: {sorted(left)}"
            if kept and self.operation == "upgrade":
                drive(folder, self.verify)
                if {path.name for path in (folder / DATA).iterdir()} & kept:
                    yield f"kept after a good start: {sorted(kept)}"
            if self.operation == "salvage" and not kept:
                yield "the damaged store is gone"
        finally:
            shutil.rmtree(folder)

    def problems_with_backups(self, folder, acknowledged, found):
        """Of what stands beside the store. A next run needs no hands, and clears up."""
        backup = f"backup {BACKUP_OF[self.operation]}"
        if (acknowledged or self.operation == "undo-import") and backup not in found:
            yield f"no {backup}: {found}"
        if drive(folder, "perform", self.operation)[-1:] != ["acknowledged"]:
            yield "the next run does not succeed"
        again = drive(folder, "verify")
        if any(line.startswith(BROKEN) for line in again) or backup not in again:
            yield f"after the next run: {again}"
        # Taking back what was taken back gives the other one, wherever the first was ended.
        expected = {"export": {self.after + PROOF},
                    "import": {self.after},
                    "undo-import": self.allowed - {state_of(found)}}[self.operation]
        if state_of(again) not in expected:
            yield f"the next run makes of {state_of(found)}: {state_of(again)}"

    def problems_of_next_backup(self, folder):
        """Like the next day's: it needs no hands, and removes what the fault left."""
        if drive(folder, "perform", self.operation) != ["acknowledged"]:
            yield "the next backup fails"
        names = sorted(str(path.relative_to(folder / DATA / "chosen"))
                       for path in (folder / DATA / "chosen").rglob("*") if path.is_file())
        backups = [name for name in names
                   if re.fullmatch(r"Korvex Automatic Backups [\w-]{36}/Korvex-[\w-]{36}"
                                   r"\.korvexbackup", name)]
        if set(names) - set(backups) != {".korvex-backup-folder"} or len(backups) != KEPT_BACKUPS:
            yield f"there are {names}"


def strace_works():
    try:
        probe = subprocess.run(["strace", "-qq", "-o", "/dev/null", "-e", "inject=getcwd:error=EIO",
                                "true"], capture_output=True, timeout=30, check=False)
        return probe.returncode == 0
    except FileNotFoundError:
        return False


def main():
    if not strace_works():
        print("SKIP: strace cannot trace here")
        sys.exit(SKIPPED)
    memory = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    failed = 0
    with tempfile.TemporaryDirectory(dir=memory) as name, \
            concurrent.futures.ThreadPoolExecutor(2) as pool:
        scratch = pathlib.Path(name)
        for operation in sys.argv[2:] or OPERATIONS:
            case = Case(operation, start_of(operation, scratch), scratch)
            faults = list(case.faults())
            for fault, problems in zip(faults, pool.map(lambda f: list(case.problems(f)), faults)):
                failed += bool(problems)
                for problem in problems:
                    print(f"{operation}, {fault.call} {fault.when} {fault.effect}: {problem}")
            print(f"{operation}: {len(case.calls)} calls, {len(faults)} faults", flush=True)
            if len(case.calls) < 3 or case.after == "no state":
                sys.exit(f"{operation} was not seen at work: {case.after}, {case.calls}")
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
