# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
"""Stands between a shell and the printers of a run for figures, and notes when each job begins.

python3 -m street.relay PORT...: prints a line with its own port for each printer's PORT. When its
standard input ends it prints, for each printer, a JSON list of the times (CLOCK_MONOTONIC) at which
the first bytes of a job came.
"""

import asyncio
import json
import sys
import time

from .paper import BEGIN

_CHUNK_BYTES = 1 << 16


class Relay:
    def __init__(self, port):
        self._port = port
        self._connections = set()  # the loop keeps no reference
        self.times = []

    async def connect(self, reader, writer):
        task = asyncio.current_task()
        self._connections.add(task)
        task.add_done_callback(self._connections.discard)
        to_reader, to_writer = await asyncio.open_connection("127.0.0.1", self._port)
        await asyncio.gather(self._pump(reader, to_writer, self._note), self._pump(to_reader, writer))
        writer.close()
        to_writer.close()

    @staticmethod
    async def _pump(reader, writer, note=lambda tail, data: b""):
        tail = b""
        try:
            while data := await reader.read(_CHUNK_BYTES):
                tail = note(tail, data)
                writer.write(data)
                await writer.drain()
            writer.write_eof()
        except OSError:
            pass  # one side has closed; the other one sees it

    # A job's first bytes may come in two pieces.
    def _note(self, tail, data):
        seen = tail + data
        self.times += [time.monotonic()] * seen.count(BEGIN)
        return seen[len(seen) - len(BEGIN) + 1:] if len(seen) >= len(BEGIN) else seen


async def _serve(ports):
    relays = [Relay(port) for port in ports]
    for relay in relays:
        server = await asyncio.start_server(relay.connect, "127.0.0.1", 0)
        print(server.sockets[0].getsockname()[1], flush=True)
    await asyncio.get_running_loop().run_in_executor(None, sys.stdin.read)
    for relay in relays:
        print(json.dumps(relay.times), flush=True)


if __name__ == "__main__":
    asyncio.run(_serve([int(port) for port in sys.argv[1:]]))
