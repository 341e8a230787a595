#!/usr/bin/python3
"""Makes the workbook templates of the engine tests with openpyxl (never with our engine),
plus the zip edits openpyxl cannot make (a shared formula, a calculation chain, a template
content type). Usage: make_templates.py FOLDER"""
import os
import re
import sys
import zipfile

import openpyxl
from openpyxl.styles import Font
from openpyxl.workbook.defined_name import DefinedName

folder = sys.argv[1]


def add_name(wb, name, ref, local=None, hidden=False):
    d = DefinedName(name, attr_text=ref, localSheetId=local, hidden=hidden or None)
    wb.defined_names.append(d)


def rezip(path, edit):
    """Rewrites the archive at path with edit(name, bytes) -> bytes or None (drop)."""
    with zipfile.ZipFile(path) as z:
        items = [(i, z.read(i.filename)) for i in z.infolist()]
    extra = edit.extra if hasattr(edit, "extra") else []
    with zipfile.ZipFile(path + ".new", "w", zipfile.ZIP_DEFLATED) as z:
        for info, data in items:
            data = edit(info.filename, data)
            if data is not None:
                z.writestr(info.filename, data)
        for name, data in extra:
            z.writestr(name, data)
    os.replace(path + ".new", path)


# Names and scopes: sheets in a tab order unlike their creation order, quoted names.
wb = openpyxl.Workbook()
first = wb.active
first.title = "Overview"
y = wb.create_sheet("2024")
o = wb.create_sheet("O'Brien")
first["B1"] = "anything"
first["B1"].font = Font(bold=True)
first.column_dimensions["C"].number_format = "0.000"
add_name(wb, "filename", "Overview!$B$1")
add_name(wb, "qmb2filename", "'2024'!$C$3")
add_name(wb, "Kopffilename", "'O''Brien'!$A$1:$B$2")
add_name(wb, "measdate", "Overview!$A$5")
add_name(wb, "qmb2measdate", "'2024'!$B$7")
add_name(wb, "scoped", "Overview!$D$1")
add_name(wb, "scoped", "'2024'!$D$2", local=1)
add_name(wb, "secret", "Overview!$E$1", hidden=True)
add_name(wb, "broken", "#REF!")
add_name(wb, "twoareas", "Overview!$A$1,Overview!$B$2")
add_name(wb, "constant", "42")
add_name(wb, "elsewhere", "Nosuch!$A$1")
add_name(wb, "_xlnm.Print_Area", "Overview!$A$1:$D$9", local=0)
wb.save(os.path.join(folder, "names.xlsx"))

# Formulas: a plain one on a written cell, a shared one whose master is written, a
# calculation chain; saved as a template (.xltx).
wb = openpyxl.Workbook()
s = wb.active
s.title = "Data"
for r in range(5, 8):
    s.cell(row=r, column=1, value=r)
    s.cell(row=r, column=4, value=r * 2)
s["B2"] = "=SUM(A5:A7)"
s["F1"] = "untouched"
s["F1"].font = Font(italic=True)
add_name(wb, "total", "Data!$B$2")
add_name(wb, "master", "Data!$D$5")
wb.template = True
wb.save(os.path.join(folder, "formulas.xltx"))


def formulas_edit(name, data):
    if name == "xl/worksheets/sheet1.xml":
        text = data.decode()
        text = re.sub(r'<c r="D5"([^>]*)><v>10</v></c>',
                      r'<c r="D5"\1><f t="shared" ref="D5:D7" si="0">A5*2</f><v>10</v></c>', text)
        for r, v in ((6, 12), (7, 14)):
            text = re.sub(r'<c r="D%d"([^>]*)><v>%d</v></c>' % (r, v),
                          r'<c r="D%d"\1><f t="shared" si="0"/><v>%d</v></c>' % (r, v), text)
        return text.encode()
    if name == "xl/_rels/workbook.xml.rels":
        return data.replace(b"</Relationships>",
                            b'<Relationship Id="rIdCalc" Type="http://schemas.openxmlformats.org/'
                            b'officeDocument/2006/relationships/calcChain" Target="calcChain.xml"/>'
                            b"</Relationships>")
    if name == "[Content_Types].xml":
        return data.replace(b"</Types>",
                            b'<Override PartName="/xl/calcChain.xml" ContentType="application/'
                            b'vnd.openxmlformats-officedocument.spreadsheetml.calcChain+xml"/>'
                            b"</Types>")
    return data


formulas_edit.extra = [("xl/calcChain.xml",
                        b'<?xml version="1.0" encoding="UTF-8" standalone="yes"?>\n'
                        b'<calcChain xmlns="http://schemas.openxmlformats.org/spreadsheetml/'
                        b'2006/main"><c r="B2" i="1"/><c r="D5" i="1"/></calcChain>')]
rezip(os.path.join(folder, "formulas.xltx"), formulas_edit)

