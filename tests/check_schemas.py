#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Checks the schemas of configuration files: that they are schemas, accept the examples and refuse
documents that are wrong, and that zov-check does so as well.

usage: check_schemas.py SHARE_FOLDER EXAMPLES_FOLDER ZOV_CHECK
"""

import json
import pathlib
import subprocess
import sys

from jsonschema import Draft202012Validator
from jsonschema.exceptions import SchemaError

EXAMPLES = {"ap": "office-ap.json", "switch": "poe-switch.json"}


def wlan(settings):
    return {"radio": [{"wlan": [settings]}]}


# What is wrong, the kind of device, the settings in wtp_cfg.
REFUSED = [
    ("no settings", "ap", {}),
    ("boolean for a switch", "ap", {"bandsteer": True}),
    ("text for a number", "ap", {"timezone": "60"}),
    ("number for a text", "switch", {"name": 1}),
    ("fraction", "ap", {"timezone": 60.5}),
    ("object for an array", "ap", {"radio": {"tx_power": 17}}),
    ("empty element", "ap", {"radio": [{}]}),
    ("below the range", "ap", {"bandsteering": {"rssi": -81}}),
    ("above the range", "ap", {"bandsteering": {"rssi": -59}}),
    ("above the range", "switch", {"poe_port": [{"power_limit_type": 3}]}),
    ("port of more than 16 bits", "ap", {"radio": [{"portal": {"port": 65536}}]}),
    ("text too long", "ap", wlan({"ssid": "x" * 33})),
    ("text too short", "ap", {"radio": [{"mesh": {"wpa_key": "seven77"}}]}),
    ("list too long", "ap", {"ac_list": [f"ac{i}.example" for i in range(256)]}),
    ("array too long", "switch", {"switch_port": [{"port": 1}] * 257}),
    ("host name given twice", "ap", {"ac_list": ["a", "a"]}),
    ("no IPv4 address", "ap", {"dns1": ""}),
    ("octet above 255", "ap", {"dns1": "192.168.1.256"}),
    ("no gateway", "ap", {"ipv4": "192.168.100.10/255.255.255.0"}),
    ("host name for a server address", "ap", {"radio": [{"portal": {"radius_server": "radius"}}]}),
    ("no MAC address", "switch", {"manage_mac_list": ["00:00:5e:00:53"]}),
    ("group address", "ap", wlan({"acl": {"mac": ["01:00:5e:00:00:01"]}})),
    ("MAC address given twice", "ap", wlan({"l2macWlist": ["0:0:5e:0:53:1"] * 2})),
    ("rate without unit", "ap", {"radio": [{"data_rate": "54"}]}),
    ("misspelt setting", "ap", {"radio": [{"txpower": 17}]}),
    ("settings of the other kind of device", "switch", {"bandsteer": 1}),
    ("object where a number belongs", "switch", {"power_budget": {"comment": 1}}),
    ("array where an object belongs", "ap", {"led": [{"power": 1}]}),
]

ACCEPTED = [
    ("comments", "ap", {"comment": ["red"], "radio": [{"comment": {"tx_power": "x"}}, {"mesh": {"comment": 1}}]}),
    ("empty lists", "switch", {"ac_list": [], "manage_mac_list": []}),
    ("host name given twice", "switch", {"ac_list": ["a", "a"]}),
    ("longest list", "ap", {"ac_list": [f"ac{i}.example" for i in range(255)]}),
    ("no server", "ap", {"radio": [{"portal": {"radius_server": ""}}]}),
    ("DHCP", "ap", {"ipv4": "0.0.0.0/0.0.0.0/0.0.0.0"}),
    ("rates", "ap", {"radio": [{"data_rate": r} for r in ("auto", "MCS7", "VHTMCS9", "5.5M")]}),
]


def zov_check_accepts(zov_check, kind, document):
    done = subprocess.run([zov_check, "--type", str(int(kind == "switch")), "-"], input=json.dumps(document),
                          text=True, capture_output=True)
    return done.returncode == 0 and done.stderr == ""


def failures(share, examples, zov_check):
    validators = {}
    for kind, example in EXAMPLES.items():
        schema = json.loads((share / f"wtp_cfg-{kind}.schema.json").read_text())
        try:
            Draft202012Validator.check_schema(schema)
        except SchemaError as error:
            yield f"{kind} schema: {error.message}"
            continue
        validators[kind] = Draft202012Validator(schema)
        document = json.loads((examples / example).read_text())
        for error in validators[kind].iter_errors(document):
            yield f"{example}: {error.json_path}: {error.message}"
    for cases, expected in (REFUSED, False), (ACCEPTED, True):
        for what, kind, settings in cases:
            document = {"wtp_cfg": settings}
            if kind in validators and validators[kind].is_valid(document) != expected:
                yield f"{what} ({kind}): {'refused' if expected else 'accepted'}: {settings}"
            if zov_check_accepts(zov_check, kind, document) != expected:
                yield f"{what} ({kind}): {'refused' if expected else 'accepted'} by zov-check: {settings}"


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    failed = list(failures(pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3]))
    for line in failed:
        print(line)
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
