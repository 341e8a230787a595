#!/usr/bin/python3
"""Makes workbooks with a Basic macro `Qumbrel` for the office binding tests, through the
LibreOffice helper's own session code. Usage: make_macro_workbook.py HELPER PROFILE OUT KIND
KIND: writes (A1 of the first sheet gets "macro ran"), fails (a division by zero), loops
(never ends). The format follows OUT's extension (.xls, .xlsm)."""
import importlib.machinery
import importlib.util
import sys

helper, profile, out, kind = sys.argv[1:5]
loader = importlib.machinery.SourceFileLoader("qumbrel_office", helper)
spec = importlib.util.spec_from_loader("qumbrel_office", loader)
qo = importlib.util.module_from_spec(spec)
loader.exec_module(qo)

BODY = {
    "writes": 'ThisComponent.Sheets(0).getCellByPosition(0, 0).String = "macro ran"',
    "fails": "Dim a As Integer\n    a = 1 / 0",
    "loops": "Do\n    Loop",
}[kind]

office = qo.Office(profile)
try:
    doc = office.desktop.loadComponentFromURL("private:factory/scalc", "_blank", 0,
                                              qo.props(Hidden=True))
    doc.Sheets.getByIndex(0).Name = "Daten"
    doc.Sheets.insertNewByName("Zwei", 1)
    doc.Sheets.getByIndex(0).getCellByPosition(1, 1).Value = 5
    libs = doc.BasicLibraries
    if not libs.hasByName("Standard"):
        libs.createLibrary("Standard")
    libs.getByName("Standard").insertByName("Module1", "Sub Qumbrel\n    %s\nEnd Sub\n" % BODY)
    qo.store(doc, out, qo.filter_of(out))
    doc.close(True)
finally:
    office.close()
