# SPDX-License-Identifier: MIT
"""Device records, made from the table in fields.txt: their bytes on the wire, and what is reported
of them.
"""
import random
import re
import time
from pathlib import Path


class Text(bytes):
    """A text as it came on the wire."""

    def shown(self):
        """What is seen of it, each byte a character: it ends at its first NUL."""
        return self.split(b"\0")[0].decode("latin-1")


class Host(Text):
    """A station's host name: an empty text is shown when it holds other than printable ASCII."""

    def shown(self):
        return super().shown() if re.fullmatch(r"[ -~]*", super().shown()) else ""


Ip, Mac, Digest, Caps = (type(name, (bytes,), {}) for name in ("Ip", "Mac", "Digest", "Caps"))


def load():
    """The sections of fields.txt: name -> {"wire": words, "json": words, "text": rows of lines}."""
    sections = {}
    for line in Path(__file__).with_name("fields.txt").read_text().splitlines():
        if line.startswith("["):
            section = sections[line.strip("[]")] = {"wire": [], "json": [], "text": []}
        elif line.startswith("|"):
            condition, row = re.fullmatch(r"\|(?:\?([a-z,]+):)?(.*)", line).groups()
            row = "".join(f"{part}\n" for part in row.split(" |"))
            row = row.replace("\\t", "\t").replace("\\c\n", "")
            section["text"].append((set((condition or "").split(",")) - {""}, row))
        elif line and line[0] in "wj ":
            words = line.split()
            if line[0] != " ":
                kind = words.pop(0)
            section[kind] += words
    return sections


SECTIONS = load()


def wire_fields(section, prefix=""):
    """The fields of a section in wire order, as (kind, name)."""
    kind = None
    for word in SECTIONS[section]["wire"]:
        if word.endswith(":"):
            kind = word[:-1]
        elif word.startswith("+"):
            yield from wire_fields(word[1:], f"{word[1:]}.")
        else:
            yield kind, prefix + word


def child(section, name):
    """The section of the elements of a list."""
    above = section.split("/")[0]
    return name if above == "record" else f"{above}.{name}"


