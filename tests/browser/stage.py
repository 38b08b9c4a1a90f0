"""The program under test, and the cycles of its device in the test's hand."""

import json
import os
import shutil
import socket
import struct
import subprocess
import tempfile


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def single(value):
    """The value as the 32-bit float that the sound has."""
    return struct.unpack("f", struct.pack("f", value))[0]


def gain_of(decibels):
    return single(10 ** (decibels / 20))


def route(source, target, gain=1.0, active=True):
    """A route of the patch file, of channels counted from 1."""
    return {"inputChannel": source - 1, "outputChannel": target - 1, "gain": gain, "active": active}


class Stage:
    """A run with the door open, on a device whose cycles the test can hold."""

    def __init__(self, routes=(), scenes=None, token=None, **words):
        self.folder = tempfile.mkdtemp(prefix="tolvane-browser-")
        self.port = free_port()
        self.words = words
        self.write_patch(routes)
        if scenes is not None:
            os.mkdir(self.path("scenes"))
            for name, its in scenes.items():
                self.write(f"scenes/{name}.json", its)
            self.words["scenes"] = self.path("scenes")
        if token is not None:
            descriptor = os.open(self.path("token"), os.O_WRONLY | os.O_CREAT, 0o600)
            with os.fdopen(descriptor, "w") as file:
                file.write(token + "\n")
            self.words["token"] = self.path("token")
        self.start()

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, value):
        with open(self.path(name), "w", encoding="utf-8") as file:
            json.dump(value, file)

    def write_patch(self, routes):
        self.write("patch.json", list(routes))

    @property
    def url(self):
        return f"http://127.0.0.1:{self.port}/"

    def start(self):
        words = {"http": f"127.0.0.1:{self.port}", "patch": self.path("patch.json"), **self.words}
        self.process = subprocess.Popen(
            [os.environ["TOLVANE_STAGE"], *(f"{key}={value}" for key, value in words.items())],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, bufsize=1)
        for line in self.process.stderr:
            if "routing on" in line:
                return
        raise AssertionError("the program ended")

    def kill(self):
        """Ends the program as a power cut would."""
        self.process.kill()
        self._wait()

    def end(self):
        if self.process.poll() is None:
            self.process.stdin.close()  # lets all cycles go and ends the run
            self._wait()
        shutil.rmtree(self.folder)

    def _wait(self):
        self.process.wait(30)
        for stream in (self.process.stdin, self.process.stdout, self.process.stderr):
            stream.close()

    def _ask(self, word):
        self.process.stdin.write(word + "\n")
        for line in self.process.stdout:  # the program traces its start here
            words = line.split()
            if word == "go" and words == ["going"]:
                return None
            if word != "go" and words[:1] == ["cycle"]:
                self.cycle = int(words[1])
                return [single(float(sample)) for sample in words[2:]]
        raise AssertionError("the program ended")

    def hold(self):
        """Holds the device in the cycle that runs. The samples are those of the outputs in it."""
        return self._ask("hold")

    def step(self):
        """Lets the held cycle end and the next one run up to its end."""
        return self._ask("step")

    def go(self):
        self._ask("go")
