#!/usr/bin/python3
"""Makes an .xlsm workbook with a VBA project holding `Sub Qumbrel`, for the tests of the
LibreOffice binding's macro run. No Debian package writes a VBA project, so this script
writes a small one itself: a compound file (CFB, version 3, mini stream for the small
streams) with the VBA storage of MS-OVBA (the "dir" stream and the module stream in the
MS-OVBA compression, literal tokens only), added to a workbook made by openpyxl.

Usage: make_vba_workbook.py TEMPLATE.xlsx OUT.xlsm KIND
KIND: writes (A1 of the first sheet gets "macro ran"), fails (raises error 513),
loops (never ends)."""
import struct
import sys
import zipfile

BODIES = {
    "writes": 'Worksheets(1).Range("A1").Value = "macro ran"',
    "fails": 'Err.Raise 513, "Qumbrel", "the macro says no"',
    "loops": "Do\r\n    Loop",
}


# --- MS-OVBA compression (2.4.1): one chunk of literal tokens per 4,096 bytes -------------
def compress(data):
    out = bytearray(b"\x01")
    for start in range(0, max(len(data), 1), 4096):
        chunk = data[start:start + 4096]
        body = bytearray()
        for i in range(0, len(chunk), 8):
            body.append(0)  # eight literal tokens
            body += chunk[i:i + 8]
        if len(body) + 2 > 4098:
            raise ValueError("module too long for literal-only chunks")
        header = (len(body) + 2 - 3) | (0b011 << 12) | (1 << 15)
        out += struct.pack("<H", header) + body
    return bytes(out)


def record(rid, payload):
    return struct.pack("<HI", rid, len(payload)) + payload


def dir_stream(module):
    name = b"VBAProject"
    mod = module.encode("ascii")
    mod16 = module.encode("utf-16-le")
    d = bytearray()
    d += record(0x0001, struct.pack("<I", 1))  # SYSKIND win32
    d += record(0x0002, struct.pack("<I", 0x409))  # LCID
    d += record(0x0014, struct.pack("<I", 0x409))  # LCIDINVOKE
    d += record(0x0003, struct.pack("<H", 1252))  # CODEPAGE
    d += record(0x0004, name)
    d += record(0x0005, b"") + record(0x0040, b"")  # DOCSTRING, unicode
    d += record(0x0006, b"") + record(0x003D, b"")  # HELPFILEPATH 1 and 2
    d += record(0x0007, struct.pack("<I", 0))  # HELPCONTEXT
    d += record(0x0008, struct.pack("<I", 0))  # LIBFLAGS
    d += struct.pack("<HIIH", 0x0009, 4, 1, 0)  # VERSION: reserved size 4, major, minor
    d += record(0x000C, b"") + record(0x003C, b"")  # CONSTANTS, unicode
    d += record(0x000F, struct.pack("<H", 1))  # MODULES: count
    d += record(0x0013, struct.pack("<H", 0xFFFF))  # PROJECTCOOKIE
    d += record(0x0019, mod) + record(0x0047, mod16)  # MODULENAME, unicode
    d += record(0x001A, mod) + record(0x0032, mod16)  # MODULESTREAMNAME, unicode
    d += record(0x001C, b"") + record(0x0048, b"")  # MODULEDOCSTRING, unicode
    d += record(0x0031, struct.pack("<I", 0))  # MODULEOFFSET: the source starts at 0
    d += record(0x001E, struct.pack("<I", 0))  # MODULEHELPCONTEXT
    d += record(0x002C, struct.pack("<H", 0xFFFF))  # MODULECOOKIE
    d += record(0x0021, b"")  # MODULETYPE: procedural
    d += record(0x002B, b"")  # module terminator
    d += record(0x0010, b"")  # dir terminator
    return bytes(d)


# --- A compound file, version 3: 512-byte sectors, streams below 4,096 bytes in the mini
# stream (64-byte sectors) --------------------------------------------------------------
FREE, END, FATSECT = 0xFFFFFFFF, 0xFFFFFFFE, 0xFFFFFFFD


