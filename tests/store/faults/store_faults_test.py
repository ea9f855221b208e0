"""A store under faults: `store_fault_driver` does one thing to it under strace, which
- kills it at each system call that writes, in turn;
- lets each of these calls, and each open, fail for want of space, of a working disk, of a writable
  file system: once, after which the driver's second try must succeed, and from there on for good.
  An operation of more than LONG calls meets at each of them two of these six, a single failure and
  a lasting one, each call the next errors in turn; all of them with "--every";
- lets what copies a damaged store fail once at each of its reads, of a piece and of a sector.
Some operations meet all that on a file system that knows no links; those on a store whose journal
was cut keep what is left of it.
Afterwards the store holds what it held before or what the operation makes of it, the latter when
that was acknowledged; it is sound and dense, needs no hands, and nothing else is left beside it.
"""
import collections
import re
import shutil
import sys

from aftermath import UNDO_SNAPSHOT, Aftermath, journal_of
from fault_driver import (AFTER_CUT, BROKEN, REPAIRS, ROOT, STORE, injected, perform, run, strace,
                          traced)

WRITING = ("write,pwrite64,pwritev,fsync,fdatasync,rename,renameat,renameat2,link,linkat,unlink,"
           "unlinkat,ftruncate,fallocate,mkdir,mkdirat")
OPENING = "open,openat"
READING = "pread64"
ERRORS = ("ENOSPC", "EIO", "EROFS")
LONG = 75
EVERY = "--every" in sys.argv
OPERATIONS = ("create-store", "create", "complete", "reorder", "split", "type", "delete", "attach",
              "move-attachment", "move-board", "complete-all", "restore-deleted", "save",
              "checkpoint", "export", "import", "import-in-window", "import-again", "undo-import",
              "undo-in-window", "automatic-backup", "upgrade", "upgrade-attachments", "carry-over",
              "upgrade-without-links", *AFTER_CUT, "carry-over-damaged", "start", "cloud", *REPAIRS)
# How the folder of automatic backups is named while one is made.
HELD = "/proc/self/fd/"

Fault = collections.namedtuple("Fault", "call when effect is_once")


class Faults:
    """One operation, and the faults that it can meet."""

    def __init__(self, operation, start, scratch):
        self.operation = operation
        self.aftermath = Aftermath(operation, start, scratch)
        folder = self.aftermath.fresh_folder()
        trace = folder / "trace"
        self.always = injected(operation)
        perform(folder, operation,
                tracer=strace(trace, f"trace={WRITING},{OPENING},{READING}", *self.always))
        self.calls = list(self.calls_on(folder, trace))
        if self.always:
            self.calls = [call for call in self.calls if call[0] != "link"]
        self.cases = list(self.faults())
        if operation == "repair-first-page":
            bad_reads = list(self.bad_reads(trace))
            if not bad_reads:
                sys.exit(f"{operation} was not seen reading the store")
            self.cases += bad_reads
        self.remains = journal_of(start) if operation in AFTER_CUT else b""
        if len(self.calls) < 3 or self.aftermath.after == "no state":
            sys.exit(f"{operation} was not seen at work: {self.aftermath.after}, {self.calls}")

    @staticmethod
    def calls_on(folder, trace):
        """Each call that concerns the folder: its name, its number, whether in the first thread."""
        concerned = [(name, number, is_first) for is_first, number, name, line in traced(trace)
                     if name != READING and (str(folder / ROOT) in line or HELD in line)]
        first = {call[:2] for call in concerned if call[2]}
        return [call for call in concerned if call[2] or call[:2] not in first]

    def faults(self):
        writing = WRITING.split(",")
        for turn, (call, number, is_first) in enumerate(self.calls):
            if call in writing:
                yield Fault(call, str(number), "signal=KILL", False)
            if EVERY or len(self.calls) <= LONG:
                wanted = [(error, when) for error in ERRORS for when in ("", "+")]
            else:
                wanted = [(ERRORS[turn % 3], ""), (ERRORS[(turn + 1) % 3], "+")]
            for error, when in wanted:
                # Each try has threads of its own, and each thread counts for itself.
                if is_first or not when:
                    yield Fault(call, f"{number}{when}", f"error={error}", is_first and not when)

    @staticmethod
    def bad_reads(trace):
        """Of the store's file: of a piece alone, and of its first sector too."""
        for is_first, number, name, line in traced(trace):
            if is_first and name == READING and f"/{STORE}>" in line:
                for when in (str(number), f"{number}..{number + 1}"):
                    yield Fault(READING, when, "error=EIO", True)

    @staticmethod
    def name_of(fault):
        return f"{fault.call} {fault.when} {fault.effect}"

    @staticmethod
    def may_leave(fault, acknowledged):
        """What of its own it cannot remove."""
        if (fault.effect == "signal=KILL" or fault.call.startswith("unlink") or
                fault.call in OPENING.split(",")):
            return None
        # By which SQLite writes.
        if fault.call in ("pwrite64", "fdatasync", "ftruncate"):
            return {STORE + "-journal", UNDO_SNAPSHOT}
        # The undo is done and its snapshot could not be moved: the store names it where it is.
        if acknowledged and fault.call in ("rename", "fsync"):
            return {UNDO_SNAPSHOT}
        return set()

    def problems(self, fault):
        """What is wrong after this fault: nothing, if the store is as good as it should be."""
        folder = self.aftermath.fresh_folder()
        try:
            trace = folder / "trace"
            said = perform(folder, self.operation,
                           tracer=strace(trace, f"trace={fault.call},link",
                                         f"inject={fault.call}:{fault.effect}:when={fault.when}",
                                         *self.always))
            lines = trace.read_text(errors="replace").splitlines()
            if not any(re.search("INJECTED|killed by SIGKILL", line) for line in lines
                       if not self.always or " link(" not in line):
                yield "the fault did not happen: the driver took another way"
            acknowledged = "acknowledged" in said
            if fault.is_once and not acknowledged:
                yield f"the second try did not succeed: {said}"
            if any(line.startswith(BROKEN) for line in said):
                yield str(said)
            if self.operation in AFTER_CUT:
                yield from self.aftermath.problems_after_cut(folder, acknowledged, self.remains)
            else:
                yield from self.aftermath.problems(folder, acknowledged,
                                                   self.may_leave(fault, acknowledged))
        finally:
            shutil.rmtree(folder)


if __name__ == "__main__":
    run([word for word in sys.argv[2:] if word != "--every"] or OPERATIONS, Faults)
