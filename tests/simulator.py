# SPDX-License-Identifier: MIT
"""Runs the simulated controller and zov against each other: simulator.py ZOV

Actions must show; the simulator must serve, misbehave and end as it is asked to. That configuration
comes back as it was sent is seen with zov-export's help, in export_cfg.py.
"""
import contextlib
import json
import os
import re
import resource
import signal
import socket
import struct
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

from controllers import AP, SWITCH, Controller, ac_sim
from harness import SOURCE, main, program, start

NOBODY = "02:00:00:00:00:99"
# Of --config.
BAD_CONFIGS = [
    "lose:", "loses", "refuse", "refuse:19", "refuse:0:", "refuse:256:", "refuse:x:",
    f"refuse:1:{'x' * 256}", "late", "late:", "late:0", "late:-1", "late:inf", "late:1s", "offline",
    "offline:0", "offline:ever", "alter", *(f"alter:{how}" for how in (
        "", "name", "=x", "colour=1", "radio.tx_power=1", "radio[].tx_power=1", "radio[0=1",
        "radio[256].tx_power=1", "radio[0]=1", "radio[0]tx_power=1", "radio[0].tx_power=",
        "radio[0].tx_power=4294967296", "radio[0].tx_power=-2147483649", "radio=x",
        "radio[0].portal.port=65536", "dns1=1.2.3", "ipv4=1.2.3.4/255.0.0.0", "ac_list[0]=x",
        f"ac_list={'x' * 256}", "manage_mac_list=2:0:0:0:0:1x", "manage_mac_list=2:0:0:0:0:1:7",
        "manage_mac_list=x,2:0:0:0:0:1",
        "manage_mac_list=:::::", "ipv4=", "password=ab", f"password={'0g' * 16}",
        "radio[0].data_rate=x", "radio[0].wlan[0].wep.key=x"))]


def item(number, value, index=b"\0"):
    """An item of a configuration; its value is bytes or a number of 32 bits."""
    value = struct.pack(">I", value) if isinstance(value, int) else value
    return struct.pack(">HH", number, len(index)) + index + struct.pack(">H", len(value)) + value


