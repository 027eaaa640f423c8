"""What the figures were measured on and with, without saying whose machine it is."""

import datetime
import os
import platform
import re
import subprocess
from pathlib import Path


def output(*words):
    done = subprocess.run(words, capture_output=True, text=True, check=False)
    return done.stdout.strip() if done.returncode == 0 else ""


def processor():
    found = re.search(r"^model name\s*:\s*(.*)$", Path("/proc/cpuinfo").read_text(), re.M)
    return found.group(1) if found else platform.machine()


def memory():
    kibibytes = int(re.search(r"^MemTotal:\s*(\d+)", Path("/proc/meminfo").read_text(), re.M).group(1))
    return f"{kibibytes / 2**20:.0f} GiB"


def version(package):
    state, _, number = output("dpkg-query", "-W", "-f", "${db:Status-Abbrev}|${Version}", package).partition("|")
    return number if state.startswith("ii") else ""


def system():
    found = re.search(r'^PRETTY_NAME="(.*)"$', Path("/etc/os-release").read_text(), re.M)
    return found.group(1) if found else platform.system()


def description(packages):
    versions = {package: version(package) for package in packages}
    there = [f"{package} {number}" for package, number in versions.items() if number]
    missing = [package for package, number in versions.items() if not number]
    compiler = output("g++", "--version").splitlines()
    return [
        f"- Date: {datetime.date.today().isoformat()}",
        f"- Machine: {processor()}, {os.cpu_count()} cores, {memory()} of memory; "
        f"{system()}, Linux {platform.release()}",
        f"- Compiler: {compiler[0] if compiler else 'unknown'}; {' '.join(platform.libc_ver())}",
        f"- Peers: {', '.join(there)}",
        f"- Not installed and left out: {', '.join(missing) if missing else 'none'}",
    ]
