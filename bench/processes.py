"""Runs whole programs and tells what they cost."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import time

CHUNK = 1 << 20  # bytes written at a time


class Cost:
    """What one run cost: wall and processor seconds."""

    def __init__(self, wall, processor):
        self.wall = wall
        self.processor = processor


def run(command):
    """Runs a program to its end, its output thrown away."""
    start = time.monotonic()
    pid = subprocess.Popen([str(word) for word in command], stdout=subprocess.DEVNULL).pid
    _, status, usage = os.wait4(pid, 0)
    if status != 0:
        raise RuntimeError(f"{command[0]} failed: {os.waitstatus_to_exitcode(status)}")
    return Cost(time.monotonic() - start, usage.ru_utime + usage.ru_stime)


def peak_memory(command):
    """The most memory that a program's run held at once, in KiB."""
    out = subprocess.run(["time", "-f", "%M", *command], check=True, stdout=subprocess.DEVNULL,
                         stderr=subprocess.PIPE, text=True).stderr
    return int(out.split()[-1])


def least(runs, commands, what):
    """The least cost of each command; they take turns."""
    best = {}
    for _ in range(runs):
        for name, command in commands.items():
            cost = getattr(run(command), what)
            best[name] = min(cost, best.get(name, cost))
    return best


class Room:
    """A folder with recordings and a host's settings; gone when it is left."""

    def __init__(self, corvo):
        self.corvo = corvo

    def __enter__(self):
        self.path = pathlib.Path(tempfile.mkdtemp(prefix="corvo-bench-"))
        self.home = self.path / "home"
        (self.home / "tempfiles").mkdir(parents=True)
        settings = self.home / "corvo_settings.ini"
        settings.write_text(f"TEMPFILESDIR={self.home}/tempfiles\n")
        return self

    def __exit__(self, *_):
        shutil.rmtree(self.path)

    def recording(self, size):
        """An unsealed recording of that many bytes of audio, made once."""
        path = self.path / f"{size}.wav"
        if not path.exists():
            audio = self.path / "audio"
            with audio.open("wb") as out:
                for start in range(0, size, CHUNK):
                    out.write(os.urandom(min(CHUNK, size - start)))
            subprocess.run([self.corvo, "--home", self.home, "record", path, audio, "--codec",
                            "g726", "--start", "2024-05-17T09:30:00Z"], check=True)
            audio.unlink()
        return path

    def copies(self, size, count):
        """Copies of an unsealed recording, on the disk."""
        made = []
        for i in range(count):
            made.append(self.path / f"copy-{i}.wav")
            shutil.copyfile(self.recording(size), made[-1])
        os.sync()
        return made

    def tree(self, size, count):
        """A folder of sealed recordings."""
        folder = self.path / f"tree-{size}-{count}"
        folder.mkdir()
        first = shutil.copyfile(self.recording(size), folder / "0.wav")
        subprocess.run([self.corvo, "--home", self.home, "seal", first], check=True,
                       stdout=subprocess.DEVNULL)
        for i in range(1, count):
            shutil.copyfile(first, folder / f"{i}.wav")
        os.sync()
        return folder

    def seal_times(self, program, operation, files):
        """Processor microseconds and pauses of each file, as the program tells them."""
        out = subprocess.run([program, operation, self.home, *files], check=True,
                             capture_output=True, text=True).stdout
        return [tuple(int(word) for word in line.split()) for line in out.splitlines()]