class Actions(unittest.TestCase):
    def setUp(self):
        self.controller = self.enterContext(Controller("--aps", "8"))

    def test_management(self):
        new, address = "00:11:22:33:44:55", "10.9.0.9/255.255.0.0/10.9.0.1"
        self.controller.ok("cfg", "--mac", new, "--add", "--ip", address)
        self.assertIn(new, self.controller.ok("wtps", "--breif"))
        self.assertEqual(self.controller.record(new)["wtp_cfg"]["ipv4"], address)
        self.assertEqual(self.controller.run("cfg", "--mac", new, "--add")[::2],
                         (1, f"ERROR: Device {new} is already managed.\n"))
        self.controller.ok("cfg", "--mac", new, "--del")
        self.assertEqual(self.controller.record(new)["managed"], 0)
        self.assertEqual(self.controller.run("cfg", "--mac", NOBODY, "--del")[::2],
                         (1, f"ERROR: Device {NOBODY} was not found.\n"))
        with Controller("--max-wtps", "9") as controller:  # one more than are managed
            controller.ok("cfg", "--mac", new, "--add")
            self.assertEqual(controller.run("cfg", "--mac", "00:11:22:33:44:66", "--add")[::2],
                             (1, "ERROR: Reach the maximum number of managed Devices.\n"))
        with Controller("--result", f"{new}=0", "--result", f"{AP}=0") as controller:
            for mac, answer in ((new, (1, "", f"ERROR: Device {new} was not found.\n")),
                                (AP, (0, "", ""))):
                self.assertEqual(controller.run("rst", "--mac", mac), answer)
        with Controller("--result", f"{new}=10") as controller:
            self.assertEqual(controller.run("cfg", "--mac", new, "--add")[::2],
                             (1, f"ERROR: Device {new} is busy.\n"))
            five = "0014" + 20 * "00"  # addresses
            for items in ("000a 0003 0000 0004 0a090009", f"001a 0004 0000 {five}", "0002 0003",
                          f"001b 0003 0001 00 {five}", f"001b 0003 0000 {five} 00"):
                self.assertEqual(controller.replies(f"03 001122334466 {items}", "00")[:1], b"\3")

    def test_upgrades_that_do_not_begin(self):
        self.controller.ok("upg", "--mac", AP)
        self.assertEqual(self.controller.run("upg", "--mac", AP)[::2],
                         (1, f"ERROR: Device {AP.lower()} is busy.\n"))
        newest = "02:A2:00:00:00:02"
        with Controller() as controller:
            self.assertEqual(controller.run("upg", "--mac", newest)[::2], (
                1, f"ERROR: Device {newest.lower()} has no available image.\n"))

    def test_upgrades_that_fail_or_hang(self):
        for how, states, progress in (("fail", [1, 2, 3, 5, 5], 80), ("hang", [1, 2, 2, 2, 2], 40)):
            hows = [f"--upgrade={mac}={how}" for mac in (AP, NOBODY)]
            with Controller(*hows) as controller:
                version = controller.record(AP)["sw_ver"]
                controller.ok("upg", "--mac", AP)
                seen = [controller.record(AP) for _ in states]
            self.assertEqual([record["upg_state"] for record in seen], states)
            self.assertEqual((seen[-1]["progress"], seen[-1]["sw_ver"]), (progress, version))

    def test_changes_of_state_by_the_clock(self):
        with Controller("--upgrade", f"{AP}=2") as controller:
            joined, began, seen = controller.record(AP)["change_time"], int(time.time()), []
            controller.ok("upg", "--mac", AP)
            while time.time() < began + 20 and (not seen or seen[-1][1] != 4):
                record = controller.record(AP)
                seen.append((record["state"], record["upg_state"], record["change_time"] != joined))
            # Waiting, loading, writing, restarting, back again.
            self.assertEqual(list(dict.fromkeys(seen)), [
                (5, 1, False), (5, 2, False), (5, 3, False), (0, 3, True), (5, 4, True)])
            self.assertGreaterEqual(record["change_time"], began)

    def test_kick(self):
        record = self.controller.record(AP)
        radio, wlan, sta = next((r, w, s["mac"]) for r, radio in enumerate(record["radio"])
                                for w, wlan in enumerate(radio["wlan"]) for s in wlan["sta"])
        kick = "kick", "--mac", AP, "--client", sta, "--radio"
        self.controller.ok(*kick, ["2g", "5g"][radio], "--wlan", str(wlan + 1))
        before, after = (one["radio"][radio]["wlan"][wlan]["sta"]
                         for one in (record, self.controller.record(AP)))
        self.assertEqual(after, [one for one in before if one["mac"] != sta])
        for band, number in (("5g1", "1"), ("5g", "0"), ("5g", "9")):  # what it does not have
            self.assertEqual(self.controller.run(*kick, band, "--wlan", number)[::2], (
                1, f"ERROR: Device {AP.lower()} doesn't support this operation.\n"))

    def test_reset_redirect_and_the_rest(self):
        began = int(time.time())
        self.controller.ok("rst", "--mac", AP, "--wait", "60")
        self.assertEqual(self.controller.record(AP)["uptime"], 0)
        self.controller.ok("rst", "--mac", AP, "--factory")
        record = self.controller.record(AP)
        self.assertEqual((record["uptime"] < 60, record["change_time"] < began), (True, True))
        self.controller.ok("cac", "--mac", AP, "--ip", "controller2")
        record = self.controller.record(AP)
        self.assertEqual((record["state"], record["uptime"], record["change_time"] >= began),
                         (0, 0, True))
        self.assertEqual(self.controller.run("rst", "--mac", AP)[::2],
                         (1, f"ERROR: No response from device {AP.lower()}.\n"))
        for on in "01":
            for command in (["initfw"], ["nodc"], ["dbg", "--enable", on, "--wtp"],
                            *([name, "--enable", on, "--radio", "2g"]
                              for name in ("bgscan", "autotp", "autoch"))):
                self.controller.ok(*command)
        powers = []
        for number in "01":
            self.controller.ok("autotp", "--radio", "5g", "--enable", number)
            powers.append([radio["cur_cfg"]["tx_power"] for radio in
                           self.controller.record("02:A3:00:00:00:02")["radio"]])
        self.assertEqual(powers, [[17, 20], [17, 17]])  # of 23, by three quarters
        with Controller("--aps", "3") as controller:  # with two, two and three radios
            for radios in ((3, 3, 1, 0), (2, 2, 1, 0)):
                for band, count in enumerate(radios):
                    survey = controller.replies(f"0b 0009 {band:08x} 01 00000000", "00")
                    self.assertEqual(survey, bytes((0, 0, 0, count, *[0] * count)))
                controller.run("cac", "--mac", AP, "--ip", "controller2")
        self.assertEqual(len(self.controller.replies("10 00000001 07", "00")), 29)  # no reply to it
        path = Path(f"/tmp/ac-sim.{self.controller.process.pid}.mem")
        with tempfile.NamedTemporaryFile() as kept:
            path.symlink_to(kept.name)
            self.assertRegex(self.controller.ok("mem"), r"Total \d+ bytes, \d+ entries\n$")
            self.assertEqual((kept.read(), path.exists()), (b"", False))

    def test_memory_that_cannot_be_written(self):
        def limit():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (0, resource.RLIM_INFINITY))
        with Controller(prepare=limit, errors=subprocess.PIPE) as controller:
            self.assertEqual(controller.ok("mem"), "Total 0 bytes, 0 entries\n")
            path = f"/tmp/ac-sim.{controller.process.pid}.mem"
            with controller.process.stderr as errors:
                self.assertEqual(errors.readline(),
                                 f"ac-sim: cannot write {path}: File too large\n")
            resource.prlimit(controller.process.pid, resource.RLIMIT_FSIZE, (-1, -1))

    def test_automatic_channels(self):
        with Controller("--aps", "14") as controller:
            basic = json.loads("{" + controller.ok("wtps", "--json", "--basic") + "}")["wtp_list"]
            self.assertEqual({(one["model"], one.get("sku")) for one in basic}, {
                ("AP-220", "AP-220-EU"), ("AP-430", "AP-430-EU"), ("AP-650", "AP-650-WW"),
                ("SW-10P", None), ("BR-100", None)})  # of an access point only
            for band, channels in enumerate(((1, 6, 11), range(36, 65, 4))):
                controller.ok("autoch", "--radio", ("2g", "5g")[band], "--enable", "1")
                records = json.loads("{" + controller.ok("wtps", "--json") + "}")["wtp_list"]
                seen = [record["radio"][band]["cur_cfg"]["channel"] for record in records
                        if record["state"] == 5 and record["managed"] and "radio" in record]
                self.assertEqual(seen, [channels[n % len(channels)] for n in range(len(seen))])
                self.assertGreater(len(seen), len(channels))


