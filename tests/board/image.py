"""The emulated board: its kernel, its root file system with the packages under test, and its runs.

The parts that come from Debian alone are made once for an architecture and release, and kept in
build-board/ of the tree. What the board says on its serial console is all that leaves it, but for
the disks that it was given.
"""

import shutil
import subprocess
from dataclasses import dataclass
from pathlib import Path

HERE = Path(__file__).resolve().parent
SOURCE = HERE.parents[1]
BUILD = SOURCE / "build-board"

# What the initramfs loads for a root on a virtio disk, in this order.
ROOT_MODULES = ["virtio_mmio", "virtio_blk", "crc32c_generic", "mbcache", "jbd2", "ext4"]
PACKAGES = """base-files base-passwd bash busybox-static coreutils dash dbus dbus-user-session
    diffutils dpkg findutils grep init-system-helpers kmod libc-bin libdbus-glib-1-2 libglib2.0-bin
    libpam-systemd libstdc++6 login mount passwd python3 python3-jeepney sed systemd systemd-sysv
    tar udev util-linux""".split()


class BoardError(Exception):
    """The board could not be made or did not run to its end."""


@dataclass(frozen=True)
class Machine:
    """An architecture as Debian and QEMU name it, on a release of Debian."""

    architecture: str
    kernel: str
    compiler: str
    emulator: tuple
    release: str

    @property
    def name(self):
        return f"{self.architecture}-{self.release}"


def machine(architecture, release):
    kernel, compiler, *emulator = {
        "armhf": ("linux-image-armmp", "arm-linux-gnueabihf",
                  "qemu-system-arm", "-cpu", "cortex-a15"),
        "arm64": ("linux-image-arm64", "aarch64-linux-gnu",
                  "qemu-system-aarch64", "-cpu", "cortex-a53"),
    }[architecture]
    return Machine(architecture, kernel, compiler, tuple(emulator), release)


def run(*command, **options):
    """Runs a command; what it prints is shown only if it fails."""
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          errors="replace", check=False, **options)
    if done.returncode != 0:
        raise BoardError(f"{' '.join(map(str, command))}: {done.stdout.strip()[-4000:]}")
    return done.stdout


def make_base(wanted, folder):
    """Unpacks Debian's packages into root/ of a folder, without running anything of them, and does
    what their scripts would have done that the board needs."""
    archives = run(SOURCE / "scripts/packages", "--archives", wanted.release)
    root = folder / "root"
    run("mmdebstrap", "--quiet", "--variant=extract", f"--architectures={wanted.architecture}",
        f"--include={','.join([wanted.kernel, *PACKAGES])}", "", root, "-", input=archives)
    for name in ("passwd", "group"):
        shutil.copy(root / f"usr/share/base-passwd/{name}.master", root / "etc" / name)
    for name in ("home", "mnt", "proc", "run", "sys"):
        (root / name).mkdir(exist_ok=True)
    (root / "etc/hostname").write_text("board\n")
    (root / "etc/machine-id").write_text("")
    (root / "etc/fstab").write_text("LABEL=board-root / ext4 defaults 0 0\n")
    # The unit of a user's manager opens a session by these.
    for kind, module in (("auth", "permit"), ("account", "permit"), ("password", "permit"),
                         ("session", "systemd"), ("session-noninteractive", "systemd")):
        (root / f"etc/pam.d/common-{kind}").write_text(
            f"{kind.partition('-')[0]} optional pam_{module}.so\n")
    run("systemd-sysusers", f"--root={root}")
    run("ldconfig", "-r", root)
    kernel, = (root / "boot").glob("vmlinuz-*")
    shutil.copy(kernel, folder / "kernel")


def modules_in_order(root):
    """The files of the root's modules with what they depend on, which comes first."""
    version, = (entry.name for entry in (root / "lib/modules").iterdir())
    folder = root / "lib/modules" / version
    run("depmod", f"--basedir={root}", version)
    depends = {}
    for line in (folder / "modules.dep").read_text().splitlines():
        path, _, others = line.partition(":")
        depends[path] = others.split()
    paths = {Path(path).name.partition(".")[0]: path for path in depends}
    ordered = []
    for name in ROOT_MODULES:
        if name in paths:  # the others are built in
            path = paths[name]
            ordered += [p for p in [*reversed(depends[path]), path] if p not in ordered]
    return [folder / path for path in ordered]


