"""Boots the emulated board and reads what it reports on its serial console."""

import json
import subprocess
import threading
from dataclasses import dataclass, field

import image
from image import BUILD, BoardError

MARK = "board: "  # before each line of JSON that the device reports


@dataclass
class Report:
    """What a run of a part said: its checks in order, name and what was wrong (None if nothing),
    its figures, and other records by their kind."""

    checks: list = field(default_factory=list)
    figures: dict = field(default_factory=dict)
    others: list = field(default_factory=list)
    ended: bool = False


class Board:
    """A machine with the project's packages installed. Each run begins with the same disk."""

    def __init__(self, architecture, release):
        self.machine = image.machine(architecture, release)
        self.folder = BUILD / self.machine.name
        self.disk = image.make_disk(self.machine)
        report = self.run("install", keep_disk=True)
        if any(wrong for _, wrong in report.checks):
            raise BoardError(f"the packages cannot be installed: {report.checks}")

    def run(self, part, *, drives=(), keep_disk=False, arguments="", seconds=900):
        """Boots, runs a part of device/ and returns its Report when the board has switched itself
        off. `drives` are QEMU's options of further disks."""
        command = [
            *self.machine.emulator, "-M", "virt", "-m", "512", "-smp", "2", "-no-reboot",
            "-display", "none", "-serial", "stdio", "-monitor", "none", "-nic", "none",
            "-kernel", self.folder / "kernel", "-initrd", self.folder / "initramfs.cpio",
            "-append", f"console=ttyAMA0 quiet loglevel=3 systemd.show_status=no "
                       f"board.part={part} {arguments}",
            "-drive", f"if=none,id=root,format=raw,file={self.disk},"
                      f"snapshot={'off' if keep_disk else 'on'}",
            "-device", "virtio-blk-device,drive=root", *drives]
        log = self.folder / f"{part}.log"
        report = Report()
        with log.open("w") as kept, subprocess.Popen(
                command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                stderr=subprocess.STDOUT, text=True, errors="replace") as process:
            watchdog = threading.Timer(seconds, process.kill)
            watchdog.start()
            for line in process.stdout:
                kept.write(line)
                kept.flush()
                read_line(line, report)
            watchdog.cancel()
        if not report.ended:
            raise BoardError(f"{part} did not end; the console's output is in {log}")
        return report


def read_line(line, report):
    _, mark, text = line.partition(MARK)
    if not mark:
        return
    try:
        record = json.loads(text)
    except ValueError:
        record = {"check": "the console can be read", "wrong": line}
    if "check" in record:
        report.checks.append((record["check"], record["wrong"]))
        print(f"  {'FAILED' if record['wrong'] else 'passed'}: {record['check']}", flush=True)
        if record["wrong"]:
            print(f"    {record['wrong']}", flush=True)
    elif "figure" in record:
        report.figures[record["figure"]] = record["value"]
        print(f"  {record['figure']}: {record['value']}", flush=True)
    elif "end" in record:
        report.ended = True
    else:
        report.others.append(record)
