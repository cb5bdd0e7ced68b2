# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
"""The first shell: a private CUPS scheduler with a queue and the filter for each till."""

import os
import pathlib
import pwd
import shutil
import socket
import subprocess

from . import documents
from .ipp import Client
from .server_process import ServerProcess

FORMATS = (documents.PDF, documents.PNG, documents.JPEG, documents.TEXT, documents.PWG)
# What may cost the job in progress: a scheduler that was killed prints it again, and a raw port
# confirms nothing.
MAY_PRINT_AGAIN = frozenset(("SIGKILL", "reset", "vanish"))
MAY_LOSE = frozenset(("reset", "vanish"))

_PLACES = {"ServerRoot": "root", "ServerBin": "bin", "CacheDir": "cache", "StateDir": "state",
           "RequestRoot": "requests", "TempDir": "temp", "ServerKeychain": "keys",
           "AccessLog": "log/access", "ErrorLog": "log/error", "PageLog": "log/page",
           "Printcap": "printcap", "DocumentRoot": "root"}
# DirtyCleanInterval: with the default of 30 s a scheduler that is killed forgets the jobs that it
# accepted since, and gives their numbers to others.
_POLICY = """
LogLevel info
DirtyCleanInterval 0
MaxLogSize 0
Browsing No
WebInterface No
DefaultAuthType None
JobRetryInterval 1
MaxJobs 0
MaxClients 1000
PreserveJobHistory Yes
PreserveJobFiles No
ErrorPolicy retry-job
<Location />
  Order allow,deny
  Allow all
</Location>
<Policy default>
  JobPrivateAccess all
  JobPrivateValues none
  <Limit All>
    Order allow,deny
    Allow all
  </Limit>
</Policy>
"""


def is_served(place):
    """Whether somebody listens on this socket. (`lpstat -r` ends with 0 either way.)"""
    with socket.socket(socket.AF_UNIX) as client:
        return client.connect_ex(str(place)) == 0


class CupsShell(ServerProcess):
    name = "cups"

    def __init__(self, build, folder, port):
        self._build, self._folder, self.port = pathlib.Path(build), pathlib.Path(folder), port
        self._prepare()

    def client(self, till, user):
        return self.client_at(f"/printers/till{till}", user)

    def client_at(self, path, user):
        return Client("127.0.0.1", self.port, path, user)

    def add_till(self, till, printer_port):
        ppd = self._build / "ppd" / "wren80.ppd"
        self.run("lpadmin", "-p", f"till{till}", "-E", "-v",
                 f"socket://127.0.0.1:{printer_port}/?waiteof=false&snmp=false", "-P", str(ppd),
                 "-o", "position-default=top", "-o", "pdfAutoRotate-default=no",
                 "-o", "orientation-requested-default=3", "-o", "HalftoneType=None")

    def start(self):
        self._launch(
            ["cupsd", "-f", "-c", self._folder / "root/cupsd.conf", "-s", self._folder / "root/cups-files.conf"],
            lambda: is_served(self._folder / "state/socket"), self._folder / "log/error", env=self._environment())

    def _prepare(self):
        server_bin = pathlib.Path(subprocess.run(
            ["cups-config", "--serverbin"], capture_output=True, text=True, check=False).stdout.strip()
            or "/usr/lib/cups")
        for place in ("root/ppd", "cache", "state", "requests", "temp", "keys", "log"):
            (self._folder / place).mkdir(parents=True)
        for kind in ("backend", "cgi-bin", "daemon", "filter", "notifier", "monitor"):
            (self._folder / "bin" / kind).mkdir(parents=True)
            for program in (server_bin / kind).iterdir():
                if kind != "backend" or program.name in ("socket", "ipp"):
                    (self._folder / "bin" / kind / program.name).symlink_to(program)
        for name in ("rastertowren", "commandtowren"):
            link = self._folder / "bin/filter" / name
            link.unlink(missing_ok=True)
            shutil.copy(self._build / "filter" / name, link)
            link.chmod(0o755)
        (self._folder / "printcap").touch()
        (self._folder / "root/cupsd.conf").write_text(
            f"Listen 127.0.0.1:{self.port}\nListen {self._folder}/state/socket\n{_POLICY}")
        files = [f"{directive} {self._folder}/{place}" for directive, place in _PLACES.items()]
        if os.geteuid() == 0:
            files += ["User lp", "Group lp"]
            self._open_to_filters()
        (self._folder / "root/cups-files.conf").write_text("\n".join(files) + "\n")

    def _open_to_filters(self):
        lp = pwd.getpwnam("lp")
        for place in ("cache", "state", "requests", "temp"):
            os.chown(self._folder / place, 0, lp.pw_gid)
            (self._folder / place).chmod(0o775)

    def _environment(self):
        return {**os.environ, "CUPS_SERVER": str(self._folder / "state/socket"), "LC_ALL": "C",
                "PATH": os.environ["PATH"] + ":/usr/sbin", "DBUS_SYSTEM_BUS_ADDRESS": "unix:path=/nowhere"}

    def run(self, *command):
        """A program of the print system, at this scheduler."""
        done = subprocess.run(command, env=self._environment(), check=False, capture_output=True, text=True)
        if done.returncode != 0:
            raise RuntimeError(f"{command[0]} fails: {done.stderr.strip()}")