def make_initramfs(root, folder):
    """A busybox that loads the modules, sets the clock to the seconds since 1970 after
    "board.date=" on the kernel's command line, and changes to the root. A 32-bit kernel itself does
    not take a date after 2038 from the machine's clock."""
    tree = folder / "initramfs"
    for name in ("bin", "dev", "proc", "root"):
        (tree / name).mkdir(parents=True)
    shutil.copy(root / "bin/busybox", tree / "bin/busybox")
    loads = []
    for path in modules_in_order(root):
        shutil.copy(path, tree / path.name)
        loads.append(f"busybox insmod /{path.name}")
        if path.suffix == ".xz":
            run("unxz", tree / path.name)
            loads[-1] = loads[-1].removesuffix(".xz")
    init = tree / "init"
    init.write_text("\n".join([
        "#!/bin/busybox sh", "export PATH=/bin", "busybox mount -t devtmpfs none /dev", *loads,
        "busybox mount -t proc none /proc", "for word in $(busybox cat /proc/cmdline); do",
        'case $word in board.date=*) busybox date -u -s "@${word#*=}";; esac', "done",
        "until busybox mount -t ext4 LABEL=board-root /root; do busybox sleep 0.1; done",
        "busybox umount /dev /proc", "exec busybox switch_root /root /lib/systemd/systemd", ""]))
    init.chmod(0o755)
    archive = subprocess.run(
        ["cpio", "--quiet", "--create", "--format=newc"], cwd=tree, check=True,
        input="\n".join(str(p.relative_to(tree)) for p in tree.rglob("*")).encode(),
        stdout=subprocess.PIPE).stdout
    (folder / "initramfs.cpio").write_bytes(archive)
    shutil.rmtree(tree)


def newest(paths):
    return max(path.stat().st_mtime for path in paths)


def packages_of(wanted):
    """The project's own packages for the machine, built anew if a file of the tree is younger."""
    folder = SOURCE / f"build-package-{wanted.name}"
    names = run("git", "ls-files", "-z", "--cached", "--others", "--exclude-standard", "src",
                "tools", "debian", "packaging", "examples", "man", "cmake", "CMakeLists.txt",
                cwd=SOURCE)
    sources = [SOURCE / name for name in names.split("\0") if name and (SOURCE / name).exists()]
    if not any(folder.glob("*.deb")) or newest(folder.glob("*.deb")) < newest(sources):
        run(SOURCE / "scripts/package", "--only-build", wanted.architecture, wanted.release)
    return [path for path in folder.glob("*.deb") if "-dbgsym_" not in path.name]


def base_of(wanted):
    """The folder with root/ and the kernel, made if they are not there yet."""
    folder = BUILD / wanted.name
    recipe, kept = f"{wanted} {PACKAGES}", folder / "recipe"
    if not kept.exists() or kept.read_text() != recipe:
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
        make_base(wanted, folder)
        kept.write_text(recipe)
    return folder


def make_disk(wanted):
    """The initramfs, and the disk of a board that has not booted yet, with the packages and this
    folder's device/ in /srv. Returns the path of the disk."""
    folder, packages = base_of(wanted), packages_of(wanted)
    root = folder / "root"
    make_initramfs(root, folder)
    put_tests(wanted, root, packages)
    disk = folder / "disk"
    disk.unlink(missing_ok=True)
    run("mke2fs", "-q", "-t", "ext4", "-L", "board-root", "-d", root, disk, "1G")
    return disk


def put_tests(wanted, root, packages):
    """Puts the packages and what runs on the board into its root, in place of earlier ones."""
    shutil.rmtree(root / "srv", ignore_errors=True)
    shutil.copytree(HERE / "device", root / "srv/board")
    for file in ("tests/support/raw_client.py", "packaging/exposure-limits"):
        shutil.copy(SOURCE / file, root / "srv/board")
    run(f"{wanted.compiler}-gcc", "-shared", "-fPIC", "-O2", "-Wall", "-Wextra", "-Werror",
        "-o", root / "srv/board/faults.so", HERE / "device/faults.c")
    (root / "srv/packages").mkdir()
    for package in packages:
        shutil.copy(package, root / "srv/packages")
    units = root / "etc/systemd/system"
    shutil.copy(HERE / "device/board.service", units)
    for link, target in (
            ("multi-user.target.wants/board.service", "../board.service"),
            ("serial-getty@ttyAMA0.service", "/dev/null")):  # it would take the console
        (units / link).parent.mkdir(parents=True, exist_ok=True)
        (units / link).unlink(missing_ok=True)
        (units / link).symlink_to(target)