class Configurations(unittest.TestCase):
    maxDiff = None
    NEAR = item(2, b"near", b"")

    def test_refused_altered_and_without_a_reply(self):
        hows = ("location=a=[b]", "timezone=-300", "wtp_cfg.radio[1].tx_power=4294967295",
                "radio[1].portal.port=65535", "radio[1].portal.radius_server=1.2.3.4",
                "radio[1].data_rate=5.5M", "radio[0].wlan[3].wep.key[3]=abc",
                "radio[0].wlan[0].acl.mac=", "radio[0].wlan[1].acl.mac=2:0:0:0:0:1,2:0:0:0:0:2",
                "password=00112233445566778899AABBCCDDEEFF", "ac_list=a,b", "lan_port=1",
                "ipv4=10.9.9.2/255.255.255.0/10.9.9.1",
                # What the device does not have.
                "radio[2].tx_power=1", "radio[0].wlan[4].enable=1", "poe_port[0].enable=0",
                "radio[0].wlan[3].wep.key[4]=x", "radio=3")
        with Controller(*(f"--config={AP}=alter:{how}" for how in hows)) as controller:
            expected = controller.record(AP)["wtp_cfg"]
            first, second = expected["radio"]
            expected |= {
                "location": "a=[b]", "timezone": -300, "ipv4": "10.9.9.2/255.255.255.0/10.9.9.1",
                "password_md5": "00112233445566778899aabbccddeeff", "ac_list": ["a", "b"],
                "lan_port": expected["lan_port"][:1], "name": "new"}
            second |= {"tx_power": 4294967295, "data_rate": "5.5M"}
            second["portal"] |= {"port": 65535, "radius_server": "1.2.3.4"}
            first["wlan"][3]["wep"]["key"][3] = "abc"
            first["wlan"][0]["acl"]["mac"] = []
            first["wlan"][1]["acl"]["mac"] = ["02:00:00:00:00:01", "02:00:00:00:00:02"]
            reply = controller.send_items(AP, item(1, b"new", b"") + self.NEAR)
            self.assertEqual((reply, controller.record(AP)["wtp_cfg"]), (b"\0\0", expected))
        for how, replies, place in (("refuse:19:no: a:b", [b"\x13\7no: a:b"] * 2, "Floor 1"),
                                    ("refuse:255:", [b"\xff\0"], "Floor 1"),
                                    ("lose", [b"", b"\0\0"], "near")):
            with self.subTest(how), Controller(f"--config={AP}={how}") as controller:
                for reply in replies:
                    try:
                        self.assertEqual(controller.send_items(AP, self.NEAR), reply)
                    except ConnectionResetError:  # since nobody has read the goodbye
                        self.assertEqual(reply, b"")
                    self.assertEqual(controller.record(AP)["wtp_cfg"]["location"], place)

    def test_late_and_offline(self):
        hows = (f"{AP}=late:1", f"{AP}=alter:name=x", f"{AP}=offline:1", f"{SWITCH}=offline:never")
        with Controller(*(f"--config={how}" for how in hows)) as controller:
            def look(mac):
                record = controller.record(mac)
                return (record["state"], record["wtp_cfg"]["name"], record["wtp_cfg"]["location"],
                        record["change_time"] >= began)
            began, sent, seen, back = int(time.time()), time.monotonic(), [], (5, "x", "near", True)
            self.assertEqual(controller.send_items(AP, self.NEAR + item(46, b"", b"")),
                             b"\x13\x21item 46 has a bad length or index")
            self.assertEqual(controller.send_items(AP, self.NEAR), b"\0\0")
            while time.monotonic() < sent + 20 and seen[-1:] != [back]:
                seen.append(look(AP))
                if [state for state, *_ in seen[-2:]] == [5, 0]:
                    self.assertEqual(controller.send_items(AP, self.NEAR)[:1], b"\x0c")
            self.assertEqual(list(dict.fromkeys(seen)), [
                (5, "ap-floor1-01", "Floor 1", False), (0, "x", "near", True), back])
            self.assertGreaterEqual(time.monotonic(), sent + 2)
            self.assertEqual(controller.send_items(SWITCH, self.NEAR), b"\0\0")
            self.assertEqual(look(SWITCH), (0, "sw-floor1", "near", True))

    def test_rows_of_ports(self):
        with Controller() as controller:
            def stored(name):
                return controller.record(SWITCH)["wtp_cfg"][name]
            # Without a number of elements, and with the port behind another setting.
            expected = stored("poe_port")
            controller.send_items(SWITCH, item(16, 3, b"\0") + item(14, 10, b"\0"))
            self.assertEqual(controller.send_items(SWITCH, item(14, 10, b""))[:1], b"\x13")
            expected[9]["priority"] = 3
            self.assertEqual(stored("poe_port"), expected)
            for name, elements, rows in (  # the rows that are left, by what they were before
                    ("switch_port", [{"port": 9, "mode": 1}, {"port": 3, "mode": 2}],
                     [(2, {"mode": 2}), (8, {"mode": 1})]),
                    ("poe_port", [{"port": 9, "priority": 3}, {"port": 77, "enable": 0}],
                     [(1, {"port": 77, "enable": 0}), (8, {"priority": 3})]),
                    ("pd_lifeguard", [{"port": 5, "ping_max_count": 1}, {"port": 1, "enable": 0}],
                     [(0, {"enable": 0}), (None, {"port": 5, "ping_max_count": 1})])):
                before = stored(name)
                new = {key: {int: 0, str: ""}[type(value)] for key, value in before[0].items()}
                new |= {"specified_ip": "0.0.0.0"} if name == "pd_lifeguard" else {}
                controller.configure(SWITCH, {name: elements})
                self.assertEqual(stored(name), [(new if row is None else before[row]) | change
                                                for row, change in rows], name)

    def test_restarts_by_a_switch(self):
        with Controller() as controller:
            began, counts = time.monotonic(), [[0, 0]]
            rules = [{"port": 1, "enable": 1}, {"port": 2, "enable": 0}]
            controller.configure(SWITCH, {"pd_lifeguard": rules})
            while time.monotonic() < began + 20 and counts[-1] == [0, 0]:
                time.sleep(0.1)
                found = controller.record(SWITCH)["wtp_cfg"]["pd_lifeguard"]
                counts.append([rule["reboot_count"] for rule in found])
            self.assertEqual(counts[-1], [1, 0])
            self.assertGreater(time.monotonic(), began + 9)