# Prefixed XML and cells without "r": the same workbook with x: on every element.
wb = openpyxl.Workbook()
s = wb.active
s.title = "Sheet1"
s["A1"] = "a"
s["B1"] = 2
s["A3"] = "c"
add_name(wb, "target", "Sheet1!$B$2")
wb.save(os.path.join(folder, "prefixed.xlsx"))


def prefix_edit(name, data):
    if name == "xl/worksheets/sheet1.xml":
        text = data.decode()
        text = re.sub(r"<(/?)([a-zA-Z]+)([ />])", r"<\1x:\2\3", text)
        text = text.replace('xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main"',
                            'xmlns:x="http://schemas.openxmlformats.org/spreadsheetml/2006/main"')
        text = re.sub(r' r="[A-Z]*[0-9]+"', "", text)  # rows and cells counted, not addressed
        return text.encode()
    return data


rezip(os.path.join(folder, "prefixed.xlsx"), prefix_edit)

# Notes on B1 and C3 (openpyxl's legacy comments with VML), and a threaded comment on D4
# with its person, added by hand as Excel 365 writes them.
from openpyxl.comments import Comment

wb = openpyxl.Workbook()
s = wb.active
s.title = "Notes"
s["B1"] = "named"
s["B1"].comment = Comment("describes B1", "author")
s["C3"].comment = Comment("describes C3", "author")
add_name(wb, "described", "Notes!$B$1")
wb.save(os.path.join(folder, "notes.xlsx"))

THREAD_TYPE = "http://schemas.microsoft.com/office/2017/10/relationships/threadedComment"


def thread_edit(name, data):
    if name == "xl/worksheets/_rels/sheet1.xml.rels":
        return data.replace(b"</Relationships>",
                            b'<Relationship Id="rIdT" Type="' + THREAD_TYPE.encode() +
                            b'" Target="../threadedComments/threadedComment1.xml"/>'
                            b"</Relationships>")
    if name == "[Content_Types].xml":
        return data.replace(b"</Types>",
                            b'<Override PartName="/xl/threadedComments/threadedComment1.xml" '
                            b'ContentType="application/vnd.ms-excel.threadedcomments+xml"/>'
                            b"</Types>")
    return data


thread_edit.extra = [("xl/threadedComments/threadedComment1.xml",
                      b'<?xml version="1.0" encoding="UTF-8" standalone="yes"?>\n'
                      b'<ThreadedComments xmlns="http://schemas.microsoft.com/office/'
                      b'spreadsheetml/2018/threadedcomments">'
                      b'<threadedComment ref="D4" dT="2024-03-05T10:00:00.00" personId="{P1}" '
                      b'id="{T1}"><text>thread on D4</text></threadedComment>'
                      b'<threadedComment ref="D4" dT="2024-03-05T10:01:00.00" personId="{P1}" '
                      b'id="{T2}" parentId="{T1}"><text>a reply</text></threadedComment>'
                      b'</ThreadedComments>')]
rezip(os.path.join(folder, "notes.xlsx"), thread_edit)

# Keywords for the cell operations: a scalar on two sheets, names that end with another
# keyword, a list keyword as a bare name and as qmb1, a list at the sheet's last row, and a
# comment on a named cell.
wb = openpyxl.Workbook()
one = wb.active
one.title = "Sheet1"
two = wb.create_sheet("Sheet2")
one["B1"].comment = Comment("put the file name here", "author")
add_name(wb, "filename", "Sheet1!$B$1")
add_name(wb, "qmb2filename", "Sheet2!$C$3")
add_name(wb, "foo_starttime", "Sheet1!$B$2")
add_name(wb, "alstarttime", "Sheet1!$B$3")
add_name(wb, "measdate", "Sheet1!$A$5")
add_name(wb, "qmb1measdate", "Sheet1!$A$7")
add_name(wb, "elsewhere", "Sheet2!$A$1")
add_name(wb, "title", "Sheet1!$D$1")
add_name(wb, "qmb2title", "Sheet2!$D$1")
add_name(wb, "lastrow", "Sheet1!$E$1048576")
wb.save(os.path.join(folder, "keywords.xlsx"))

# A chart beside the data and a VBA project: a macro workbook whose chart, drawing and
# macro parts must come out of a fill byte for byte.
from openpyxl.chart import BarChart, Reference

wb = openpyxl.Workbook()
s = wb.active
s.title = "Chart"
for r in range(1, 6):
    s.cell(row=r, column=1, value=r * 10)
chart = BarChart()
chart.add_data(Reference(s, min_col=1, min_row=1, max_row=5))
s.add_chart(chart, "C2")
add_name(wb, "value", "Chart!$A$3")
wb.save(os.path.join(folder, "macro.xlsm"))

VBA_TYPE = "http://schemas.microsoft.com/office/2006/relationships/vbaProject"


