"""A store and the loss of power: `store_fault_driver` does one thing to it while every call that
changes its files is recorded. The record is then played back up to each of these calls, as a disk
might have it at that moment: what was synced is there; of what was not, contents and names are all
there, all missing, or contents are torn by sectors and names stop somewhere on the way.

From each such disk the next start finds the store as it was before or as the operation makes of it,
the latter when that was acknowledged before the power went, sound, dense and writable. A damaged
store is saved then, or can still be, and is never gone itself.
"""
import collections
import concurrent.futures
import os
import pathlib
import random
import re
import shutil
import sys
import tempfile

from store_faults_test import (BROKEN, DATA, SKIPPED, STORE, drive, start_of, state_of, strace,
                               strace_works)

OPERATIONS = ("create-store", "create", "complete", "reorder", "attach", "checkpoint", "upgrade",
              "salvage")
RECORDED = ("open,openat,write,pwrite64,fsync,fdatasync,rename,renameat,renameat2,link,linkat,unlink,"
            "unlinkat,ftruncate,writev")
SECTOR = 512
LONGEST_WRITE = 1 << 26

Call = collections.namedtuple("Call", "name fd arguments texts result")


def unescaped(text):
    return re.sub(rb"\\x(..)", lambda found: bytes.fromhex(found[1].decode()), text.encode())


def recorded(trace):
    """The calls that succeeded, with the path behind their descriptor."""
    for line in trace.read_text(encoding="ascii", errors="replace").splitlines():
        found = re.match(r"(?:\d+ +)?(\w+)\((.*)\) += (-?\d+)(?:<(.*)>)?$", line)
        if not found or found[3].startswith("-"):
            continue
        name, arguments = found[1], found[2]
        behind = re.match(r"\d+<([^>]*)>", arguments)
        path = found[4] if name.startswith("open") else behind and behind[1]
        texts = [unescaped(text) for text in re.findall(r'"((?:\\x..)*)"', arguments)]
        numbers = re.sub(r'"[^"]*"|<[^>]*>', "", arguments)
        yield Call(name, unescaped(path).decode() if path else None, numbers, texts, int(found[3]))


