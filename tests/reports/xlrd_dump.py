#!/usr/bin/python3
"""Prints a BIFF2 sheet as xlrd reads it: one tab-separated line per cell (row, column,
type, value, format string, horizontal alignment, font), then the horizontal page breaks.
In memory, the BOF type byte 0x0A becomes 0x10 (xlrd rejects the former), and the row
limit is raised from 16384 so that rows up to 65535 load."""
import os
import sys

import xlrd
from xlrd import sheet as xlrd_sheet

_sheet_init = xlrd_sheet.Sheet.__init__


def _wide_sheet_init(self, *args, **kwargs):
    _sheet_init(self, *args, **kwargs)
    self.utter_max_rows = 65536


xlrd_sheet.Sheet.__init__ = _wide_sheet_init
TYPES = {xlrd.XL_CELL_TEXT: "text", xlrd.XL_CELL_NUMBER: "number", xlrd.XL_CELL_DATE: "date"}

with open(sys.argv[1], "rb") as f:
    data = bytearray(f.read())
data[6] = 0x10
with open(os.devnull, "w") as quiet:
    book = xlrd.open_workbook(file_contents=bytes(data), formatting_info=True,
                              encoding_override="cp1252", logfile=quiet)
sheet = book.sheet_by_index(0)
for r in range(sheet.nrows):
    for c in range(sheet.row_len(r)):
        cell = sheet.cell(r, c)
        if cell.ctype == xlrd.XL_CELL_EMPTY:
            continue
        xf = book.xf_list[cell.xf_index]
        value = cell.value if cell.ctype == xlrd.XL_CELL_TEXT else repr(cell.value)
        print("%d\t%d\t%s\t%s\t%s\t%d\t%d" % (
            r, c, TYPES.get(cell.ctype, str(cell.ctype)), value,
            book.format_map[xf.format_key].format_str, xf.alignment.hor_align, xf.font_index))
print("breaks\t%s" % " ".join(str(b[0]) for b in sheet.horizontal_page_breaks))
