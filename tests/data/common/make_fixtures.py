#!/usr/bin/env python3
"""Writes the damaged and foreign-encoded files the common tests read. Run from this folder."""
import random

CRLF = "\r\n"


def gb(text):
    return text.encode("gb18030")


# A BLZConfig.dat as the program writes it, for scales with their default names.
names = ["骨料1", "骨料2", "骨料3", "骨料4", "", "", "", "水秤", "水泥", "粉灰", "", "外加剂1", "外加剂2", ""]
fields = ["BiaoZeroTime=", "BiaoZeroADValue=", "BiaoZeroWTValue=", "BiaoWeightTime=",
          "BiaoWeightADValue=", "BiaoWeightWTValue=", "BiaoWeightFMValue="]
lines = ["COMPort=5", "IsShowCsHelp=0"]
for i, n in enumerate(names):
    for f in fields:
        lines.append(n + f + "值%d" % i)
lines.append("Agg1RecordMode=1")
good = gb(CRLF.join(lines) + CRLF)

# Cut in the middle of the second byte pair of "骨料2": the first scale's lines survive whole.
cut = good.index(gb("骨料2BiaoZeroTime=")) + 3
with open("BLZConfig_truncated.dat", "wb") as f:
    f.write(good[:cut])

rng = random.Random(20260305)
with open("BLZConfig_binary.dat", "wb") as f:
    f.write(bytes(rng.randrange(256) for _ in range(4096)) + b"\x00\x00\xff\xfe\x81")

# CName.ini whose only content is overlong lines: a comment, junk, a key in a foreign section.
long_lines = [
    ";" + "注" * 10000,
    "x" * 10000,
    "[Other]",
    "01=" + "骨" * 10000,
    "[" + "N" * 10000 + "]",
    "01=" + "y" * 10000,
]
with open("CName_longlines.ini", "wb") as f:
    f.write(gb(CRLF.join(long_lines) + CRLF))

# A CName.ini as a station writes it: the "Name" keys in file order 01..14, water at "11".
cname = [
    "[Name]",
    "01= 石子 ",
    "02=砂",
    "03=",
    "07=外加粉",
    "08=水泥A",
    "09=粉灰B",
    "10=矿粉",
    "11=清水秤",
    "12=减水剂",
    "13=早强剂",
    "14=防冻剂",
    "",
    "[11]",
    "01=水1",
    "02=水2",
    "[08]",
    "04=水泥M4",
    "[12]",
    "01=",
    "[ZDTime]",
    "01=3",
    "02=0",
    "16=7",
    "[RecordTime]",
    "RecordTime=2026-03-05 10:11:12",
]
with open("CName.ini", "wb") as f:
    f.write(gb(CRLF.join(cname) + CRLF))

# A profile saved by an editor as UTF-8 with a byte-order mark and LF line ends.
with open("utf8_bom.ini", "wb") as f:
    f.write(b"\xef\xbb\xbf" + "[LANCOMMON]\nCOM001-2=OK\nCOM003-1=返回\n".encode("utf-8"))