class File:
    """Contents that are on the disk, and the changes since that might not be."""

    def __init__(self, contents=b""):
        self.synced = bytearray(contents)
        self.changes = []

    def sync(self):
        self.synced = self.contents(lambda: True)
        self.changes = []

    def contents(self, survives):
        """As far as each sector, or each change of the length, survives."""
        contents = bytearray(self.synced)
        for offset, data in self.changes:
            if data is None:
                if survives():
                    del contents[offset:]
                    contents.extend(bytes(offset - len(contents)))
                continue
            at = 0
            while at < len(data):
                end = min(len(data), (offset + at) // SECTOR * SECTOR + SECTOR - offset)
                if survives():
                    contents.extend(bytes(max(0, offset + at - len(contents))))
                    contents[offset + at:offset + end] = data[at:end]
                at = end
        return contents


class Disk:
    """The files below a folder, as calls change them."""

    def __init__(self, folder):
        self.folder = str(folder)
        files = {path.name: File(path.read_bytes()) for path in (folder / DATA).glob("*")
                 if not path.name.endswith("-shm")}
        # The names after each call since the folder was synced last.
        self.names = [files]
        self.positions = collections.Counter()

    def name_of(self, path):
        """Of a file in the data folder; none for anything else, and for what no start reads."""
        parent, _, name = path.rpartition("/")
        return name if parent == f"{self.folder}/{DATA}" and not name.endswith("-shm") else None

    def play(self, call):
        """Whether it has changed anything that counts."""
        now = dict(self.names[-1])
        paths = [self.name_of(text.decode("utf-8", "replace")) for text in call.texts]
        name = self.name_of(call.fd) if call.fd else None
        if call.name.startswith("open"):
            if name is None or name in now or "O_CREAT" not in call.arguments:
                return False
            now[name] = File()
        elif call.name in ("write", "pwrite64"):
            if name is None:
                return False
            offset = (int(call.arguments.rpartition(",")[2]) if call.name == "pwrite64"
                      else self.positions[name])
            self.positions[name] += call.result
            now[name].changes.append((offset, call.texts[0][:call.result]))
            return True
        elif call.name == "ftruncate":
            if name is None:
                return False
            now[name].changes.append((int(call.arguments.rpartition(",")[2]), None))
            return True
        elif call.name in ("fsync", "fdatasync"):
            if call.fd == f"{self.folder}/{DATA}":
                self.names = [now]
            elif name is not None:
                now[name].sync()
            return True
        elif call.name.startswith("rename") and None not in paths:
            if "RENAME_EXCHANGE" in call.arguments:
                now[paths[0]], now[paths[1]] = now[paths[1]], now[paths[0]]
            else:
                now[paths[1]] = now.pop(paths[0])
        elif call.name.startswith("link") and None not in paths:
            now[paths[1]] = now[paths[0]]
        elif call.name.startswith("unlink") and None not in paths:
            now.pop(paths[0], None)
        else:
            return False
        self.names.append(now)
        return True

    def states(self, chance):
        """What might be on the disk now: for each name its contents."""
        def state(names, survives):
            contents = {}
            return {name: contents.setdefault(id(file), bytes(file.contents(survives)))
                    for name, file in names.items()}
        for survives in (lambda: True, lambda: False, lambda: chance.random() < 0.5):
            for names in (self.names[-1], self.names[0], chance.choice(self.names)):
                yield state(names, survives)


class Loss:
    """One operation, recorded once."""

    def __init__(self, operation, start, scratch):
        self.operation = operation
        self.scratch = scratch
        folder = scratch / operation
        if start:
            shutil.copytree(start / DATA, folder / DATA)
        else:
            (folder / DATA).mkdir(parents=True)
        self.allowed = set()
        self.verify = "verify-salvaged" if operation == "salvage" else "verify"
        if not start:
            self.allowed |= {"state none", "state "}
        elif operation != "salvage":
            before = scratch / f"{operation}-before"
            shutil.copytree(start, before)
            self.allowed.add(state_of(drive(before, "verify")))
        disk = Disk(folder)
        trace = folder / "trace"
        drive(folder, "perform", operation, tracer=(
            *strace(trace, f"trace={RECORDED}"), "-xx", "-s", str(LONGEST_WRITE)))
        self.disks = list(self.replayed(disk, trace))
        self.after = state_of(drive(folder, self.verify))
        self.allowed.add(self.after)

    @staticmethod
    def replayed(disk, trace):
        """Each different disk, and whether the operation was acknowledged by then."""
        chance = random.Random(11)
        seen = set()
        acknowledged = False
        for number, call in enumerate(recorded(trace)):
            if call.name == "writev" and call.texts and call.texts[0].startswith(b"acknowledged"):
                acknowledged = True
            elif not disk.play(call):
                continue
            for state in disk.states(chance):
                key = hash((acknowledged, tuple(sorted(state.items()))))
                if key not in seen:
                    seen.add(key)
                    yield number, acknowledged, state

    def problems(self, disk):
        number, acknowledged, state = disk
        folder = pathlib.Path(tempfile.mkdtemp(dir=self.scratch))
        try:
            (folder / DATA).mkdir()
            for name, contents in state.items():
                (folder / DATA / name).write_bytes(contents)
            where = f"{self.operation}, power lost after call {number}"
            if self.operation == "salvage":
                drive(folder, "perform", "salvage")
                if not any(".damaged-" in path.name for path in (folder / DATA).iterdir()):
                    yield f"{where}: the damaged store is gone"
            found = drive(folder, self.verify)
            if any(line.startswith(BROKEN) for line in found):
                yield f"{where}: {found}"
            if state_of(found) not in ({self.after} if acknowledged else self.allowed):
                yield f"{where}, acknowledged: {acknowledged}, but {found}"
            if STORE in state and "writable" not in found:
                yield f"{where}: not writable: {found}"
        finally:
            shutil.rmtree(folder)


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
            loss = Loss(operation, start_of(operation, scratch), scratch)
            for problems in pool.map(lambda each: list(loss.problems(each)), loss.disks):
                failed += bool(problems)
                print("\n".join(problems), end="\n" if problems else "")
            print(f"{operation}: {len(loss.disks)} disks", flush=True)
            if len(loss.disks) < 10 or not any(acknowledged for _, acknowledged, _ in loss.disks):
                sys.exit(f"{operation} was not seen at work")
    sys.exit(1 if failed else 0)


main()
