#!/usr/bin/python3
"""Prints a BIFF2 sheet as xlrd reads it: a line per cell (row, column, type, value, format,
alignment, font), then the page breaks. The BOF type 0x0A becomes 0x10 in memory (xlrd
rejects ours), and the row limit is raised from 16384 so that rows up to 65535 load."""
import os
import sys

import xlrd


class _WideSheet(xlrd.sheet.Sheet):
    def __init__(self, *args):
        super().__init__(*args)
        self.utter_max_rows = 65536


xlrd.sheet.Sheet = _WideSheet
TYPES = {xlrd.XL_CELL_TEXT: "text", xlrd.XL_CELL_NUMBER: "number", xlrd.XL_CELL_DATE: "date"}

data = bytearray(open(sys.argv[1], "rb").read())
data[6] = 0x10
book = xlrd.open_workbook(file_contents=bytes(data), formatting_info=True,
                          encoding_override="cp1252", logfile=open(os.devnull, "w"))
sheet = book.sheet_by_index(0)
for r in range(sheet.nrows):
    for c, cell in enumerate(sheet.row(r)):
        if cell.ctype == xlrd.XL_CELL_EMPTY:
            continue
        xf = book.xf_list[cell.xf_index]
        value = cell.value if cell.ctype == xlrd.XL_CELL_TEXT else repr(cell.value)
        print("%d\t%d\t%s\t%s\t%s\t%d\t%d" % (
            r, c, TYPES.get(cell.ctype, str(cell.ctype)), value,
            book.format_map[xf.format_key].format_str, xf.alignment.hor_align, xf.font_index))
print("breaks\t%s" % " ".join(str(b[0]) for b in sheet.horizontal_page_breaks))
