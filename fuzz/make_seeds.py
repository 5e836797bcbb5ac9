#!/usr/bin/env python3
"""Writes the seed corpus of each fuzz target into fuzz/corpus/<name>/.

The targets read their input through FuzzedDataProvider, which takes numbers
from the end of the input and bytes from its front; Seed lays them out so.
Run again after changing what a target reads first."""
import os
import struct

HERE = os.path.dirname(os.path.abspath(__file__))


class Seed:
    def __init__(self):
        self.front = b""
        self.tail = []  # bytes in the order they are consumed from the end

    def integral(self, value, low, high):
        span, shift, raw = high - low, 0, []
        while shift < 64 and (span >> shift) > 0:
            raw.append(0)
            shift += 8
        value -= low
        for i in range(len(raw)):
            raw[i] = (value >> (8 * (len(raw) - 1 - i))) & 0xFF
        self.tail += raw
        return self

    def boolean(self, value):
        self.tail.append(1 if value else 0)
        return self

    def double(self, value):
        # Positive half of the range, probability from the 64-bit integer.
        maximum = 1.7976931348623157e308
        self.boolean(True)
        p = max(0.0, min(1.0, value / maximum))
        self.integral(int(p * (2**64 - 1)), 0, 2**64 - 1)
        return self

    def units(self, text, max_count):
        data = [ord(c) for c in text][:max_count]
        self.integral(len(data), 0, max_count)
        for u in data:
            self.integral(u, 0, 0xFFFF)
        return self

    def bytes(self, data):
        self.front += data
        return self

    def data(self):
        return self.front + bytes(reversed(self.tail))


def write(name, seeds):
    folder = os.path.join(HERE, "corpus", name)
    os.makedirs(folder, exist_ok=True)
    for i, seed in enumerate(seeds):
        with open(os.path.join(folder, "seed-%02d" % i), "wb") as f:
            f.write(seed.data())


def timecode():
    texts = ["01:02:03:04", "01:02:03;04", "12:34", "99:99:99:99", "65535:59:59:1199", ":::", ";;;;",
             "1:2:3:4:5:6", "00:00:00:29", "", "a:b:c:d", "0000000000000000000000000000000000000001"]
    seeds = []
    for i, t in enumerate(texts):
        s = Seed().integral(i % 4, 0, 3).double([30.0, 25.0, 29.97, 1200.0][i % 4]).integral(i % 5, 0, 4)
        seeds.append(s.boolean(i % 2).units(t, 64))
    return seeds


def format_():
    seeds = []
    for f in ["%d", "%x", "%f", "%s", "%d %x %f %s", "100%%", "%", "%q%z", "%s%s%s%s%s", "plain text"]:
        s = Seed().units(f, 256)
        i = 0
        while i < len(f):
            if f[i] == "%" and i + 1 < len(f):
                spec = f[i + 1]
                if spec in "dx":
                    s.integral(-12345 + 1000 * i, -2**31, 2**31 - 1)
                elif spec == "f":
                    s.double(3.25)
                elif spec == "s":
                    s.boolean(False).integral(5000 * i, 0, 8292).integral(ord("x"), 1, 0xFFFF)
                i += 1
            i += 1
        seeds.append(s)
    return seeds


def ascii_():
    seeds = []
    samples = [b"plain", "caf\u00e9 \u00fc\u00df".encode(), b"\xff\xfe broken \xc3", b"", "\u65e5\u672c".encode(),
               b"a" * 400]
    for i, b in enumerate(samples):
        seeds.append(Seed().integral([0, 3, 10, 64, 300, 200][i], 0, 300).boolean(i % 2).boolean(i % 3 == 0)
                     .boolean(False).bytes(b))
    seeds.append(Seed().integral(20, 0, 300).boolean(True).boolean(True).boolean(True).units("\u00e9\u20ac\ud800x", 200))
    return seeds


def appbits():
    seeds = []
    packet = bytes([0x00, 0x00, 0x01, 0xBA, 0x44, 0x00, 0x04, 0x00, 0x04, 0x01, 0x01, 0x89, 0xC3, 0xF8])
    s = Seed().integral(len(packet), 0, 64).bytes(packet)
    for op, count in [(0, 32), (2, 2), (0, 3), (1, 1), (0, 17), (5, 0), (4, 4), (4, 3), (5, 0)]:
        s.integral(op, 0, 5).integral(count, 0, 32)
        if op == 4:
            s.boolean(True)
    seeds.append(s)
    s = Seed().integral(5, 0, 64).bytes(b"\xa5\x5a\xff\x00\x81")
    for op, count in [(0, 7), (0, 9), (1, 24), (3, 5), (0, 8), (5, 0)]:
        s.integral(op, 0, 5).integral(count, 0, 32)
        if op == 3:
            s.integral(13, 0, 39)
    seeds.append(s)
    return seeds


def script():
    texts = [b"# comment\nname = value\nlist ( a, b c )\n// tail\n",
             b"key=\"quoted text\";\r\n\tother = 12 // note\r\n",
             b"(unterminated, list\n", b"a" * 3000 + b" b\n", b"\x00\x01\xff\n\n\n=,;"]
    seeds = []
    for t in texts:
        calls = bytes([0x22, 0x23, 0x24, 0x25, 0x06, 0x07, 0x00, 0x01, 0x08])
        seeds.append(Seed().integral(len(calls), 0, 48).bytes(calls + t))
    return seeds


def segmentedinfo():
    bodies = [b"title.cfx.0\ntitle.cfx.1\ntitle.cfx.2\n", b"title.cfx.0\n", b"missing.cfx.0\n",
              b"title.cfx.0\r\ntitle.cfx.1\r\n", b"\n\n\n", b"title.cfx.2\ntitle.cfx.0\n" * 8, b"",
              b"x" * 3000 + b"\n"]
    seeds = []
    for i, b in enumerate(bodies):
        seeds.append(Seed().boolean(i != 6).integral(i % 3, 0, 2).integral(150, -10, 100000).bytes(b))
    seeds.append(Seed().boolean(False).integral(0, 0, 2).integral(0, -10, 100000).bytes(b"not an info file\n"))
    return seeds


def settings():
    inis = [b"[Audio]\r\nBitrate=128\r\n[Video]\r\nFormat = \"NTSC\"\r\n",
            b"; comment\n[ a ]\n k = 1, 2, 3 \n k = 4\n[a]\nk=5\n", b"no section\nkey=value\n",
            b"[Options]\nColorPalette1=10 20,,30\nVantoroName=x\n", b"[s]\nk=\n[t\nk2=v\r", b""]
    seeds = []
    for i, ini in enumerate(inis):
        s = Seed()
        for text, m, value in [("Audio", 8, False), ("Bitrate", 8, False), ("256", 12, True)]:
            s.integral(len(text), 0 if value else 1, m)
            chars = "abcXYZ019_.- ,;=[]\"'" if value else "abcXYZ019_.-"
            for c in text:
                s.integral(chars.index(c) if c in chars else 0, 0, 255)
        seeds.append(s.integral([1, 12, 234, 130, 0, 302][i], 0, 420).bytes(ini))
    return seeds


if __name__ == "__main__":
    write("timecode", timecode())
    write("format", format_())
    write("ascii", ascii_())
    write("appbits", appbits())
    write("script", script())
    write("segmentedinfo", segmentedinfo())
    write("settings", settings())