def macro_edit(name, data):
    if name == "xl/_rels/workbook.xml.rels":
        return data.replace(b"</Relationships>",
                            b'<Relationship Id="rIdVba" Type="' + VBA_TYPE.encode() +
                            b'" Target="vbaProject.bin"/></Relationships>')
    if name == "[Content_Types].xml":
        data = re.sub(rb'(PartName="/xl/workbook.xml" ContentType=")[^"]*"',
                      rb'\1application/vnd.ms-excel.sheet.macroEnabled.main+xml"', data)
        return data.replace(b"</Types>",
                            b'<Default Extension="bin" '
                            b'ContentType="application/vnd.ms-office.vbaProject"/></Types>')
    return data


# Not a real VBA project (no reader here runs macros): bytes that must survive unchanged.
macro_edit.extra = [("xl/vbaProject.bin", bytes(range(256)) * 16)]
rezip(os.path.join(folder, "macro.xlsm"), macro_edit)

# The VT template report: header keywords, a comment on a filled and on an unfilled named
# cell, right-end matches, the time columns and the data of channels 1, 2 and 31 side by
# side (a display file's maximum of channel 1 falls on channel 2's column), and the lists
# on the first sheet and, by qmb2 names, on the second; a bare list name on the second
# sheet is not found; qmb3measdate names a sheet the workbook lacks.
wb = openpyxl.Workbook()
d = wb.active
d.title = "Data"
lists = wb.create_sheet("Lists")
d["H1"] = "kept"
d["H2"] = "=1+1"
d["H1"].font = Font(bold=True)
d["B1"].comment = Comment("file name goes here", "author")
d["F1"].comment = Comment("batch name goes here", "author")
for name, ref in (("filename", "Data!$B$1"), ("recordertype", "Data!$B$2"),
                  ("filemessage", "Data!$B$3"), ("validdatacount", "Data!$B$4"),
                  ("eventcount", "Data!$B$5"), ("userdef1", "Data!$B$6"),
                  ("foo_starttime", "Data!$D$1"), ("software", "Data!$D$2"),
                  ("batchname", "Data!$F$1"), ("ch1name", "Data!$D$8"), ("ch1unit", "Data!$D$9"),
                  ("ch31no", "Data!$G$8"), ("ch1scalemin", "Data!$D$7"),
                  ("measdate", "Data!$A$10"), ("meastime", "Data!$B$10"),
                  ("meastimeeasy", "Data!$C$10"), ("ch1data", "Data!$D$10"),
                  ("ch2data", "Data!$E$10"), ("ch31data", "Data!$G$10"),
                  ("measdatetime", "Data!$I$10"), ("qmb3measdate", "Data!$J$10"),
                  ("alchannelno", "Data!$A$30"), ("alstarttime", "Data!$B$30"),
                  ("alstartno", "Data!$C$30"), ("qmb2alstartno", "Lists!$D$2"),
                  ("altype", "Lists!$A$2"),
                  ("qmb2evmessage", "Lists!$E$2"), ("evscanno", "Data!$K$2")):
    add_name(wb, name, ref)
wb.save(os.path.join(folder, "vt.xlsx"))

# The template reports of VU, VQ, KL and HN: the families' own header keywords, channel 1
# with its alarm marks, the lists' family slots, the VQ signature with a comment.
wb = openpyxl.Workbook()
d = wb.active
d.title = "Data"
d["K1"].comment = Comment("signer goes here", "author")
for name, ref in (("filename", "Data!$B$1"), ("filetype", "Data!$B$2"),
                  ("extchannelcount", "Data!$B$3"), ("operatinglogcount", "Data!$B$4"),
                  ("ctrlchannelcount", "Data!$B$5"), ("filestatus", "Data!$B$6"),
                  ("unitnum", "Data!$B$7"), ("batchtext1", "Data!$B$8"),
                  ("eventcount", "Data!$B$9"), ("measdate", "Data!$A$10"),
                  ("ch1data", "Data!$C$10"), ("ch1al", "Data!$E$10"), ("ch2data", "Data!$F$10"),
                  ("ch2al", "Data!$H$10"),
                  ("alchannelno", "Data!$A$30"), ("altypeshort", "Data!$B$30"),
                  ("alstatus", "Data!$C$30"), ("alackno", "Data!$D$30"),
                  ("alaction", "Data!$E$30"), ("evmessage", "Data!$F$30"),
                  ("evgroupno", "Data!$G$30"), ("evgroup", "Data!$H$30"),
                  ("opelogno", "Data!$I$30"), ("opeaction", "Data!$J$30"),
                  ("signname", "Data!$K$1"), ("signsts", "Data!$K$2")):
    add_name(wb, name, ref)
wb.save(os.path.join(folder, "family.xlsx"))

# Alarm marks of channel 1 on the second sheet by qmb2ch1al, its data on the first.
wb = openpyxl.Workbook()
d = wb.active
d.title = "Data"
m = wb.create_sheet("Marks")
add_name(wb, "ch1data", "Data!$B$2")
add_name(wb, "ch1al", "Data!$C$2")
add_name(wb, "qmb2ch1al", "Marks!$B$5")
wb.save(os.path.join(folder, "marks.xlsx"))
