"""A small file system that is full but for some room, from none to what an operation needs:
`store_fault_driver` imports there, takes back, exports, backs up. It succeeds, or is refused and
the store is whole with nothing left beside it; also when it is killed at the first call that found
no room. Once there is room the next run needs no hands. A run that is killed with all of its file
written costs no room: the next one succeeds in what this one had. A start on a store whose journal
was cut is refused while there is no room to keep what is left of it.

The file system is mounted in a user namespace, where the kernel lets one be made.
"""
import collections
import os
import pathlib
import shutil
import subprocess
import sys

from aftermath import UNDO_SNAPSHOT, Aftermath, journal_of
from fault_driver import AFTER_CUT, DATA, SKIPPED, STORE, drive, perform, run, state_of, strace, succeeds, traced

OPERATIONS = ("import", "import-in-window", "import-large", "undo-import", "undo-in-window", "export",
              "automatic-backup", *AFTER_CUT)
# The size of its file system, and the steps of room in it.
SIZES = {"import-large": (32 << 20, 1 << 20)}
USUAL = (8 << 20, 16 << 10)
# For what a store's journal takes when it is opened once more.
SLACK = 64 << 10
# That a program leaves behind.
LONGEST_JOURNAL = 256 << 10
CALLS = "write,pwrite64,fsync,fdatasync,rename,ftruncate,mkdir,mkdirat,openat"
INSIDE = ["unshare", "--map-root-user", "--mount"]

Case = collections.namedtuple("Case", "room ended")


class SmallDisk:
    """One operation on a small file system."""

    def __init__(self, operation, start, scratch):
        self.operation = operation
        self.aftermath = Aftermath(operation, start, scratch)
        self.size, step = SIZES.get(operation, USUAL)
        needed = next(room for room in range(0, self.size, step) if self.suffices(room))
        rooms = range(0, needed + 1, step)
        if len(rooms) < 3:
            sys.exit(f"{operation} was not seen on a full disk")
        self.cases = [Case(room, ended) for room in rooms for ended in ("itself", "on a full disk")]
        if operation not in AFTER_CUT:
            self.cases.append(Case(rooms[-1] + SLACK, "when all is written"))

    @staticmethod
    def name_of(case):
        return f"with {case.room >> 10} KiB of room, ended {case.ended}"

    def mounted(self, room):
        """A folder with the start, on a file system that has this much room besides."""
        folder = self.aftermath.fresh_folder()
        subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={self.size}", "tmpfs", folder],
                       check=True)
        shutil.copytree(self.aftermath.start / DATA, folder / DATA)
        self.fill(folder, room)
        return folder

    @staticmethod
    def fill(folder, room):
        state = os.statvfs(folder)
        with open(folder / "ballast", "wb") as ballast:
            ballast.write(bytes(max(0, state.f_bavail * state.f_frsize - room)))

    @staticmethod
    def unmount(folder):
        subprocess.run(["umount", "-l", folder], check=True)

    def suffices(self, room):
        folder = self.mounted(room)
        try:
            return succeeds(folder, self.operation)
        finally:
            self.unmount(folder)

    def fatal_call(self, case):
        """None where there is none to be killed at."""
        folder = self.mounted(case.room)
        trace = self.aftermath.scratch / f"{folder.name}.trace"
        perform(folder, self.operation, tracer=strace(trace, f"trace={CALLS}"))
        self.unmount(folder)
        for _, number, call, line in traced(trace):
            if "= -1 ENOSPC" in line if case.ended == "on a full disk" else (
                    call == "rename" and ".korvexbackup" in line):
                return call, number
        return None

    def problems(self, case):
        fatal = None if case.ended == "itself" else self.fatal_call(case)
        if case.ended == "when all is written" and not fatal:
            yield "no file was seen to get its name"
        folder = self.mounted(case.room)
        try:
            tracer = ()
            if fatal:
                tracer = strace(self.aftermath.scratch / f"{folder.name}.trace",
                                f"trace={fatal[0]}", f"inject={fatal[0]}:signal=KILL:when={fatal[1]}")
            said = perform(folder, self.operation, tracer=tracer)
            if case.ended == "when all is written":
                if not succeeds(folder, self.operation):
                    yield "what was left takes the room of the next run"
                return
            if self.operation in AFTER_CUT:
                (folder / "ballast").unlink()
                yield from self.aftermath.problems_after_cut(folder, "acknowledged" in said,
                                                             journal_of(self.aftermath.start))
                return
            # Who opens the store gives back what a killed save has written of its journal.
            is_undone = state_of(drive(folder, "verify")) == self.aftermath.before
            journal = folder / DATA / (STORE + "-wal")
            if is_undone and journal.exists() and journal.stat().st_size > LONGEST_JOURNAL:
                yield f"the journal takes {journal.stat().st_size} bytes of the full disk"
            (folder / "ballast").unlink()
            yield from self.aftermath.problems(folder, "acknowledged" in said,
                                               None if fatal else {UNDO_SNAPSHOT})
        finally:
            self.unmount(folder)


def main():
    if os.environ.get("KORVEX_SMALL_DISK"):
        run(sys.argv[2:] or OPERATIONS, SmallDisk)
    probe = subprocess.run([*INSIDE, "mount", "-t", "tmpfs", "tmpfs", pathlib.Path("/mnt")],
                           capture_output=True, check=False)
    if probe.returncode:
        print("SKIP: no file system can be mounted here:", probe.stderr.decode().strip())
        sys.exit(SKIPPED)
    sys.exit(subprocess.run([*INSIDE, sys.executable, *sys.argv], check=False,
                            env={**os.environ, "KORVEX_SMALL_DISK": "yes"}).returncode)


if __name__ == "__main__":
    main()
