#!/usr/bin/env python3
"""Runs a command against a fresh sandbox service on a free loopback port.

usage: with_sandbox.py SANDBOX_EXECUTABLE COMMAND [ARGS...]

Starts the sandbox with --port 0, reads the port it reports, and runs the
command with "{service}" in its arguments replaced by http://localhost:PORT
and QUORVIX_SERVICE set to the same. The sandbox stops when the command
ends; the command's exit code is the script's.
"""
import os
import re
import signal
import subprocess
import sys


def main():
    if len(sys.argv) < 3:
        print(__doc__, file=sys.stderr)
        return 2
    sandbox = subprocess.Popen([sys.argv[1], "--port", "0"], stdout=subprocess.PIPE, text=True)
    try:
        line = sandbox.stdout.readline()
        match = re.search(r"http://[^:/]+:(\d+)", line)
        if not match:
            print(f"with_sandbox: the sandbox did not report its port: {line!r}", file=sys.stderr)
            return 1
        service = f"http://localhost:{match.group(1)}"
        command = [argument.replace("{service}", service) for argument in sys.argv[2:]]
        environment = dict(os.environ, QUORVIX_SERVICE=service)
        return subprocess.call(command, env=environment)
    finally:
        sandbox.send_signal(signal.SIGTERM)
        try:
            sandbox.wait(timeout=10)
        except subprocess.TimeoutExpired:
            sandbox.kill()


if __name__ == "__main__":
    sys.exit(main())
