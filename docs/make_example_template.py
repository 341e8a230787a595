#!/usr/bin/python3
"""Makes the example template of docs/templates.md with openpyxl.
Usage: make_example_template.py OUT.xltx"""
import sys

import openpyxl
from openpyxl.comments import Comment
from openpyxl.styles import Font
from openpyxl.workbook.defined_name import DefinedName

wb = openpyxl.Workbook()
report = wb.active
report.title = "Report"
report["A1"] = "Measurement report"
report["A1"].font = Font(bold=True, size=14)
for row, label in ((2, "File"), (3, "Start"), (4, "Serial no.")):
    report.cell(row=row, column=1, value=label)
report["B4"].comment = Comment("the recorder's serial number goes here", "template author")
data = wb.create_sheet("Data")
for col, title in ((1, "Date"), (2, "Time"), (3, "Channel 1")):
    data.cell(row=2, column=col, value=title).font = Font(bold=True)
data["E2"] = "Sum of channel 1"
data["E3"] = "=SUM(C3:C100000)"
for name, ref in (("filename", "Report!$B$2"), ("starttime", "Report!$B$3"),
                  ("serialno", "Report!$B$4"), ("qmb2measdate", "Data!$A$3"),
                  ("qmb2meastime", "Data!$B$3"), ("qmb2ch1data", "Data!$C$3")):
    wb.defined_names.append(DefinedName(name, attr_text=ref))
wb.template = True
wb.save(sys.argv[1])
