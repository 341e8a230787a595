#!/usr/bin/python3
"""Prints every cell openpyxl reads from a workbook: sheet, cell, type, value, number
format, bold; a line "sheet, cell, comment, text" for each comment and "name, name,
reference" for each defined name.
Usage: read_back.py FILE"""
import sys

import openpyxl

wb = openpyxl.load_workbook(sys.argv[1])
for d in wb.defined_names.definedName:
    print("name\t%s\t%s" % (d.name, d.attr_text))
for ws in wb.worksheets:
    # The cells the sheet holds; iterating rows would walk up to the last one (1,048,576).
    for _, c in sorted(ws._cells.items()):
        if c.comment is not None:
            print("%s\t%s\tcomment\t%s" % (ws.title, c.coordinate, c.comment.text))
        if c.value is None:
            continue
        print("%s\t%s\t%s\t%r\t%s\t%s" % (ws.title, c.coordinate, c.data_type, c.value,
                                        c.number_format, bool(c.font and c.font.b)))
