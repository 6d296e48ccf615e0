# SPDX-License-Identifier: MIT
"""The topology that zov-export draws, of simulated devices and of what neighbours tell."""
import re
import unittest

import fields
from controllers import Controller, Player
from exporter import devices, make_records, ok, pipe, run
from harness import main, needs


def edges(text):
    """The links: both devices, each with the text of its port if it is a switch."""
    ports = {mac: re.findall(r'<TD PORT="p\d+">(.*?)</TD>', label) for mac, label in
             re.findall(r'^ +"(\S+)" \[shape=none, .*?label=<(.*)>\];$', text, re.M)}

    def port(mac, cell):
        return ports[mac][int(cell)] if cell else None
    return {(one, port(one, cell), other, port(other, other_cell))
            for one, cell, other, other_cell in re.findall(
                r'^  "(\S+?)"(?::p(\d+):e)? -- "(\S+?)"(?::p(\d+):e|:w)', text, re.M)}


class Topology(unittest.TestCase):
    @needs("dot")
    def test_simulated_devices(self):
        def draw(controller, *options):
            return ok(controller.port, "--format", "dot", *options).decode()
        fleet = ("--aps", "20", "--switches", "3")
        switches, aps = ([f"02:A{kind}:00:00:00:{n:02X}" for n in range(1, count + 1)]
                         for kind, count in ((2, 3), (3, 20)))
        with Controller(*fleet) as controller, Controller(*fleet) as same:
            text = draw(controller)
            self.assertEqual(draw(same), text)
            around = [draw(controller, "--around", name) for name in ("sw-floor2", switches[1])]
            self.assertEqual(run(controller.port, "--format", "dot", "--around", "x"),
                             (1, b"", "zov-export: there is no switch 'x'\n"))
            report = {device["mac"]: device for device in devices(controller.port)}
        online = {mac for mac, device in report.items() if device["state"] == 5}
        expected = {(switches[n // 8], str(n % 8 + 1), mac, None)
                    for n, mac in enumerate(aps) if mac in online}
        expected |= {(one, "10", other, "9") for one, other in zip(switches, switches[1:])}
        self.assertLess(len(online), len(report))
        self.assertEqual(edges(text), expected)
        for mac, number, *_ in expected:  # the ports of the report agree
            port = report[mac]["switch_port"][int(number) - 1]
            self.assertEqual((port["port"], port["link_status"]), (int(number), 1))
        self.assertEqual(pipe(text.encode(), "dot", "-Tsvg").count(b'class="edge"'), len(expected))
        near = {edge for edge in expected if switches[1] in edge}
        self.assertEqual([edges(one) for one in around], [near, near])

    def test_what_neighbours_tell(self):
        one, other = make_records([b"n"], [b"h"], 1, (2, 2))
        ap, far = fields.Mac(b"\2\0\0\0\0\3"), fields.Mac(b"\2\0\0\0\0\4")
        names = [fields.shown(mac) for mac in (one["mac"], other["mac"], ap, far)]

        def lldp(mac, port, remote):
            return {"mac": mac, "localPort": port, "remotePort": remote, "name": b"", "model": b""}

        def device(mac, kind, *links):
            times = ("system_time", "update_time", "link_info_last_time", "no_link_info_first_time")
            return dict.fromkeys(times, 1) | {
                "type": kind, "mac": mac, "ip": fields.Ip(4), "name": b"", "model": b"",
                "link": [{"local_port": port, "mac": to, "remote_port": remote}
                         for port, to, remote in links]}
        one["lldp_dev_list"] = [lldp(other["mac"], 5, b"ge5"), lldp(one["mac"], 6, b"self")]
        one["dev_list"] = [device(ap, 3, (3, one["mac"], b"eth1")),
                           device(far, 2, (4, ap, b"p"), (9, fields.Mac(6), b"")),
                           device(other["mac"], 2, (1, one["mac"], b"not this one"))]
        other["dev_list"] = []
        # A single cable: each end's own name for its port. Two: as the end tells that knows both.
        x, y = lldp(one["mac"], 7, b"x"), lldp(one["mac"], 8, b"y")
        for back, ports in (([x], {("5", "7")}), ([], {("5", "ge5")}),
                            ([x, y], {("x", "7"), ("y", "8")})):
            other["lldp_dev_list"] = back
            text = ok(Player(fields.reply([one, other])).port, "--format", "dot").decode()
            found = set()
            for left, left_port, right, right_port in edges(text):
                ends = sorted(((names.index(left), left_port), (names.index(right), right_port)))
                found.add((ends[0][0], ends[1][0], ends[0][1], ends[1][1]))
            self.assertEqual(found, {(0, 1, *pair) for pair in ports} |
                             {(0, 2, "3", None), (2, 3, None, "4")})
            self.assertEqual(text.count(",dashed"), 1)


main()