def cfb(entries):
    """entries: list of (path tuple, bytes or None for a storage), parents before children."""
    nodes = [{"name": "Root Entry", "type": 5, "children": [], "data": b""}]
    index = {(): 0}
    for path, data in entries:
        node = {"name": path[-1], "type": 1 if data is None else 2, "children": [],
                "data": data or b""}
        index[path] = len(nodes)
        nodes.append(node)
        nodes[index[path[:-1]]]["children"].append(index[path])

    mini = bytearray()
    mini_fat = []
    big = []  # (node, data) of streams that go to normal sectors
    for i, n in enumerate(nodes):
        if n["type"] != 2:
            continue
        if len(n["data"]) < 4096:
            n["start"] = len(mini) // 64
            count = max(1, (len(n["data"]) + 63) // 64)
            mini_fat += [n["start"] + k + 1 for k in range(count - 1)] + [END]
            mini += n["data"].ljust(count * 64, b"\0")
        else:
            big.append(n)

    sectors = []  # 512-byte sectors after the header
    fat = []

    def place(data):
        first = len(sectors)
        count = max(1, (len(data) + 511) // 512)
        for k in range(count):
            sectors.append(data[k * 512:(k + 1) * 512].ljust(512, b"\0"))
            fat.append(first + k + 1 if k + 1 < count else END)
        return first

    nodes[0]["start"] = place(bytes(mini)) if mini else END
    nodes[0]["data"] = bytes(mini)
    for n in big:
        n["start"] = place(n["data"])
    mini_fat_bytes = b"".join(struct.pack("<I", v) for v in mini_fat)
    mini_fat_start = place(mini_fat_bytes) if mini_fat else END

    # Directory: children of a storage as a chain of right siblings (a valid, if
    # unbalanced, red-black tree when every node is black).
    for n in nodes:
        kids = n["children"]
        n["child"] = kids[0] if kids else FREE
        for a, b in zip(kids, kids[1:]):
            nodes[a]["right"] = b
    dir_bytes = bytearray()
    for n in nodes:
        name16 = n["name"].encode("utf-16-le") + b"\0\0"
        entry = name16.ljust(64, b"\0")
        entry += struct.pack("<HBB", len(name16), n["type"], 1)  # black
        entry += struct.pack("<III", FREE, n.get("right", FREE), n["child"])
        entry += b"\0" * 16 + struct.pack("<I", 0) + b"\0" * 16  # clsid, state, times
        start = n.get("start", 0) if n["type"] != 1 else 0
        size = len(n["data"]) if n["type"] != 1 else 0
        entry += struct.pack("<IQ", start, size)
        dir_bytes += entry
    while len(dir_bytes) % 512:
        dir_bytes += (b"\0" * 64 + struct.pack("<HBB", 0, 0, 0) +
                      struct.pack("<III", FREE, FREE, FREE) + b"\0" * 36 +
                      struct.pack("<IQ", 0, 0))
    dir_start = place(bytes(dir_bytes))

    # The FAT's own sectors, marked as such (one sector holds 128 entries).
    fat_count = 1
    while (len(sectors) + fat_count) > fat_count * 128:
        fat_count += 1
    fat_first = len(sectors)
    for _ in range(fat_count):
        sectors.append(b"")
        fat.append(FATSECT)
    fat += [FREE] * (fat_count * 128 - len(fat))
    for k in range(fat_count):
        sectors[fat_first + k] = b"".join(struct.pack("<I", v)
                                          for v in fat[k * 128:(k + 1) * 128])

    difat = [fat_first + k for k in range(fat_count)] + [FREE] * (109 - fat_count)
    header = (b"\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1" + b"\0" * 16 +
              struct.pack("<HHHHH", 0x3E, 3, 0xFFFE, 9, 6) + b"\0" * 6 +
              struct.pack("<IIIIIIIII", 0, fat_count, dir_start, 0, 4096,
                          mini_fat_start, len(mini_fat_bytes) // 512 + (1 if mini_fat else 0),
                          END, 0) +
              b"".join(struct.pack("<I", v) for v in difat))
    return header.ljust(512, b"\0") + b"".join(sectors)


def vba_project(body):
    module = "Module1"
    source = ('Attribute VB_Name = "%s"\r\nSub Qumbrel()\r\n    %s\r\nEnd Sub\r\n'
              % (module, body)).encode("cp1252")
    project = ('ID="{00000000-0000-0000-0000-000000000000}"\r\nModule=%s\r\n'
               'Name="VBAProject"\r\nHelpContextID="0"\r\nVersionCompatible32="393222000"\r\n'
               'CMG=""\r\nDPB=""\r\nGC=""\r\n\r\n[Host Extender Info]\r\n'
               '&H00000001={3832D640-CF90-11CF-8E43-00A0C911005A};VBE;&H00000000\r\n'
               % module).encode("cp1252")
    return cfb([
        (("PROJECT",), project),
        (("VBA",), None),
        (("VBA", "_VBA_PROJECT"), b"\xCC\x61\xFF\xFF\x00\x00\x00"),
        (("VBA", "dir"), compress(dir_stream(module))),
        (("VBA", module), compress(source)),
    ])


def main():
    template, out, kind = sys.argv[1:4]
    vba = vba_project(BODIES[kind])
    with zipfile.ZipFile(template) as z:
        items = [(i.filename, z.read(i.filename)) for i in z.infolist()]
    with zipfile.ZipFile(out, "w", zipfile.ZIP_DEFLATED) as z:
        for name, data in items:
            if name == "[Content_Types].xml":
                data = data.replace(b"spreadsheetml.sheet.main+xml",
                                    b"PLACEHOLDER").replace(
                    b"application/vnd.openxmlformats-officedocument.PLACEHOLDER",
                    b"application/vnd.ms-excel.sheet.macroEnabled.main+xml")
                data = data.replace(b"</Types>", b'<Default Extension="bin" ContentType='
                                    b'"application/vnd.ms-office.vbaProject"/></Types>')
            if name == "xl/_rels/workbook.xml.rels":
                data = data.replace(b"</Relationships>",
                                    b'<Relationship Id="rIdVba" Type="http://schemas.microsoft'
                                    b'.com/office/2006/relationships/vbaProject" '
                                    b'Target="vbaProject.bin"/></Relationships>')
            z.writestr(name, data)
        z.writestr("xl/vbaProject.bin", vba)


if __name__ == "__main__":
    main()