def encode(section, values):
    out = bytearray()
    for kind, name in wire_fields(section):
        value = values[name]
        if kind.startswith("?"):
            out.append(values[f"?{name}"])
            if not values[f"?{name}"]:
                continue
        if isinstance(value, int):
            out += value.to_bytes(int(kind[1:]) // 8, "big")
        elif isinstance(value, list):
            width = int(re.sub(r"\D", "", kind) or 0) // 8
            out += values.get(f"#{name}", len(value)).to_bytes(width, "big") if width else b""
            for item in value:
                out += item if isinstance(item, bytes) else encode(child(section, name), item)
        else:
            out += (len(value).to_bytes(2, "big") if kind in ("text", "host") else b"") + value
    return bytes(out)


# What is shown of a value, as a str whose characters are bytes.

ESCAPES = {8: r"\b", 9: r"\t", 10: r"\n", 12: r"\f", 13: r"\r", 34: r"\"", 47: r"\/", 92: r"\\"}


def data_rate(code):
    if code <= 110:
        return "auto" if code == 0 else f"MCS{code - 1}" if code < 33 else f"VHTMCS{code - 101}"
    return f"{code // 1000}.{code % 1000 // 100}M" if code % 1000 > 99 else f"{code // 1000}M"


def shown(value, mark=""):
    """A value in the form that its mark asks for."""
    if isinstance(value, int):
        signed, hours = value - (value >> 31 << 32), value // 3600
        return {"": value, "-": signed, "'": value - (value >> 15 << 16), "@": data_rate(signed),
                "!": time.asctime(time.gmtime(value + 5400)) if value else "",
                "+": f"{hours // 24}d:{hours % 24}h:{value // 60 % 60}m:{value % 60}s"}[mark]
    if isinstance(value, Ip):
        return ".".join(map(str, value))
    if isinstance(value, Mac):
        return ":".join(f"{byte:02X}" for byte in value)
    if isinstance(value, Digest):
        return value.hex()
    if isinstance(value, Caps):
        return "".join(f"0x{byte:x} " for byte in value)
    text = value.shown()
    return {"": text, "~": text.translate(ESCAPES), "^": text.replace("\r", "").replace("\n", ""),
            "=": text or "null"}[mark]


def fill_in(template, values, prefix=""):
    """A text with its %names replaced."""
    def value(found):
        return str(shown(values[prefix + found[2]], found[1]))
    return re.sub(r"%\{?([-'!&~^=@+]?)([\w.#]+)\}?", value, template)


def holding(values, context):
    mode = values.get("sec_mode", 0)
    static = any(values.get("ip", b""))
    holds = {"wlan": "portal.network_type" in values, "static": static, "dhcp": not static,
             "wep": mode == 1, "wpa": 2 <= mode <= 12, "radius": mode in (5, 6, 7, 11, 12)}
    return context | {name for name, true in holds.items() if true}


def text(section, values, context):
    """The lines of a structure in the text report."""
    out, here = "", holding(values, context)
    for condition, row in SECTIONS[section]["text"]:
        if not condition <= here:
            continue
        if row.startswith("*"):
            name = row[1:-1]
            for item in values[name]:
                is_mac = isinstance(item, Mac)
                out += (f"        {shown(item)}\n" if is_mac else
                        text(child(section, name), item, context))
        else:
            out += fill_in(row, values)
    return out


def json(section, values, context):
    """A structure as a JSON object."""
    words = iter(SECTIONS[section]["json"])
    return "{" + ",".join(members(section, words, values, context, holding(values, context))) + "}"


def members(section, words, values, context, here, prefix="", wanted=True):
    """The members that a run of words stands for, up to a closing bracket."""
    for word in words:
        if word in ("}", ")"):
            return
        on = wanted
        if word.startswith("?"):
            condition, word = word[1:].split(":", 1)
            on = on and set(condition.split(",")) <= here
        mark, name, rest = re.fullmatch(r"([-'~]?)([\w.]*)(.*)", word).groups()
        key, value = prefix + name, values.get(prefix + name)
        if rest == "(":
            yield from list(members(section, words, values, context, here, prefix, on))
        elif rest == "{":
            inner = ",".join(members(section, words, values, context, here, f"{key}.", on))
            yield from [f'"{name}":{{{inner}}}'] if on else []
        elif not on or rest == "[]!" and not value or rest == "@" and not value:
            continue
        elif rest == "@":
            yield f'"{name}":{json(name, value[0], context)}'
        elif rest.startswith("[]"):
            items = (json(child(section, key), item, context) if isinstance(item, dict) else
                     str(item) if isinstance(item, int) else f'"{shown(item)}"' for item in value)
            yield f'"{name}":[{",".join(items)}]'
        elif rest.startswith("="):
            yield f'"{name}":{fill_in(rest[1:], values, prefix)}'
        elif rest.startswith("+"):
            more = iter(SECTIONS[rest[1:]]["json"])
            yield from members(section, more, values, context, here, prefix, on)
        else:
            quote = "" if isinstance(value, int) else '"'
            yield f'"{name}":{quote}{shown(value, mark)}{quote}'


# Making records.

WORDS = [b"", b"", b"m", b"office 1", b'say "x" \\ a/b', b"tab\there\nline\r\x08\x0c",
         b"cut\0off", b"\0", b"\x01\x1f\x7f", b"caf\xc3\xa9 \xff\xfe", b"5%s %n%d", b"x" * 300,
         b"/" * 40, b'{"a":[1,"b"]}', b"\r\n", b"Switch\r\nX"]
HOSTS = [b"", b"host", b" !~", b"a\x1f", b"\x7fb", b"c\x80", b"ok\0\x01", b'"q"/\\', b"\x01",
         b"t\t", b"\0x"]
RATES = [0, 1, 2, 32, 33, 101, 110, 111, 999, 1000, 1099, 1100, 5500, 6050, 11000, 54000,
         2 ** 31 - 1, -1, -100, 1 - 2 ** 31]


class Maker:
    """Makes records of random values; counts and texts are drawn from the given ones."""

    def __init__(self, seed, counts=(0, 1, 1, 2, 3), words=WORDS, hosts=HOSTS, macs=(0, 1, 2, 5)):
        self.random = random.Random(seed)
        self.counts, self.words, self.hosts, self.macs = counts, words, hosts, macs

    def number(self, bits, name):
        """A number of so many bits: any, or one at a border."""
        choose = self.random.choice
        if name == "sec_mode":
            return choose([*range(15), 2 ** 31 + 1])
        if name == "data_rate":
            return choose(RATES) % 2 ** 32
        if name.endswith("_time") and self.random.random() < 0.2:
            return 0
        if self.random.random() < 0.8:
            return self.random.getrandbits(bits)
        return choose([0, 1, 2 ** bits - 1, 2 ** (bits - 1), 2 ** (bits - 1) - 1, 5, 9])

    def value(self, kind, name, section):
        """A value of a kind of the table."""
        draw, choose = self.random.randbytes, self.random.choice
        if kind[0] == "u":
            return self.number(int(kind[1:]), name)
        if kind == "host256":
            name = draw(choose([0, 1, 20, 255, 256])).replace(b"\0", b"n")
            return Text(name + (b"\0" + draw(255))[:256 - len(name)])
        if kind.startswith(("macs", "hosts")):
            made = "mac" if kind.startswith("macs") else "host256"
            return [self.value(made, "", section) for _ in range(choose(self.macs))]
        if kind.startswith("list"):
            below = child(section, name)
            return [self.fill(below, {"#": n + 1, "po": n}) for n in range(choose(self.counts))]
        return {"text": lambda: Text(choose(self.words)), "mac": lambda: Mac(draw(6)),
                "ip": lambda: Ip(choose([bytes(4), *[draw(4)] * 4])),
                "md5": lambda: Digest(draw(16)), "caps": lambda: Caps(draw(21)),
                "host": lambda: Host(choose(self.hosts))}[kind]()

    def fill(self, section, values):
        for kind, name in wire_fields(section):
            values[name] = value = self.value(kind.lstrip("?"), name, section)
            if kind.startswith("?"):
                values[f"?{name}"] = self.random.choice([1, 2, 255] if value else [0, 1, 255])
            if kind.startswith("list-"):
                values[kind[5:]] = len(value)
            if name == "lan_port" and not value:
                values["#lan_port"] = self.random.choice([0, 2 ** 31, 2 ** 32 - 2])
        return values

    def record(self, kind=None, cfg=None, detail=None):
        """A record: type 3 is an access point, 2 a switch; with `cfg` and `detail` or without."""
        choose = self.random.choice
        kind = choose([1, 2, 2, 3, 3, 5, 255]) if kind is None else kind
        record = self.fill("record", {})
        record |= {"wtp_type": kind, "wtp_cfg": [], "?status": 0, "password_md5": Digest(16)}
        own = {3: "ap", 2: "switch"}.get(kind)
        if own:
            self.fill(f"record/{own}", record)
        if own == "switch":
            self.fill("record/status", record)
            record["?status"] = choose([0, 1, 1, 7]) if detail is None else int(detail)
            if not record["?status"]:
                for field, name in wire_fields("record/status"):
                    record[name] = [] if field.startswith("list") else 0
        if choose([True, True, False]) if cfg is None else cfg:
            values = self.fill("wtp_cfg", {"password_md5": Digest(16)})
            record["wtp_cfg"].append(self.fill(f"wtp_cfg/{own}", values) if own else values)
        return record


def record_bytes(record):
    """A record as the controller sends it, without its marker."""
    own = {3: "ap", 2: "switch"}.get(record["wtp_type"])
    out = encode("record", record) + (encode(f"record/{own}", record) if own else b"")
    if own == "switch":
        out += bytes([record["?status"]])
        out += encode("record/status", record) if record["?status"] else b""
    for cfg in record["wtp_cfg"]:
        out += b"\1" + encode("wtp_cfg", cfg)
        return out + (encode(f"wtp_cfg/{own}", cfg) if own else b"")
    return out + b"\0"


def reply(records, end=b"\1"):
    return b"".join(b"\0" + record_bytes(record) for record in records) + end


def report(records, form, *choices):
    """What wtps prints: form is text, json, brief or results; choices are basic and password."""
    base = {"basic" if "basic" in choices else "full"} | ({"password"} & set(choices))
    contexts = [base | {{3: "ap", 2: "sw"}.get(record["wtp_type"], "other")} for record in records]
    if form == "results":
        out = "".join(fill_in("%mac=%upg_state\n", record) for record in records)
    elif form == "json":
        objects = map(json, ["record"] * len(records), records, contexts)
        out = f'"wtp_list":[{",".join(objects)}]\n'
    else:
        is_brief = form == "brief"
        out = "mac\t\t   address\t\tmodel\t\tmg ip fw ug\tstate\tversion\t\tuptime\n" * is_brief
        for record, context in zip(records, contexts):
            marks = [pair[bool(record[name])] for name, pair in (
                ("managed", "ny"), ("unavaiable_addr", "ox"), ("unavaiable_fw", "ox"))]
            line = (f"%mac  %ip:%port\t%model\t{'  '.join(marks)}  %upg_state\t%state/%sub_state\t"
                    "%sw_ver\t%+uptime\n")
            out += fill_in(line, record) if is_brief else text("record", record, context)
        out += f"-------------------------------------\nWTP count\t{len(records)}\n"
    return out.encode("latin-1")


def rich(kind, seed=1, **options):
    """A record of a kind with every section, table and text, in about two thousand bytes."""
    few = {"counts": (1,), "macs": (1,), "words": [b"ab", b"/"], "hosts": [b"h"]}
    return Maker(seed, **few | options).record(kind, cfg=True, detail=True)
