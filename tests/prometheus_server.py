# SPDX-License-Identifier: MIT
"""A Prometheus server, set up as docs/monitoring.md tells, on a simulated controller:
prometheus_server.py ZOV

A small server stands in for the node exporter. A minute of the rules is three seconds here.
"""
import contextlib
import http.server
import json
import re
import signal
import socket
import tempfile
import threading
import time
import unittest
import urllib.request
from pathlib import Path

from controllers import AP, Controller
from harness import SOURCE, call, main, start, tool

SECONDS = {"m": 3, "h": 180, "d": 4320}  # that a unit lasts here
DIRECT = urllib.request.build_opener(urllib.request.ProxyHandler({}))


class PrometheusServer(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

        class NodeExporter(http.server.BaseHTTPRequestHandler):
            def do_GET(handler):
                handler.send_response(200)
                handler.end_headers()
                handler.wfile.write((self.folder / "zov.prom").read_bytes())

            def log_message(*_):
                pass
        exporter = http.server.ThreadingHTTPServer(("127.0.0.1", 0), NodeExporter)
        self.addCleanup(exporter.server_close)
        threading.Thread(target=exporter.serve_forever, daemon=True).start()
        self.addCleanup(exporter.shutdown)

        rules = Path(SOURCE, "companions/export/zov.rules.yml").read_text()
        rules = re.sub(r"\b(\d+)([mhd])\b", lambda t: f"{int(t[1]) * SECONDS[t[2]]}s", rules)
        rules, ages = re.subn("(zov_list_timestamp_seconds >) 180", r"\1 9", rules)
        (self.folder / "zov.rules.yml").write_text(rules)
        shown = re.search("(?m)^    rule_files.*\n(    .*\n)*",
                          Path(SOURCE, "docs/monitoring.md").read_text())[0].replace("\n    ", "\n")
        config, targets = re.subn(r"targets: \[.*?\]",
                                  f"targets: ['127.0.0.1:{exporter.server_port}']", shown[4:])
        self.assertEqual((ages, targets), (1, 1))
        (self.folder / "prometheus.yml").write_text(
            "global: {scrape_interval: 1s, evaluation_interval: 1s}\n" + config)
        with socket.create_server(("127.0.0.1", 0)) as free:
            self.address = free.getsockname()
        self.url = "http://%s:%d" % self.address
        with open(self.folder / "log", "wb") as log:
            server = start(
                ["prometheus", f"--config.file={self.folder}/prometheus.yml",
                 f"--storage.tsdb.path={self.folder}/data", f"--web.listen-address={self.url[7:]}"],
                stdout=log, stderr=log)
        self.addCleanup(server.wait, 20)
        self.addCleanup(server.terminate)
        for _ in range(100):
            with contextlib.suppress(OSError), socket.create_connection(self.address):
                break
            time.sleep(0.1)

    def firing(self):
        """The alerts that fire after another look at the controller, as name and device."""
        call(tool("zov-export"), "--acport", self.port, "--format", "prometheus", "--output",
             self.folder / "zov.prom")
        time.sleep(0.5)
        with DIRECT.open(f"{self.url}/api/v1/alerts", timeout=10) as reply:
            found = json.load(reply)["data"]["alerts"]
        return {(one["labels"]["alertname"], one["labels"].get("mac")) for one in found
                if one["state"] == "firing"}

    def expect(self, alerts, minutes, before):
        """These fire when so many minutes have passed; until then at most those from before."""
        begin = time.monotonic()
        while (found := self.firing()) != alerts:
            self.assertLessEqual(found, before)
            self.assertLess(time.monotonic(), begin + 3 * minutes + 15)
        self.assertGreaterEqual(time.monotonic(), begin + 3 * minutes)

    def test_alerts(self):
        none, device, controller = set(), {("ZovDeviceDown", AP)}, {("ZovControllerDown", None)}
        with Controller("--aps", "16", "--switches", "1", "--seed", "2") as ac:  # all are online
            self.port = ac.port
            end = time.monotonic() + 18
            while time.monotonic() < end:
                self.assertEqual(self.firing(), none)
            self.assertEqual(ac.run("cac", "--mac", AP, "--ip", "10.0.0.1"), (0, "", ""))
            self.expect(device, 5, none)
            self.assertEqual(ac.end(signal.SIGTERM), 0)
            self.expect(controller, 3, device)


if __name__ == "__main__":
    main()