class Service(unittest.TestCase):
    def test_hundred_clients_at_once(self):
        def steady(text):
            return re.sub(r'"(uptime|reboot_count)":\d+', "", text)
        with Controller("--aps", "20") as controller, contextlib.ExitStack() as stack:
            whole = controller.ok("wtps", "--json")
            # Into files: who waits for a reader of its output keeps the others waiting.
            files = [stack.enter_context(tempfile.TemporaryFile("w+")) for _ in range(100)]
            words = [program(), "wtps", "--json", "--acport", controller.port]
            clients = [start(words, stdout=file, stderr=subprocess.PIPE) for file in files]
            for client, file in zip(clients, files):
                self.assertEqual((client.communicate(timeout=120)[1], client.returncode), (b"", 0))
                file.seek(0)
                self.assertEqual(steady(file.read()), steady(whole))

    def test_misbehaviour(self):
        busy = "ERROR: System is busy and cannot handle your request now, please try again later.\n"
        refused = "ERROR: Something Wrong Happened While Connecting To The AC Server.\n"
        for options, *expected in (
                ("--busy", 1, "", busy), ("--refuse=7", 1, "", refused), ("--cut=2", 1, "", ""),
                ("--cut=300", 1, "", ""), ("--trickle", 0, "online WTP: 9/9\n", "")):
            with self.subTest(options=options), Controller(options) as controller:
                self.assertEqual(controller.run("online"), tuple(expected))
        with Controller() as controller:
            info = controller.replies("07", "00")
        for size in (28, 29, 30):  # one whole reply is 29 bytes long
            with Controller("--cut", str(4 + size)) as controller:
                self.assertEqual(controller.replies("0707"), (info + info)[:size])
        with Controller("--result", f"{AP}=10") as controller:
            self.assertEqual(controller.run("rst", "--mac", f"{AP},{SWITCH}"),
                             (1, "", f"ERROR: Device {AP.lower()} is busy.\n"))

    def test_seeds(self):
        def fleet(*options):
            with Controller(*options) as controller:
                return re.sub(r'"\w*time":\d+', "", controller.ok("wtps", "--json", "--password"))
        seventh = fleet("--seed", "7")
        self.assertEqual((fleet("--seed", "7"), fleet()), (seventh, fleet("--seed", "1")))
        self.assertNotEqual(fleet("--seed", "8"), seventh)

    def test_requests_that_do_not_fit_are_refused_whole(self):
        macs = ",".join("2:{}:{}:{}:{}:1".format(*f"{n:04x}") for n in range(10922))
        with Controller("--verbose") as controller:
            self.assertEqual(controller.run("rst", "--mac", macs), (
                1, "", "ERROR: Request of 65540 bytes is too long, at most 65535 fit.\n"))
            # Three bytes fewer fit: every device answers.
            status, _, err = controller.run("scan", "--radio", "2g", "--mac", macs)
            self.assertEqual((status, err.count("was not found")), (1, 10922))

            # A device's output is cut to what its length can tell.
            text = f"sh: {'x' * 65520}: not found\n"
            self.assertEqual(controller.ok("sh", "--mac", AP, "--cmd", "x" * 65520),
                             f"WTP {AP.lower()} output:\n{text[:65535]}\n")

    def test_shell_commands(self):
        with Controller() as controller:
            total, used = (controller.record(AP)["mem"][name] for name in ("total", "used"))
            memory = ("              total        used        free\n"
                      f"Mem:         {total}      {used}      {total - used}\n")
            for command, out, err in (
                    ("uname -a", "Linux ap-floor1-01 5.10.0 armv7l GNU/Linux\n", ""),
                    ("free", memory, ""), ("cat /etc/version", "2.0.1\n", ""),
                    ("reboot", "", "sh: reboot: not found\n")):
                for kind, part in ("0", out + err), ("1", out), ("2", err):
                    shown = controller.ok("sh", "--mac", AP, "--cmd", command, "--type", kind)
                    self.assertEqual(shown, f"WTP {AP.lower()} output:\n{part}\n", command)
            self.assertRegex(controller.ok("sh", "--mac", AP, "--cmd", "uptime"),
                             r"output:\nup \d{5} min, load average: 0.08, 0.03, 0.01\n")

    def test_clients_that_do_nothing_hold_up_nobody(self):
        everything = "01 0000003f 0000"
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with tempfile.TemporaryDirectory() as folder, \
                    Controller("--aps", "4000", "--pid-file", f"{folder}/pid") as controller, \
                    controller.client(), controller.client("01 0000"), \
                    controller.client(everything), controller.client(everything) as slow, \
                    slow.makefile("rb") as reply:
                self.assertEqual(int(Path(f"{folder}/pid").read_text()), controller.process.pid)
                self.assertRegex(controller.ok("online"), r"^online WTP: \d+/\d+\n$")
                whole = controller.replies(everything, "00")
                self.assertGreater(len(whole), 16 << 20)  # more than sockets hold
                slow.sendall(b"\0")
                self.assertEqual(len(reply.read()), len(whole))
                asked = time.monotonic()
                self.assertEqual(controller.end(number), 0)
                self.assertLess(time.monotonic() - asked, 1)
                self.assertFalse(os.path.exists(f"{folder}/pid"))

    def test_log_that_nobody_reads(self):
        reader, writer = os.pipe()
        self.addCleanup(os.close, reader)
        self.addCleanup(os.close, writer)
        with Controller(errors=writer) as controller:
            turn_on, asked = "0f 00000001 00000000 000000000000", 4000  # 31 bytes each
            self.assertEqual(len(controller.replies(turn_on, "07" * asked, "00")), 29 * asked)
            self.assertTrue(os.get_blocking(writer), "others use the same pipe")
            written = os.read(reader, 1 << 20).decode().splitlines()
            self.assertEqual(set(written[1:]), {"ac-sim: controller information"})
            controller.ok("cac", "--mac", AP, "--ip", "x\nac-sim: y\x1b[2J")
            self.assertEqual(os.read(reader, 1 << 20).decode().splitlines(), [
                f"ac-sim: lost lines: {asked + 1 - len(written)}", "ac-sim: redirect",
                "ac-sim: devices are sent to x?ac-sim: y?[2J"])

    def test_requests_that_lie_about_their_length(self):
        with Controller() as controller:
            info = controller.replies("07", "00")
            for lie in (
                    "63", "02 0010 0000 0000000000000000", "06 0008 0000 00000000 0001",
                    "0a 0004 00 0000", "0b 0008", "0c 000a", "0d 0000",
                    "0e 0006 0001 0001 020000000001 0000", "11 0003 0000 05",
                    "12 0009 0000 00 00000000 0001", "13 0003 0000",
                    "13 0000 5555",  # 0x20000 bytes
                    "05 00000007 0000 03 00000000", "05 04000000", "05 ffffffff"):
                with self.subTest(lie):
                    self.assertEqual(controller.replies("07", lie), info)  # to what came before
            # Only the shell's length is that of its low bits; what comes in pieces is one request.
            shell = bytes.fromhex("12 0008 0000 00 00000000 ffff") + b"x" * 65535
            self.assertEqual(controller.replies(shell[:2], shell[2:9], shell[9:], "07", "00"), info)

    def test_clients_hold_so_much_and_no_more(self):
        def output(devices):  # of 65538 bytes each, with its result and length
            macs = struct.pack(">H", devices) + bytes.fromhex(AP.replace(":", "")) * devices
            body = macs + bytes(5) + struct.pack(">H", 65520) + b"x" * 65520
            return b"\x12" + struct.pack(">H", len(body) & 0xffff) + body
        with Controller() as controller, contextlib.ExitStack() as stack:
            def client(request):
                return stack.enter_context(controller.client(request))
            slow = [client(output(1000)) for _ in range(4)]  # 262152000 bytes of 268435456
            self.assertEqual([one.recv(1, socket.MSG_PEEK) for one in slow], [b"\0"] * 4)
            self.assertEqual(client(output(1000)).recv(1), b"")
            with self.assertRaises(ConnectionError):
                unfinished = client("05 03000000")
                unfinished.sendall(bytes(16 << 20))
                unfinished.recv(1)
            with slow[0].makefile("rb") as reply:
                self.assertEqual(len(reply.read(65538000)), 65538000)
            self.assertEqual(len(controller.replies(output(1000), "00")), 65538000)
            self.assertEqual(client(output(65535)).recv(1), b"")  # beyond it alone
            self.assertEqual(controller.ok("online"), "online WTP: 9/9\n")
        with Controller("--aps", "28000") as controller, contextlib.ExitStack() as stack:
            # Two lists of more than half of it fit, a third does not.
            lists = [stack.enter_context(controller.client("01 0000003f 0000")) for _ in range(3)]
            self.assertEqual([one.recv(1) for one in lists], [b"\0", b"\0", b""])

    def test_clients_wait_for_a_descriptor(self):
        kind, usual = resource.RLIMIT_NOFILE, resource.getrlimit(resource.RLIMIT_NOFILE)
        with Controller(prepare=lambda: resource.setrlimit(kind, (12, usual[1]))) as controller:
            address, clients = ("127.0.0.1", int(controller.port)), []
            for _ in range(12):
                clients.append(socket.create_connection(address))
                clients[-1].settimeout(0.3)
            with self.assertRaises(TimeoutError):
                for client in clients:
                    self.assertEqual(client.recv(4), b"\0\0\0\1")
            clients[0].close()
            client.settimeout(20)
            self.assertEqual(client.recv(4), b"\0\0\0\1")
            for one in clients:
                one.close()
            resource.prlimit(controller.process.pid, kind, usual)

    def test_items_that_ask_for_more_than_the_device_holds(self):
        more, bad = "asks for more than the device holds", "has a bad length or index"
        counts = ((AP, 4, 2, 3), (AP, 4, 0, 0xffffffff), (AP, 17, 16, 17), (AP, 93, 2, 3),
                  (SWITCH, 8, 10, 11), (SWITCH, 13, 10, 11), (SWITCH, 24, 10, 256),
                  (SWITCH, 38, 10, 11))
        rows = [(mac, number, item(number, fits), item(number, wrong), more)
                for mac, number, fits, wrong in counts]
        rows += [(AP, 40, *(item(40, bytes(6 * n), b"\0\0") for n in (256, 257)), more),
                 (AP, 5, item(5, bytes(4), b"\1"), item(5, bytes(4), b"\2"), bad),  # a third radio
                 (AP, 3, item(3, b"\12\0\0\1" * 3, b""), item(3, bytes(8), b""), bad),
                 (AP, 4, item(4, 2), item(4, b"\0\0\2"), bad),
                 (AP, 161, item(161, bytes(6), b"\0\0"), item(161, bytes(7), b"\0\0"), bad),
                 (AP, 157, item(157, 60, b""), item(157, b"\0<", b""), bad),
                 (AP, 5, item(5, 17, b"\0"), item(5, 17, b""), bad),
                 (AP, 5, item(5, 17, b"\1"), item(5, b"\0\x11", b"\1"), bad),
                 (AP, 999, item(1, b"x", b""), item(999, 0), "is unknown")]
        with Controller() as controller:
            for mac, number, fits, wrong, why in rows:
                with self.subTest(item=wrong[:12]):
                    before = controller.record(mac)["wtp_cfg"]
                    message = f"item {number} {why}".encode()
                    self.assertEqual(controller.send_items(mac, item(2, b"far", b"") + wrong),
                                     bytes([19, len(message)]) + message)
                    self.assertEqual(controller.record(mac)["wtp_cfg"], before)
                    # Named twice, done once.
                    self.assertEqual(controller.send_items(mac, fits, times=2), b"\0\0\3\0")
            # A list that does not end, one with more behind it, and one for two devices.
            for count, several, end in ((1, 0, b""), (1, 0, b"\0\0\0"), (2, 1, b"")):
                macs = b"".join(bytes((2, 0xa3, 0, 0, 0, n + 1)) for n in range(count))
                body = bytes((0, count)) + macs + b"\3" + bytes(4) + bytes([several]) + fits + end
                self.assertEqual(controller.replies(b"\5" + struct.pack(">I", len(body)) + body,
                                                    "00"), b"\3\0" * count)
            self.assertEqual(controller.send_items(AP, item(2, b"far", b"") * 8192), b"\0\0")
            message = b"there are more than 8192 items"
            self.assertEqual(controller.send_items(AP, item(2, b"far", b"") * 8193),
                             bytes([19, len(message)]) + message)

    def test_hangup_that_is_ignored_and_pid_files(self):
        self.addCleanup(signal.signal, signal.SIGHUP, signal.signal(signal.SIGHUP, signal.SIG_IGN))
        gone = start(["true"])
        gone.wait()
        with tempfile.TemporaryDirectory() as folder:
            path, link = Path(folder, "pid"), Path(folder, "link")
            path.write_text(f"{gone.pid}\n")
            link.symlink_to(f"{folder}/nothing")
            self.assertEqual(ac_sim("--pid-file", link), (
                1, "", f"ac-sim: cannot create the pid file {link}: File exists\n"))
            self.assertFalse(Path(folder, "nothing").exists())
            with Controller("--pid-file", path) as controller:
                self.assertEqual(path.read_text(), f"{controller.process.pid}\n")
                taken = (1, "", f"ac-sim: cannot create the pid file {path}: File exists\n")
                self.assertEqual(ac_sim("--pid-file", path), taken)
                controller.process.send_signal(signal.SIGHUP)
                self.assertEqual(controller.ok("online"), "online WTP: 9/9\n")
                where = f"127.0.0.1:{controller.port}"
                self.assertEqual(ac_sim("--port", controller.port), (
                    1, "", f"ac-sim: cannot listen on {where}: Address already in use\n"))
            self.assertFalse(path.exists())
            for content in ("", "kept", f"{gone.pid}", f"{gone.pid} \n", f"-{gone.pid}\n", "0\n"):
                path.write_text(content)
                self.assertEqual((ac_sim("--pid-file", path), path.read_text()), (taken, content))
            if os.geteuid() == 0:  # only root can give it to another user
                path.write_text(f"{gone.pid}\n")
                os.chown(path, 65534, -1)
                self.assertEqual(ac_sim("--pid-file", path), taken)
            path.unlink()
            with open("/dev/full", "w") as full:
                self.assertEqual(ac_sim("--pid-file", path, stdout=full), (
                    1, "", "ac-sim: cannot write to standard output: No space left on device\n"))
            self.assertFalse(path.exists())

    def test_bad_arguments(self):
        few, many = ["", "-1", "1x", "100001"], ["", "-1", " 1", "4294967296"]
        macs = [AP, f"{AP}=", f"{AP}x=5", f"{AP}:7=5", "2:A3:0:0:1=5", "0:0:0:0:0:0=5", f"{AP}=-1"]
        refused = {
            "port": ["", "-1", "1x", "65536"], "address": ["", "localhost", "127.1", "127.0.0.1x"],
            "pid-file": [""], "aps": few, "switches": few, "others": few, "seed": many,
            "max-wtps": many, "refuse": ["", "1", "0x2", "2147483648"],
            "cut": ["", "-1", "1k", "18446744073709551616"], "result": [*macs, f"{AP}=256"],
            "config": [*macs, *(f"{AP}={how}" for how in BAD_CONFIGS)],
            "upgrade": [*macs, *(f"{AP}={how}" for how in ("0", "inf", "nan", "2s", "fails"))]}
        for name, argument in re.findall(r"^  --([\w-]+)( [A-Z])?", ac_sim("--help")[1], re.M):
            for value in refused[name] if argument else ["1"]:
                with self.subTest(option=name, value=value):
                    status, out, err = ac_sim(f"--{name}={value}")
                    bad = f": bad argument '{value}', expected "
                    self.assertEqual((status, out), (2, ""))
                    self.assertIn(f"ac-sim: --{name}{bad if argument else ' takes no arg'}", err)
        self.assertEqual(ac_sim("x"), (2, "", "ac-sim: unexpected argument 'x'\n"))
        self.assertEqual(ac_sim("-h"), ac_sim("--help"))
        project = Path(SOURCE, "CMakeLists.txt").read_text()
        version = re.search(r"project\(zov VERSION (\S+)", project)[1]
        self.assertEqual(ac_sim("--version"), (0, f"ac-sim {version}\n", ""))


main()
